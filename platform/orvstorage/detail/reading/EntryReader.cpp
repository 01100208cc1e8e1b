#include <orvstorage/detail/reading/EntryReader.h>

#include <algorithm>

namespace orvstorage::detail {

bool EntryReader::MayRead(const ArchiveEntry& entry, const ZipLimits& limits, ZipFailure& failure)
{
    const std::uint64_t size = entry.shown.size;
    const std::uint64_t packed = std::max<std::uint64_t>(entry.shown.compressedSize, 1);
    if (entry.kind == EntryKind::SymbolicLink || entry.kind == EntryKind::Special) {
        failure.error = entry.kind == EntryKind::Special ? ZipError::SpecialFile : ZipError::SymbolicLink;
    } else if (entry.dataError != ZipError::None) {
        failure.error = entry.dataError;
    } else if (size > limits.maxEntrySize) {
        failure.error = ZipError::EntryTooLarge;
    } else if (size >= limits.ratioFloor && size / packed > limits.maxRatio) {
        failure.error = ZipError::RatioTooHigh;
    }
    return !failure;
}

EntryReader::EntryReader(zip_t* handle, std::uint64_t index, const ArchiveEntry& entry, ZipFailure& failure)
    : handle_(zip_fopen_index(handle, index, 0))
    , declared_(entry.shown.size)
{
    if (!handle_) {
        TranslateError(*zip_get_error(handle), failure);
    }
}

std::size_t EntryReader::Read(void* data, std::size_t size, ZipFailure& failure)
{
    std::size_t filled = 0;
    while (filled < size) {
        const zip_int64_t got = zip_fread(handle_.get(), static_cast<char*>(data) + filled, size - filled);
        if (got < 0) {
            TranslateError(*zip_file_get_error(handle_.get()), failure);
            // The directory agreed with itself; it is the content that has another length.
            failure.error = failure.error == ZipError::Inconsistent ? ZipError::SizeMismatch : failure.error;
            break;
        }
        filled += static_cast<std::size_t>(got);
        done_ += static_cast<std::uint64_t>(got);
        if (done_ > declared_ || (got == 0 && done_ != declared_)) {
            failure.error = ZipError::SizeMismatch;
        }
        if (got == 0 || failure) {
            break;
        }
    }
    return filled;
}

} // namespace orvstorage::detail
