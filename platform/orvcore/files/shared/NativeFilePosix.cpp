#include <orvcore/files/FileError.h>
#include <orvcore/files/Paths.h>
#include <orvcore/files/shared/NativeFile.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

// One open file by its descriptor. Offsets go with each call (pread, pwrite), so several threads may read one file
// without sharing a position. Calls that a signal has interrupted are made again, but for close: its descriptor is gone
// either way.

namespace orvcore::detail {

namespace {

// One call's largest piece: systems cut longer ones short anyway.
constexpr std::size_t kLargestCall = std::size_t{1} << 30;

int FlagsOf(NativeFile::Mode mode)
{
    switch (mode) {
    case NativeFile::Mode::Read:
        return O_RDONLY | O_CLOEXEC | O_NONBLOCK; // of no effect on a regular file
    case NativeFile::Mode::CreateNew:
        // O_EXCL also refuses a link: in a folder that users share, no other user can make this path lead elsewhere.
        return O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC;
    case NativeFile::Mode::Truncate:
        return O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
    }
    return O_RDONLY | O_CLOEXEC;
}

std::error_code LastError()
{
    return {errno, std::generic_category()};
}

} // namespace

NativeFile NativeFile::Open(const std::filesystem::path& path, Mode mode, std::error_code& error)
{
    error.clear();
    NativeFile file;
    if (!IsUsablePath(path)) {
        error = std::make_error_code(std::errc::invalid_argument);
        return file;
    }
    int handle = -1;
    do {
        handle = ::open(path.c_str(), FlagsOf(mode), 0666);
    } while (handle < 0 && errno == EINTR);
    if (handle < 0) {
        error = LastError();
    }
    file.handle_ = handle;
    struct stat status {};
    // A folder opens for reading and fails only later, with a puzzling message; a pipe or a device may never end.
    if (handle >= 0 && mode == Mode::Read && ::fstat(handle, &status) == 0 && !S_ISREG(status.st_mode)) {
        error = S_ISDIR(status.st_mode) ? std::make_error_code(std::errc::is_a_directory)
                                        : make_error_code(FileError::NotARegularFile);
        ::close(handle);
        file.handle_ = kNoHandle;
    }
    return file;
}

std::uint64_t NativeFile::Size(std::error_code& error) const
{
    error.clear();
    struct stat status {};
    if (::fstat(static_cast<int>(handle_), &status) != 0) {
        error = LastError();
        return 0;
    }
    return static_cast<std::uint64_t>(status.st_size);
}

FileVersion NativeFile::Version(std::error_code& error) const
{
    error.clear();
    struct stat status {};
    if (::fstat(static_cast<int>(handle_), &status) != 0) {
        error = LastError();
        return {};
    }
    return {status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size),
            static_cast<std::uint64_t>(status.st_mtim.tv_sec) * 1'000'000'000U +
                static_cast<std::uint64_t>(status.st_mtim.tv_nsec)};
}

std::size_t NativeFile::ReadAt(std::uint64_t offset, void* data, std::size_t size, std::error_code& error) const
{
    error.clear();
    std::size_t done = 0;
    while (done < size) {
        const ssize_t got = ::pread(static_cast<int>(handle_), static_cast<char*>(data) + done,
                                    std::min(size - done, kLargestCall), static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            error = LastError();
        }
        if (got <= 0) {
            break;
        }
        done += static_cast<std::size_t>(got);
    }
    return done;
}

bool NativeFile::WriteAt(std::uint64_t offset, const void* data, std::size_t size, std::error_code& error)
{
    error.clear();
    std::size_t done = 0;
    while (done < size) {
        const ssize_t put = ::pwrite(static_cast<int>(handle_), static_cast<const char*>(data) + done,
                                     std::min(size - done, kLargestCall), static_cast<off_t>(offset + done));
        if (put < 0 && errno == EINTR) {
            continue;
        }
        // Nothing written and no error is a disk without room; to try again could go on for ever.
        if (put <= 0) {
            error = put < 0 ? LastError() : std::make_error_code(std::errc::no_space_on_device);
            return false;
        }
        done += static_cast<std::size_t>(put);
    }
    return true;
}

void NativeFile::StartWriteback(std::uint64_t offset, std::uint64_t size) noexcept
{
    // Begins the writing and waits for nothing. What it answers does not matter: FlushToDisk does all that is left.
    ::sync_file_range(static_cast<int>(handle_), static_cast<off_t>(offset), static_cast<off_t>(size),
                      SYNC_FILE_RANGE_WRITE);
}

bool NativeFile::FlushToDisk(std::error_code& error)
{
    error.clear();
    // A file system that cannot flush says EINVAL; nothing better can be had there.
    if (::fsync(static_cast<int>(handle_)) != 0 && errno != EINVAL) {
        error = LastError();
        return false;
    }
    return true;
}

void NativeFile::CopyPermissions(const std::filesystem::path& model) noexcept
{
    struct stat status {};
    if (::stat(model.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
        // A file system without rights of its own refuses; the file then has what all files have there.
        static_cast<void>(::fchmod(static_cast<int>(handle_), status.st_mode & 07777));
    }
}

bool NativeFile::Close(std::error_code& error)
{
    error.clear();
    // Interrupted or not, the handle is closed, and its number may already be another file's.
    if (handle_ != kNoHandle && ::close(static_cast<int>(std::exchange(handle_, kNoHandle))) != 0 && errno != EINTR) {
        error = LastError();
    }
    return !error;
}

} // namespace orvcore::detail
