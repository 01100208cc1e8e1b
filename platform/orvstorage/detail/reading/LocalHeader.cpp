#include <orvstorage/detail/reading/LocalHeader.h>

#include <orvstorage/detail/reading/ZipFormat.h>

#include <algorithm>
#include <vector>

// The header in front of an entry's data and the record behind it, all numbers little-endian:
//
//   header: 0 signature  4 version needed  6 flags  8 method  10 time  12 date  14 checksum  18 packed size  22 size
//           26 length of name  28 of extra fields  30 name, extra fields, data
//   record: 0 signature  4 checksum  8 packed size  12 size; each size takes 8 bytes in archives of zip64
//
// Asked when an entry is read, not at opening: it costs a small read for each entry.

namespace orvstorage::detail {

namespace {

struct LocalHeader {
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint32_t crc = 0;
    std::uint64_t compressedSize = 0;
    std::uint64_t size = 0;
    std::uint16_t nameLength = 0;
    std::uint16_t extraLength = 0;
};

bool ReadAt(const ArchiveFile& file, std::uint64_t offset, std::span<unsigned char> bytes)
{
    std::error_code error;
    return file.Read(offset, bytes.data(), bytes.size(), error) == bytes.size();
}

LocalHeader ReadFields(ByteCursor& cursor)
{
    LocalHeader header;
    cursor.Skip(2);
    header.flags = cursor.Take16();
    header.method = cursor.Take16();
    cursor.Skip(4);
    header.crc = cursor.Take32();
    header.compressedSize = cursor.Take32();
    header.size = cursor.Take32();
    header.nameLength = cursor.Take16();
    header.extraLength = cursor.Take16();
    return header;
}

// Here the zip64 field always has both sizes, though some writers leave out the one that has room in the header.
bool TakeZip64Sizes(const ArchiveFile& file, std::uint64_t extraOffset, LocalHeader& header)
{
    if (header.size != kIn64 && header.compressedSize != kIn64) {
        return true;
    }
    std::vector<unsigned char> extra(header.extraLength);
    std::optional<ByteCursor> field;
    if (ReadAt(file, extraOffset, extra)) {
        field = FindField(extra, kZip64Field);
    }
    if (!field) {
        return false;
    }
    const bool hasBoth = field->Left() >= 16;
    for (std::uint64_t* value : {&header.size, &header.compressedSize}) {
        if (*value == kIn64) {
            *value = field->Take64();
        } else if (hasBoth) {
            field->Skip(8);
        }
    }
    return !field->Failed();
}

// The flags that change what the bytes mean. Whether a name is UTF-8 means nothing where it is ASCII; the flags for the
// level of compression and for sizes that come later differ in archives of honest writers.
std::uint16_t FlagsThatCount(const DirectoryRecord& record)
{
    const bool isASCII = std::none_of(record.name.begin(), record.name.end(), [](char c) { return c < 0; });
    constexpr std::uint16_t kAlways = kEncryptedFlag | kStrongEncryptionFlag | kMaskedFlag;
    return isASCII ? kAlways : static_cast<std::uint16_t>(kAlways | kUTF8Flag);
}

bool Agree(const LocalHeader& header, bool isSizeKnown, const DirectoryRecord& record)
{
    // Writers that learn the values only afterwards put zeros, or come back and put the values.
    const bool mayBeZero = ((header.flags | record.flags) & kDescriptorFlag) != 0;
    const auto given = [&](std::uint64_t here, std::uint64_t there) {
        // Nothing else: a value that is there must be the right one also where it need not be there.
        return here == there || (mayBeZero && here == 0);
    };
    return header.method == record.method && ((header.flags ^ record.flags) & FlagsThatCount(record)) == 0 &&
           given(header.crc, record.crc) &&
           (isSizeKnown ? given(header.size, record.size) && given(header.compressedSize, record.compressedSize)
                        : mayBeZero);
}

// The record behind the data. One without a signature, as the format allows, cannot be told from other bytes.
bool AgreesBehind(const ArchiveFile& file, std::uint64_t end, const DirectoryRecord& record)
{
    constexpr std::size_t kShort = 16;
    constexpr std::size_t kLong = 24;
    std::vector<unsigned char> bytes(std::min<std::uint64_t>(kLong, record.dataLimit - end));
    if (bytes.size() < kShort || !ReadAt(file, end, bytes) || SignatureOf(bytes) != kDescriptorSignature) {
        return true;
    }
    const auto sizesAre = [&](std::size_t width) {
        ByteCursor cursor{std::span(bytes).subspan(8)};
        return cursor.Take(width) == record.compressedSize && cursor.Take(width) == record.size;
    };
    return ByteCursor(std::span(bytes).subspan(4)).Take32() == record.crc &&
           (sizesAre(4) || (bytes.size() == kLong && sizesAre(8)));
}

} // namespace

ZipError CheckLocalHeader(const ArchiveFile& file, const DirectoryRecord& record)
{
    std::vector<unsigned char> bytes(kLocalSize + record.name.size());
    if (!ReadAt(file, record.headerOffset, bytes)) {
        return ZipError::ReadFailed;
    }
    ByteCursor cursor(bytes);
    const bool isHeader = cursor.Take32() == kLocalSignature;
    LocalHeader header = ReadFields(cursor);
    const auto name = cursor.TakeBytes(record.name.size());
    const bool isItsName = header.nameLength == name.size() &&
                           std::string_view(reinterpret_cast<const char*>(name.data()), name.size()) == record.name;
    const std::uint64_t extraOffset = record.headerOffset + bytes.size();
    const bool isSizeKnown = isHeader && isItsName && TakeZip64Sizes(file, extraOffset, header);
    if (!isHeader || !isItsName || !Agree(header, isSizeKnown, record)) {
        return ZipError::HeaderMismatch;
    }
    const std::uint64_t begin = extraOffset + header.extraLength;
    // Only now is the length of the local extra fields known, and with it where the data really lies.
    if (begin > record.dataLimit || record.compressedSize > record.dataLimit - begin) {
        return ZipError::OverlappingEntries;
    }
    const bool isDescribedBehind = (header.flags & kDescriptorFlag) != 0;
    return isDescribedBehind && !AgreesBehind(file, begin + record.compressedSize, record) ? ZipError::HeaderMismatch
                                                                                           : ZipError::None;
}

} // namespace orvstorage::detail
