#include <orvstorage/detail/reading/CentralDirectory.h>

#include <orvcore/text/Strings.h>
#include <orvstorage/detail/reading/EndRecord.h>
#include <orvstorage/detail/reading/ZipFormat.h>

#include <algorithm>
#include <limits>
#include <numeric>

// Reads the directory before the zip library does, in three steps: find it (EndRecord), read its records, mark the
// entries whose data is not their own. The limits hold before memory is taken: the size and the number of entries that
// the end record tells are judged first, and reading ends at the largest number allowed, whatever was told.
//
// One record of the directory, all numbers little-endian:
//
//   0 signature  4 made by: version, system  6 version needed  8 flags  10 method  12 time  14 date  16 checksum
//   20 packed size  24 size  28 length of name  30 of extra fields  32 of comment  34 disk  36 internal attributes
//   38 external attributes  42 place of the local header  46 name, extra fields, comment
//
// Two things of an entry would make the library refuse the whole archive (text that is flagged as UTF-8 and is none
// that it takes; an AES field that is missing or strange). Flags and method of such entries are changed in the copy in
// memory that the library is shown, so that they cost themselves alone. The bytes of the file stay, and so does
// `record`, by which everything else judges.

namespace orvstorage::detail {

namespace {

std::string_view AsText(std::span<const unsigned char> bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Those that the zip library does not take in flagged text, and shows as symbols elsewhere.
bool HasControls(std::string_view text)
{
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return c >= 0 && c < ' ' && c != '\t' && c != '\n' && c != '\r'; });
}

// False when a value is said to be in the zip64 field and is not. The field holds 8 bytes for each value that is
// 0xffffffff in the record, in this order, and nothing for the others.
bool TakeZip64Values(std::span<const unsigned char> extra, DirectoryRecord& record)
{
    std::optional<ByteCursor> field;
    for (std::uint64_t* value : {&record.size, &record.compressedSize, &record.headerOffset}) {
        if (*value == kIn64) {
            const ByteCursor none{std::span<const unsigned char>()};
            field = field ? field : FindField(extra, kZip64Field).value_or(none);
            *value = field->Take64();
        }
    }
    return !field || !field->Failed();
}

// For the sake of one such text the zip library refuses the archive, unless the entry does not say that it is UTF-8.
void DropUTF8Flag(unsigned char* entry)
{
    constexpr std::size_t kFlagsAt = 8;
    entry[kFlagsAt + 1] &= static_cast<unsigned char>(~(kUTF8Flag >> 8));
}

// True when the field that tells how an entry is encrypted is one that the zip library takes: a version (AE-2 leaves
// the checksum out), the letters "AE", the length of the key (1 to 3 for 128, 192 and 256 bits), the real method in two
// bytes.
bool HasGoodAESField(std::span<const unsigned char> extra)
{
    std::optional<ByteCursor> field = FindField(extra, kAESField);
    if (!field || field->Left() != 7) {
        return false;
    }
    const std::uint16_t version = field->Take16();
    const std::string_view vendor = AsText(field->TakeBytes(2));
    const std::uint64_t strength = field->Take(1);
    return (version == 1 || version == 2) && vendor == "AE" && strength >= 1 && strength <= 3;
}

// Without that field the zip library refuses the archive. As an entry of an unknown method it is refused alone.
void HideAES(unsigned char* entry)
{
    constexpr std::size_t kMethodAt = 10;
    entry[kMethodAt] = entry[kMethodAt + 1] = 0xff;
}

// @param entry where `cursor` is
ZipError ReadRecord(ByteCursor& cursor, unsigned char* entry, DirectoryRecord& record)
{
    const bool signature = cursor.Take32() == kEntrySignature;
    record.system = static_cast<std::uint8_t>(cursor.Take16() >> 8);
    cursor.Skip(2);
    record.flags = cursor.Take16();
    record.method = cursor.Take16();
    cursor.Skip(4);
    record.crc = cursor.Take32();
    record.compressedSize = cursor.Take32();
    record.size = cursor.Take32();
    const std::uint16_t nameLength = cursor.Take16();
    const std::uint16_t extraLength = cursor.Take16();
    const std::uint16_t commentLength = cursor.Take16();
    cursor.Skip(4);
    record.attributes = cursor.Take32();
    record.headerOffset = cursor.Take32();
    record.name = AsText(cursor.TakeBytes(nameLength));
    const auto extra = cursor.TakeBytes(extraLength);
    const std::string_view comment = AsText(cursor.TakeBytes(commentLength));
    if (!signature || cursor.Failed()) {
        return ZipError::Inconsistent;
    }
    // This and the next cost the archive, since the library would read such an entry in its own way or refuse all of
    // them.
    if (!TakeZip64Values(extra, record)) {
        return ZipError::Zip64FieldMissing;
    }
    if ((record.flags & kUTF8Flag) != 0 && !orvcore::IsWellFormedUTF8(record.name)) {
        return ZipError::BadEncoding;
    }
    if (record.method == kAESMethod && !HasGoodAESField(extra)) {
        record.dataError = ZipError::EncryptionUnsupported;
        HideAES(entry);
    }
    record.nameHasControls = HasControls(record.name);
    if ((record.flags & kUTF8Flag) != 0 &&
        (record.nameHasControls || HasControls(comment) || !orvcore::IsWellFormedUTF8(comment))) {
        DropUTF8Flag(entry);
    }
    return ZipError::None;
}

// Where the entry's data ends at the earliest: the local header's own extra fields are not known without reading it.
// The numbers come from the file and may be anything, so the sums stop at the largest there is.
std::uint64_t LeastEnd(const DirectoryRecord& record)
{
    const std::uint64_t header = kLocalSize + record.name.size();
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
    const std::uint64_t begin = record.headerOffset > kMost - header ? kMost : record.headerOffset + header;
    return record.compressedSize > kMost - begin ? kMost : begin + record.compressedSize;
}

// Entries that share bytes let a small archive unpack to any size. One pass in the order of the headers finds all:
// an entry that begins before the furthest end so far lies in another one's data. The local header may be longer than
// the least length assumed here, so that honest archives never overlap; with the header in hand, CheckLocalHeader asks
// again against `dataLimit`.
void MarkForeignData(std::vector<DirectoryRecord>& records, std::uint64_t directoryOffset)
{
    std::vector<std::size_t> order(records.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(),
              [&](std::size_t a, std::size_t b) { return records[a].headerOffset < records[b].headerOffset; });
    DirectoryRecord* reaching = nullptr; // the one before that ends last
    DirectoryRecord* before = nullptr;
    for (const std::size_t index : order) {
        DirectoryRecord& record = records[index];
        record.dataLimit = directoryOffset;
        if (LeastEnd(record) > directoryOffset) {
            // It would reach into the directory or beyond.
            record.dataError = ZipError::DataOutsideArchive;
            continue; // its claim is worth nothing against the others'
        }
        if (before != nullptr) {
            before->dataLimit = record.headerOffset;
        }
        before = &record;
        if (reaching != nullptr && LeastEnd(*reaching) > record.headerOffset) {
            record.dataError = ZipError::OverlappingEntries;
            reaching->dataError = ZipError::OverlappingEntries;
        }
        if (reaching == nullptr || LeastEnd(record) > LeastEnd(*reaching)) {
            reaching = &record;
        }
    }
}

// Reads the records one after the other. Some writers store their number modulo 65536, so the directory's bytes decide.
ZipResult<std::vector<DirectoryRecord>> ReadRecords(std::span<unsigned char> bytes, const DirectoryExtent& extent,
                                                    const ZipLimits& limits)
{
    ByteCursor cursor(bytes);
    std::vector<DirectoryRecord> records;
    // The number is the archive's own word; its bytes bound what is believed of it.
    records.reserve(std::min<std::size_t>(extent.entries, bytes.size() / kEntrySize));
    while (cursor.Left() >= kEntrySize && records.size() <= limits.maxEntries) {
        unsigned char* entry = bytes.data() + (bytes.size() - cursor.Left());
        if (const ZipError error = ReadRecord(cursor, entry, records.emplace_back()); error != ZipError::None) {
            return error;
        }
    }
    if (records.size() > limits.maxEntries) {
        return ZipError::TooManyEntries;
    }
    if (cursor.Left() > 0 || (records.size() & 0xffff) != (extent.entries & 0xffff)) {
        return ZipError::Inconsistent;
    }
    return records;
}

} // namespace

ZipResult<std::vector<DirectoryRecord>> ReadCentralDirectory(ArchiveFile& file, const ZipLimits& limits)
{
    DirectoryExtent extent = LocateDirectory(file, limits);
    if (extent.error != ZipError::None) {
        return extent.error;
    }
    // From here on the tail does not move, so that records may hold views of it.
    std::span<unsigned char> bytes;
    if (!file.Keep(extent.offset, bytes)) {
        return ZipError::ReadFailed;
    }
    auto records = ReadRecords(bytes.first(extent.size), extent, limits);
    if (records) {
        MarkForeignData(*records, extent.offset);
        // What was counted, not what the end record told: the library is shown the true number.
        extent.entries = (*records).size();
        file.ReplaceEnd(extent.offset + extent.size, MakeEnd(extent));
    }
    return records;
}

} // namespace orvstorage::detail
