#include <orvstorage/detail/reading/CentralDirectory.h>

#include <orvcore/text/Strings.h>
#include <orvstorage/detail/reading/ByteCursor.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <span>

namespace orvstorage::detail {

namespace {

constexpr std::uint32_t kLocalSignature = 0x04034b50;
constexpr std::uint32_t kEntrySignature = 0x02014b50;
constexpr std::uint32_t kEndSignature = 0x06054b50;
constexpr std::uint32_t kEnd64Signature = 0x06064b50;
constexpr std::uint32_t kLocator64Signature = 0x07064b50;
constexpr std::size_t kLocalSize = 30;
constexpr std::size_t kEntrySize = 46;
constexpr std::size_t kEndSize = 22;
constexpr std::size_t kEnd64Size = 56;
constexpr std::size_t kLocator64Size = 20;
constexpr std::uint16_t kZip64Field = 0x0001;
constexpr std::uint16_t kUTF8Flag = 0x0800;
constexpr std::uint32_t kIn64 = 0xffffffff; // the value stands in the zip64 field

struct Extent {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    std::uint64_t entries = 0;
    ZipError error = ZipError::None;
};

std::uint32_t SignatureAt(std::span<const unsigned char> bytes, std::size_t at)
{
    return ByteCursor(bytes.subspan(at)).Take32();
}

// The end record is the last one whose comment fits into the file: a comment may itself look like a record.
std::size_t FindEnd(std::span<const unsigned char> tail)
{
    for (std::size_t at = tail.size() < kEndSize ? 0 : tail.size() - kEndSize + 1; at > 0; --at) {
        const auto candidate = tail.subspan(at - 1);
        if (candidate[0] == 'P' && SignatureAt(candidate, 0) == kEndSignature) {
            ByteCursor comment(candidate.subspan(kEndSize - 2));
            if (comment.Take16() <= candidate.size() - kEndSize) {
                return at - 1;
            }
        }
    }
    return tail.size();
}

Extent ReadEnd64(const ArchiveFile& file, std::span<const unsigned char> locatorBytes)
{
    ByteCursor locator(locatorBytes);
    locator.Skip(8);
    const std::uint64_t offset = locator.Take64();
    std::vector<unsigned char> bytes(kEnd64Size);
    std::error_code error;
    if (offset > file.Size() || file.Read(offset, bytes.data(), bytes.size(), error) != bytes.size() ||
        SignatureAt(bytes, 0) != kEnd64Signature) {
        return {0, 0, 0, ZipError::Inconsistent};
    }
    ByteCursor cursor(bytes);
    cursor.Skip(16);
    const std::uint32_t disk = cursor.Take32();
    const std::uint32_t directoryDisk = cursor.Take32();
    const std::uint64_t here = cursor.Take64();
    Extent extent;
    extent.entries = cursor.Take64();
    extent.size = cursor.Take64();
    extent.offset = cursor.Take64();
    extent.error = disk != 0 || directoryDisk != 0 || here != extent.entries ? ZipError::SeveralDisks : ZipError::None;
    return extent;
}

Extent ReadEnd(const ArchiveFile& file, std::size_t end)
{
    const std::span<const unsigned char> tail = file.Tail();
    if (end >= kLocator64Size && SignatureAt(tail, end - kLocator64Size) == kLocator64Signature) {
        return ReadEnd64(file, tail.subspan(end - kLocator64Size, kLocator64Size));
    }
    ByteCursor cursor(tail.subspan(end, kEndSize));
    cursor.Skip(4);
    const std::uint16_t disk = cursor.Take16();
    const std::uint16_t directoryDisk = cursor.Take16();
    const std::uint16_t here = cursor.Take16();
    Extent extent;
    extent.entries = cursor.Take16();
    extent.size = cursor.Take32();
    extent.offset = cursor.Take32();
    extent.error = disk != 0 || directoryDisk != 0 || here != extent.entries ? ZipError::SeveralDisks : ZipError::None;
    return extent;
}

Extent LocateDirectory(const ArchiveFile& file, const ZipLimits& limits)
{
    const std::span<const unsigned char> tail = file.Tail();
    const std::size_t end = FindEnd(tail);
    if (end == tail.size()) {
        std::vector<unsigned char> first(4);
        std::error_code error;
        file.Read(0, first.data(), first.size(), error);
        return {0, 0, 0, SignatureAt(first, 0) == kLocalSignature ? ZipError::Truncated : ZipError::NotAZip};
    }
    Extent extent = ReadEnd(file, end);
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

void ReadZip64Field(std::span<const unsigned char> extra, DirectoryRecord& record)
{
    ByteCursor cursor(extra);
    while (cursor.Left() >= 4) {
        const std::uint16_t id = cursor.Take16();
        const std::uint16_t length = cursor.Take16();
        ByteCursor field(cursor.TakeBytes(length));
        if (id != kZip64Field) {
            continue;
        }
        for (std::uint64_t* value : {&record.size, &record.compressedSize, &record.headerOffset}) {
            if (*value == kIn64 && field.Left() >= 8) {
                *value = field.Take64();
            }
        }
        return;
    }
}

bool ReadRecord(ByteCursor& cursor, DirectoryRecord& record, ZipFailure& failure)
{
    const bool signature = cursor.Take32() == kEntrySignature;
    record.system = static_cast<std::uint8_t>(cursor.Take16() >> 8);
    cursor.Skip(2);
    record.flags = cursor.Take16();
    cursor.Skip(6);
    record.crc = cursor.Take32();
    record.compressedSize = cursor.Take32();
    record.size = cursor.Take32();
    record.nameLength = cursor.Take16();
    const std::uint16_t extraLength = cursor.Take16();
    const std::uint16_t commentLength = cursor.Take16();
    cursor.Skip(4);
    record.attributes = cursor.Take32();
    record.headerOffset = cursor.Take32();
    const auto name = cursor.TakeBytes(record.nameLength);
    record.nameHasNul = std::find(name.begin(), name.end(), 0) != name.end();
    ReadZip64Field(cursor.TakeBytes(extraLength), record);
    cursor.Skip(commentLength);
    if (!signature || cursor.Failed()) {
        failure.error = ZipError::Inconsistent;
        return false;
    }
    const std::string_view text(reinterpret_cast<const char*>(name.data()), name.size());
    if ((record.flags & kUTF8Flag) != 0 && !orvcore::IsWellFormedUTF8(text)) {
        failure.error = ZipError::BadEncoding;
        return false;
    }
    return true;
}

std::uint64_t LeastEnd(const DirectoryRecord& record)
{
    const std::uint64_t header = kLocalSize + record.nameLength;
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
    for (const std::size_t index : order) {
        DirectoryRecord& record = records[index];
        if (LeastEnd(record) > directoryOffset) {
            record.dataError = ZipError::DataOutsideArchive;
            continue; // its claim is worth nothing against the others'
        }
        if (reaching != nullptr && LeastEnd(*reaching) > record.headerOffset) {
            record.dataError = ZipError::OverlappingEntries;
            reaching->dataError = ZipError::OverlappingEntries;
        }
        if (reaching == nullptr || LeastEnd(record) > LeastEnd(*reaching)) {
            reaching = &record;
        }
    }
}

} // namespace

bool ReadCentralDirectory(const ArchiveFile& file, const ZipLimits& limits, std::vector<DirectoryRecord>& records,
                          ZipFailure& failure)
{
    const Extent extent = LocateDirectory(file, limits);
    failure.error = extent.error;
    if (failure) {
        return false;
    }
    std::vector<unsigned char> bytes(extent.size);
    std::error_code error;
    if (file.Read(extent.offset, bytes.data(), bytes.size(), error) != bytes.size()) {
        failure.error = ZipError::ReadFailed;
        return false;
    }
    ByteCursor cursor(bytes);
    records.reserve(std::min<std::size_t>(extent.entries, bytes.size() / kEntrySize));
    // Some writers store the number of entries modulo 65536, so the directory's bytes decide.
    while (cursor.Left() >= kEntrySize && records.size() <= limits.maxEntries) {
        DirectoryRecord& record = records.emplace_back();
        if (!ReadRecord(cursor, record, failure)) {
            return false;
        }
    }
    if (records.size() > limits.maxEntries) {
        failure.error = ZipError::TooManyEntries;
    } else if (cursor.Left() > 0 || (records.size() & 0xffff) != (extent.entries & 0xffff)) {
        failure.error = ZipError::Inconsistent;
    }
    MarkForeignData(records, extent.offset);
    return !failure;
}

} // namespace orvstorage::detail
