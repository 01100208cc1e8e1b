#include <orvstorage/detail/reading/CentralDirectory.h>

#include <orvcore/text/Strings.h>
#include <orvstorage/detail/reading/EndRecord.h>
#include <orvstorage/detail/reading/ZipFormat.h>

#include <algorithm>
#include <limits>
#include <numeric>

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

// False when a value is said to be in the zip64 field and is not.
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

// True when the field that tells how an entry is encrypted is one that the zip library takes.
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

// Without that field the zip library refuses the archive. As an entry of a method that nobody knows it costs itself.
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

std::uint64_t LeastEnd(const DirectoryRecord& record)
{
    const std::uint64_t header = kLocalSize + record.name.size();
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
    const std::uint64_t begin = record.headerOffset > kMost - header ? kMost : record.headerOffset + header;
    return record.compressedSize > kMost - begin ? kMost : begin + record.compressedSize;
}

// The local header may be longer than the least length assumed here, so that honest archives never overlap.
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
    std::span<unsigned char> bytes;
    if (!file.Keep(extent.offset, bytes)) {
        return ZipError::ReadFailed;
    }
    auto records = ReadRecords(bytes.first(extent.size), extent, limits);
    if (records) {
        MarkForeignData(*records, extent.offset);
        extent.entries = (*records).size();
        file.ReplaceEnd(extent.offset + extent.size, MakeEnd(extent));
    }
    return records;
}

} // namespace orvstorage::detail
