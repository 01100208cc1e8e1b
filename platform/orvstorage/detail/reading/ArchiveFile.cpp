#include <orvstorage/detail/reading/ArchiveFile.h>

#include <algorithm>

namespace orvstorage::detail {

namespace {

// The end record of 22 bytes and its longest comment, with the zip64 locator and record before them.
constexpr std::uint64_t kTailSize = 65535 + 22 + 20 + 56;

using orvcore::detail::NativeFile;

} // namespace

std::shared_ptr<const ArchiveFile> ArchiveFile::Open(const std::filesystem::path& path, ZipFailure& failure)
{
    auto archive = std::make_shared<ArchiveFile>();
    std::error_code error;
    archive->file_ = NativeFile::Open(path, NativeFile::Mode::Read, error);
    if (error) {
        failure.error = error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory
                            ? ZipError::FileMissing
                            : ZipError::CannotOpen;
    } else {
        archive->size_ = archive->file_.Size(error);
        archive->tailSize_ = std::min(archive->size_, kTailSize);
        archive->tail_ = std::make_unique_for_overwrite<unsigned char[]>(archive->tailSize_);
        const std::size_t wanted = archive->tailSize_;
        if (!error && archive->file_.ReadAt(archive->TailOffset(), archive->tail_.get(), wanted, error) == wanted) {
            return archive;
        }
        failure.error = ZipError::ReadFailed;
    }
    if (failure.error != ZipError::FileMissing) {
        failure.detail = error.message();
    }
    return nullptr;
}

std::size_t ArchiveFile::Read(std::uint64_t offset, void* data, std::size_t size, std::error_code& error) const
{
    error.clear();
    if (offset < TailOffset() || offset >= size_) {
        return file_.ReadAt(offset, data, size, error);
    }
    const std::size_t at = offset - TailOffset();
    const std::size_t count = std::min(size, tailSize_ - at);
    std::copy_n(tail_.get() + at, count, static_cast<unsigned char*>(data));
    return count;
}

} // namespace orvstorage::detail
