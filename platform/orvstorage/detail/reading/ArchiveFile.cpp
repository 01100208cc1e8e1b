#include <orvstorage/detail/reading/ArchiveFile.h>

#include <algorithm>

// The end of a zip file, as far as it is kept in memory, and what is done with it:
//
//   entries | central directory | (zip64 end, 56 bytes | its locator, 20) | end record, 22 | comment, up to 65535
//           ^ Keep takes all from here on                                 ^ LocateDirectory looks for this
//
// Opening reads the last 65535 + 98 bytes: the end record always lies there, and with most packages the whole
// directory, so that one read opens an archive. CentralDirectory then judges the directory, changes flags in it where
// the zip library would stumble, and puts an end record of ours behind it. All that is in memory; the file is opened
// for reading only.

namespace orvstorage::detail {

namespace {

constexpr std::uint64_t kTailSize = 65535 + ArchiveFile::kLongestEnd; // with the longest comment

using orvcore::detail::NativeFile;

} // namespace

ZipResult<std::shared_ptr<ArchiveFile>> ArchiveFile::Open(const std::filesystem::path& path)
{
    auto archive = std::make_shared<ArchiveFile>();
    std::error_code error;
    archive->file_ = NativeFile::Open(path, NativeFile::Mode::Read, error);
    if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory) {
        return ZipError::FileMissing;
    }
    if (error) {
        return ZipFault{ZipError::CannotOpen, error.message()};
    }
    // Before the first byte is read: what another program writes from now on makes the file another version.
    archive->version_ = archive->file_.Version(error);
    archive->size_ = archive->version_.size;
    if (error || !archive->ReadTail(archive->size_ - std::min(archive->size_, kTailSize), error)) {
        return ZipFault{ZipError::ReadFailed, error.message()};
    }
    return archive;
}

bool ArchiveFile::ReadTail(std::uint64_t offset, std::error_code& error)
{
    const std::size_t wanted = size_ - offset;
    // With the room that ReplaceEnd may need, so that the bytes need not move once there are views of them.
    auto bytes = std::make_unique_for_overwrite<unsigned char[]>(wanted + kLongestEnd);
    if (file_.ReadAt(offset, bytes.get(), wanted, error) != wanted) {
        return false;
    }
    tail_ = std::move(bytes);
    tailSize_ = wanted;
    return true;
}

bool ArchiveFile::Keep(std::uint64_t offset, std::span<unsigned char>& bytes)
{
    std::error_code error;
    // A directory that begins before the tail: all from there on is read again, in one piece. The limits on its size
    // have been asked before.
    if (offset < TailOffset() && !ReadTail(offset, error)) {
        return false;
    }
    bytes = std::span(tail_.get(), tailSize_).subspan(offset - TailOffset());
    return true;
}

void ArchiveFile::ReplaceEnd(std::uint64_t offset, std::span<const unsigned char> end)
{
    // The size that readers are shown changes with it: whatever the file holds behind this end is hidden from them.
    const std::size_t kept = offset - TailOffset();
    std::copy(end.begin(), end.end(), tail_.get() + kept);
    tailSize_ = kept + end.size();
    size_ = offset + end.size();
}

// Two questions: somebody may have written into this file, or have put another one in its place.
bool ArchiveFile::IsStillAt(const std::filesystem::path& path) const
{
    std::error_code error;
    return file_.Version(error) == version_ && orvcore::detail::VersionAt(path) == version_;
}

// Of the tail what is in memory counts: it may have been changed for the readers, and then ends otherwise than the
// file.
std::size_t ArchiveFile::Read(std::uint64_t offset, void* data, std::size_t size, std::error_code& error) const
{
    error.clear();
    std::size_t done = 0;
    if (offset < TailOffset()) {
        const std::size_t wanted = std::min<std::uint64_t>(size, TailOffset() - offset);
        done = file_.ReadAt(offset, data, wanted, error);
        if (done < wanted) {
            return done;
        }
    }
    const std::size_t at = std::min<std::uint64_t>(offset + done - TailOffset(), tailSize_);
    const std::size_t count = std::min(size - done, tailSize_ - at);
    std::copy_n(tail_.get() + at, count, static_cast<unsigned char*>(data) + done);
    return done + count;
}

} // namespace orvstorage::detail
