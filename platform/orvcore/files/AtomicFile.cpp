#include <orvcore/files/AtomicFile.h>

#include <orvcore/files/FileError.h>
#include <orvcore/files/detail/OrThrow.h>
#include <orvcore/files/shared/NativeFile.h>
#include <orvcore/files/shared/RenameOver.h>

#include <algorithm>

// A file that is written whole or not at all goes through these states:
//
// - nothing on the disk: content is gathered in the buffer; a small file is made only at its commit;
// - a private file beside the target, ".orv-<guid>.part", made at the first flush of the buffer. A killed process
//   leaves it; the next writer in this folder removes it when it is a day old (PrivateNames.cpp);
// - complete: all is written, flushed to the disk where that is asked for, and closed, which some systems answer with
//   what no write has told (a full disk, a server that is gone);
// - in place: one rename, after which the private name is gone. The destructor removes the private file in any other
//   case.
//
// The folder itself is not flushed. After a loss of power the path may hold the old file again, but with
// Durability::OnDisk never a half one: the content is on the disk before the rename is asked for.

namespace orvcore {

namespace fs = std::filesystem;

namespace {

// Several pieces of an archive that is written or unpacked; those of a copy are larger and go past the buffer.
constexpr std::size_t kBufferSize = std::size_t{512} << 10;
// Writing to the disk begins while more is being made, so that the flush at the end finds little left to do.
constexpr std::uint64_t kWritebackStep = std::uint64_t{8} << 20;

// What is replaced is the file that a link leads to: users keep links to packages that lie on other disks.
fs::path FollowLinks(const fs::path& path)
{
    std::error_code error;
    if (InspectPath(path, error).kind != FileKind::Link) {
        return path;
    }
    fs::path real = RealPath(path, error);
    return error ? path : real;
}

} // namespace

void CheckReplaceable(const fs::path& path)
{
    detail::OrThrow("cannot replace", path, [&](std::error_code& error) { CheckReplaceable(path, error); });
}

bool CheckReplaceable(const fs::path& path, std::error_code& error)
{
    error.clear();
    if (!IsUsablePath(path)) {
        error = path.empty() ? FileError::EmptyPath : std::make_error_code(std::errc::invalid_argument);
        return false;
    }
    // Only what would lose something for sure is refused here.
    std::error_code unknown; // where it cannot be found out, the system answers the attempt itself
    const FileKind kind = InspectTarget(path, unknown).kind;
    if (kind == FileKind::Directory) {
        error = std::make_error_code(std::errc::is_a_directory);
    } else if (kind == FileKind::Other) {
        error = FileError::NotARegularFile;
    } else if (kind == FileKind::Nothing && InspectPath(path, unknown).kind == FileKind::Link) {
        error = FileError::LinkToNothing;
    }
    return !error;
}

AtomicFile::AtomicFile(const fs::path& path)
    : target_(FollowLinks(path))
    , file_(std::make_unique<detail::NativeFile>())
{
}

AtomicFile::~AtomicFile()
{
    Rollback();
}

fs::path AtomicFile::Folder() const
{
    return target_.has_parent_path() ? target_.parent_path() : ".";
}

void AtomicFile::RemoveLeftBehind() const noexcept
{
    orvcore::RemoveLeftBehind(Folder(), std::chrono::hours(24));
}

bool AtomicFile::Open(std::error_code& error)
{
    error.clear();
    if (file_->IsOpen()) {
        return true;
    }
    if (!CheckReplaceable(target_, error)) {
        return false;
    }
    // A new name at each try: two programs that write the same target never share one.
    private_ = PrivateSibling(target_);
    *file_ = detail::NativeFile::Open(private_, detail::NativeFile::Mode::CreateNew, error);
    if (error) {
        private_.clear();
        return false;
    }
    // At once: content that few may read is not shown to more while it is being written.
    // The file that is replaced comes last: where there is one, its rights count and not the model's.
    if (!rightsOf_.empty()) {
        file_->CopyPermissions(rightsOf_);
    }
    file_->CopyPermissions(target_);
    return true;
}

bool AtomicFile::FlushBuffer(std::error_code& error)
{
    error.clear();
    if (buffer_.empty()) {
        return true;
    }
    if (!Open(error) || !file_->WriteAt(bufferStart_, buffer_.data(), buffer_.size(), error)) {
        return false;
    }
    const std::uint64_t end = bufferStart_ + buffer_.size();
    if (end >= writtenBack_ + kWritebackStep) {
        file_->StartWriteback(writtenBack_, end - writtenBack_);
        writtenBack_ = end;
    }
    buffer_.clear();
    return true;
}

// An archive's writer puts down many small pieces and comes back to headers that it has just written. Both stay in
// memory, unless the position has left the buffer or the buffer is full.
bool AtomicFile::Write(const void* data, std::size_t size, std::error_code& error)
{
    error.clear();
    const bool inBuffer = position_ >= bufferStart_ && position_ <= bufferStart_ + buffer_.size();
    if ((!inBuffer || position_ - bufferStart_ + size > kBufferSize) && !FlushBuffer(error)) {
        return false;
    }
    if (size > kBufferSize) {
        if (!Open(error) || !file_->WriteAt(position_, data, size, error)) {
            return false;
        }
    } else if (size > 0) {
        if (buffer_.empty()) {
            buffer_.reserve(kBufferSize);
            bufferStart_ = position_;
        }
        const auto* const bytes = static_cast<const char*>(data);
        const std::size_t at = position_ - bufferStart_;
        const std::size_t replaced = std::min(size, buffer_.size() - at);
        std::copy_n(bytes, replaced, buffer_.begin() + static_cast<std::ptrdiff_t>(at));
        buffer_.insert(buffer_.end(), bytes + replaced, bytes + size);
    }
    position_ += size;
    size_ = std::max(size_, position_);
    return true;
}

bool AtomicFile::Complete(Durability durability, std::error_code& error)
{
    return FlushBuffer(error) && Open(error) && (durability == Durability::Cached || file_->FlushToDisk(error)) &&
           file_->Close(error);
}

bool AtomicFile::PutInPlace(std::error_code& error)
{
    if (!RenameOver(private_, target_, error)) {
        return false;
    }
    private_.clear();
    return true;
}

bool AtomicFile::Commit(Durability durability, std::error_code& error)
{
    return Complete(durability, error) && PutInPlace(error);
}

void AtomicFile::Rollback() noexcept
{
    std::error_code ignored;
    // First: Windows keeps the name of a removed file until it is closed.
    file_->Close(ignored);
    buffer_.clear();
    if (!private_.empty()) {
        RemoveTree(private_, ignored);
        private_.clear();
    }
}

} // namespace orvcore
