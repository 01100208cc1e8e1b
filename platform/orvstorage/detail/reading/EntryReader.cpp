#include <orvstorage/detail/reading/EntryReader.h>

#include <orvstorage/detail/reading/LocalHeader.h>

#include <algorithm>

// Everything that is read of an entry comes through here, and with it the second half of the judgement: what the
// directory says was judged when the archive was opened; whether the header and the bytes agree with it is known only
// now. The checksum is compared by the zip library, at the read that finds the end, so a reader must read to that
// end.

namespace orvstorage::detail {

namespace {

// The old encryption has one byte to know a wrong password by, so one in 256 gets past it. The content then comes out
// as noise, and what is wrong with noise is no news.
ZipFault NamePassword(const ZipFault& fault)
{
    const bool isNoise = fault.error == ZipError::DataCorrupt || fault.error == ZipError::ChecksumMismatch ||
                         fault.error == ZipError::SizeMismatch;
    return isNoise ? ZipFault{ZipError::WrongPassword, "or its content is damaged"} : fault;
}

} // namespace

// An entry without packed bytes counts as one of a single byte: its ratio is its size.
bool IsBeyondRatio(std::uint64_t size, std::uint64_t compressedSize, const ZipLimits& limits)
{
    return size >= limits.ratioFloor && size / std::max<std::uint64_t>(compressedSize, 1) > limits.maxRatio;
}

ZipError EntryReader::Judge(const ArchiveEntry& entry, const ZipLimits& limits)
{
    // In this order the reason that tells most comes first; a link, for instance, is refused as one whatever its size.
    const std::uint64_t size = entry.shown.size;
    if (entry.kind == EntryKind::SymbolicLink || entry.kind == EntryKind::Special) {
        return entry.kind == EntryKind::Special ? ZipError::SpecialFile : ZipError::SymbolicLink;
    }
    if (entry.record.dataError != ZipError::None) {
        return entry.record.dataError;
    }
    if (size > limits.maxEntrySize) {
        return ZipError::EntryTooLarge;
    }
    return IsBeyondRatio(size, entry.shown.compressedSize, limits) ? ZipError::RatioTooHigh : ZipError::None;
}

ZipResult<EntryReader> EntryReader::Open(zip_t* handle, std::uint64_t index, const ArchiveEntry& entry)
{
    if (const ZipError error = CheckLocalHeader(*entry.file, entry.record); error != ZipError::None) {
        return error;
    }
    // A checksum that is wrong would not be noticed here: of an entry without data the zip library asks nothing.
    if (entry.shown.compressedSize == 0 && entry.shown.size == 0 && entry.record.crc != 0) {
        return ZipError::ChecksumMismatch;
    }
    EntryHandle opened(zip_fopen_index(handle, index, 0));
    return opened ? ZipResult(EntryReader(std::move(opened), entry)) : FaultOf(*zip_get_error(handle));
}

ZipResult<std::size_t> EntryReader::Read(void* data, std::size_t size)
{
    auto filled = ReadPlain(data, size);
    return filled || !hasWeakPassword_ ? filled : NamePassword(filled.Fault());
}

ZipResult<std::size_t> EntryReader::ReadPlain(void* data, std::size_t size)
{
    std::size_t filled = 0;
    while (filled < size) {
        const zip_int64_t got = zip_fread(handle_.get(), static_cast<char*>(data) + filled, size - filled);
        if (got < 0) {
            const ZipFault fault = FaultOf(*zip_file_get_error(handle_.get()));
            // The directory agreed with itself; it is the content that has another length.
            return fault.error == ZipError::Inconsistent ? ZipFault{ZipError::SizeMismatch} : fault;
        }
        filled += static_cast<std::size_t>(got);
        done_ += static_cast<std::uint64_t>(got);
        // Limits and places on the disk were judged by the declared size: what inflates to more ends at the first piece
        // beyond it, and what ends early would pass for whole.
        if (done_ > declared_ || (got == 0 && done_ != declared_)) {
            return ZipError::SizeMismatch;
        }
        if (got == 0) {
            break;
        }
    }
    return filled;
}

} // namespace orvstorage::detail
