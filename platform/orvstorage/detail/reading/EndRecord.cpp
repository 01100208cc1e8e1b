#include <orvstorage/detail/reading/EndRecord.h>

#include <orvcore/text/shared/LittleEndian.h>
#include <orvstorage/detail/reading/ZipFormat.h>

// The records at an archive's end, all numbers little-endian:
//
//   end record: 0 signature  4 disk  6 disk of the directory  8 entries here  10 entries  12 directory's size
//               16 its place  20 length of the comment  22 comment
//   zip64 end:  0 signature  4 its own size less 12, 8 bytes  12 made by  14 needed  16 disk  20 disk of the directory
//               24 entries here  32 entries  40 directory's size  48 its place
//   locator:    0 signature  4 disk of the zip64 end  8 its place, 8 bytes  16 disks
//
// The locator stands right before the end record, when there is one. Values that do not fit into the end record are all
// ones there. Programs differ in which of several candidates they take, so everything that can be read in two ways is
// refused here, or made unambiguous in what the zip library is shown (MakeEnd).

namespace orvstorage::detail {

namespace {

constexpr std::uint16_t kCountIn64 = 0xffff;

// The end record is the last one whose comment fits into the file: a comment may itself look like a record.
std::size_t FindEnd(std::span<const unsigned char> tail)
{
    // `at` is one more than the place, so that the first byte is looked at, too.
    for (std::size_t at = tail.size() < kEndSize ? 0 : tail.size() - kEndSize + 1; at > 0; --at) {
        const auto candidate = tail.subspan(at - 1);
        // A single byte first: an archive with a long comment is looked through byte by byte.
        if (candidate[0] == 'P' && SignatureOf(candidate) == kEndSignature) {
            ByteCursor comment(candidate.subspan(kEndSize - 2));
            if (comment.Take16() <= candidate.size() - kEndSize) {
                return at - 1;
            }
        }
    }
    return tail.size();
}

// What both end records tell in one order, each in numbers of its own width.
DirectoryExtent TakeExtent(ByteCursor& cursor, std::size_t diskWidth, std::size_t countWidth, std::size_t placeWidth)
{
    const std::uint64_t disk = cursor.Take(diskWidth);
    const std::uint64_t directoryDisk = cursor.Take(diskWidth);
    const std::uint64_t here = cursor.Take(countWidth);
    DirectoryExtent extent;
    extent.entries = cursor.Take(countWidth);
    extent.size = cursor.Take(placeWidth);
    extent.offset = cursor.Take(placeWidth);
    // All on one disk, and as many entries on it as there are: an archive of parts says otherwise in one of these.
    extent.error = disk != 0 || directoryDisk != 0 || here != extent.entries ? ZipError::SeveralDisks : ZipError::None;
    return extent;
}

DirectoryExtent ReadPlain(std::span<const unsigned char> bytes)
{
    ByteCursor cursor(bytes);
    cursor.Skip(4);
    DirectoryExtent extent = TakeExtent(cursor, 2, 2, 4);
    const auto comment = cursor.TakeBytes(cursor.Take16());
    extent.comment.assign(comment.begin(), comment.end());
    return extent;
}

// None where the bytes before the end record only look like a locator: they may be the directory's last ones.
std::optional<DirectoryExtent> ReadZip64(const ArchiveFile& file, std::span<const unsigned char> locatorBytes)
{
    if (SignatureOf(locatorBytes) != kLocator64Signature) {
        return std::nullopt;
    }
    ByteCursor locator(locatorBytes);
    locator.Skip(8);
    const std::uint64_t offset = locator.Take64();
    std::vector<unsigned char> bytes(kEnd64Size);
    std::error_code error;
    if (offset > file.Size() || file.Read(offset, bytes.data(), bytes.size(), error) != bytes.size() ||
        SignatureOf(bytes) != kEnd64Signature) {
        return std::nullopt;
    }
    ByteCursor cursor(bytes);
    cursor.Skip(16);
    return TakeExtent(cursor, 4, 8, 8);
}

// Two readers, of which one knows zip64, must not see two archives in one.
bool Agree(const DirectoryExtent& plain, const DirectoryExtent& large)
{
    return (plain.offset == kIn64 || plain.offset == large.offset) &&
           (plain.size == kIn64 || plain.size == large.size) &&
           (plain.entries == kCountIn64 || plain.entries == (large.entries & kCountIn64));
}

// The values of zip64 are taken when both records tell of the same directory. A plain record whose values are all ones
// says nothing by itself, and one that contradicts could lead another reader elsewhere.
DirectoryExtent ReadEnd(const ArchiveFile& file, std::size_t end)
{
    const std::span<const unsigned char> tail = file.Tail();
    DirectoryExtent plain = ReadPlain(tail.subspan(end));
    std::optional<DirectoryExtent> large;
    if (end >= kLocator64Size) {
        large = ReadZip64(file, tail.subspan(end - kLocator64Size, kLocator64Size));
    }
    // The comment is told by the plain record alone.
    if (large && Agree(plain, *large)) {
        large->comment = std::move(plain.comment);
        return *large;
    }
    if (large || plain.offset == kIn64 || plain.size == kIn64) {
        plain.error = ZipError::Inconsistent;
    }
    return plain;
}

void PutZip64(std::vector<unsigned char>& bytes, const DirectoryExtent& extent)
{
    constexpr std::uint64_t kVersions = 45U << 16 | 45U; // made by and needed: the first that knew zip64
    orvcore::AppendLittleEndian(bytes, kEnd64Signature, 4);
    orvcore::AppendLittleEndian(bytes, kEnd64Size - 12, 8);
    orvcore::AppendLittleEndian(bytes, kVersions, 4);
    orvcore::AppendLittleEndian(bytes, 0, 8); // the number of the disk, twice
    orvcore::AppendLittleEndian(bytes, extent.entries, 8);
    orvcore::AppendLittleEndian(bytes, extent.entries, 8);
    orvcore::AppendLittleEndian(bytes, extent.size, 8);
    orvcore::AppendLittleEndian(bytes, extent.offset, 8);
    orvcore::AppendLittleEndian(bytes, kLocator64Signature, 4);
    orvcore::AppendLittleEndian(bytes, 0, 4);
    orvcore::AppendLittleEndian(bytes, extent.offset + extent.size, 8);
    orvcore::AppendLittleEndian(bytes, 1, 4);
}

} // namespace

DirectoryExtent LocateDirectory(const ArchiveFile& file, const ZipLimits& limits)
{
    const std::span<const unsigned char> tail = file.Tail();
    const std::size_t end = FindEnd(tail);
    DirectoryExtent extent;
    if (end == tail.size()) { // what begins like an archive has lost its end, mostly in a download
        std::vector<unsigned char> first(4);
        std::error_code error;
        file.Read(0, first.data(), first.size(), error);
        extent.error = SignatureOf(first) == kLocalSignature ? ZipError::Truncated : ZipError::NotAZip;
        return extent;
    }
    extent = ReadEnd(file, end);
    // A directory that would reach beyond the record behind it: bytes are missing in the middle, or before.
    const std::uint64_t room = file.TailOffset() + end;
    if (extent.error == ZipError::None && (extent.offset > room || extent.size > room - extent.offset)) {
        extent.error = ZipError::Truncated;
    } else if (extent.error == ZipError::None && extent.entries > limits.maxEntries) {
        extent.error = ZipError::TooManyEntries;
    } else if (extent.error == ZipError::None && extent.size > limits.maxDirectorySize) {
        extent.error = ZipError::DirectoryTooLarge;
    }
    return extent;
}

std::vector<unsigned char> MakeEnd(const DirectoryExtent& extent)
{
    std::vector<unsigned char> bytes;
    bytes.reserve(ArchiveFile::kLongestEnd + extent.comment.size());
    const bool isLarge = extent.offset >= kIn64 || extent.size >= kIn64 || extent.entries >= kCountIn64;
    if (isLarge) {
        PutZip64(bytes, extent);
    } else {
        bytes.resize(kLocator64Size); // zeros, so that what stands before cannot be taken for a locator
    }
    orvcore::AppendLittleEndian(bytes, kEndSignature, 4);
    orvcore::AppendLittleEndian(bytes, 0, 4);
    orvcore::AppendLittleEndian(bytes, isLarge ? kCountIn64 : extent.entries, 2);
    orvcore::AppendLittleEndian(bytes, isLarge ? kCountIn64 : extent.entries, 2);
    orvcore::AppendLittleEndian(bytes, isLarge ? kIn64 : extent.size, 4);
    orvcore::AppendLittleEndian(bytes, isLarge ? kIn64 : extent.offset, 4);
    orvcore::AppendLittleEndian(bytes, extent.comment.size(), 2);
    bytes.insert(bytes.end(), extent.comment.begin(), extent.comment.end());
    return bytes;
}

} // namespace orvstorage::detail
