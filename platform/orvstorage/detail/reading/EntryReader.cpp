#include <orvstorage/detail/reading/EntryReader.h>

#include <orvstorage/detail/reading/LocalHeader.h>

#include <algorithm>

namespace orvstorage::detail {

namespace {

// With such a password the content comes out as noise, and what is wrong with noise is no news.
void NamePassword(ZipFailure& failure)
{
    if (failure.error == ZipError::DataCorrupt || failure.error == ZipError::ChecksumMismatch ||
        failure.error == ZipError::SizeMismatch) {
        failure.error = ZipError::WrongPassword;
        failure.detail = "or its content is damaged";
    }
}

} // namespace

bool IsBeyondRatio(std::uint64_t size, std::uint64_t compressedSize, const ZipLimits& limits)
{
    return size >= limits.ratioFloor && size / std::max<std::uint64_t>(compressedSize, 1) > limits.maxRatio;
}

ZipError EntryReader::Judge(const ArchiveEntry& entry, const ZipLimits& limits)
{
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

EntryReader::EntryReader(zip_t* handle, std::uint64_t index, const ArchiveEntry& entry, ZipFailure& failure)
    : declared_(entry.shown.size)
    , hasWeakPassword_(entry.hasWeakPassword)
{
    failure.error = CheckLocalHeader(*entry.file, entry.record);
    // Of an entry without data the zip library asks nothing.
    if (!failure && entry.shown.compressedSize == 0 && declared_ == 0 && entry.record.crc != 0) {
        failure.error = ZipError::ChecksumMismatch;
    }
    if (failure) {
        return;
    }
    handle_.reset(zip_fopen_index(handle, index, 0));
    if (!handle_) {
        FaultOf(*zip_get_error(handle)).Tell(failure);
    }
}

std::size_t EntryReader::Read(void* data, std::size_t size, ZipFailure& failure)
{
    std::size_t filled = 0;
    while (filled < size) {
        const zip_int64_t got = zip_fread(handle_.get(), static_cast<char*>(data) + filled, size - filled);
        if (got < 0) {
            FaultOf(*zip_file_get_error(handle_.get())).Tell(failure);
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
    if (hasWeakPassword_) {
        NamePassword(failure);
    }
    return filled;
}

} // namespace orvstorage::detail
