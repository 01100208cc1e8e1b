#include <orvcore/files/shared/FileLock.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace orvcore {

std::unique_ptr<FileLock> FileLock::Open(const std::filesystem::path& path, bool create, std::error_code& error)
{
    // Read access is enough to lock, so the file of another user serves too. In a folder that users share, somebody may
    // have put a link or a pipe there: a link would have its target made, opening a pipe would wait.
    const int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | (create ? O_CREAT | O_NOFOLLOW : 0);
    const int handle = ::open(path.c_str(), flags, 0666);
    error.assign(handle < 0 ? errno : 0, std::generic_category());
    if (error) {
        return nullptr;
    }
    return std::unique_ptr<FileLock>(new FileLock(handle));
}

// The folder itself is locked, so nothing is left in it. Where a file system knows no locks, as some on the network,
// the change goes on without: two programs would have to meet within milliseconds.
std::unique_ptr<FileLock> FileLock::ForMoment(const std::filesystem::path& folder, std::chrono::milliseconds timeout,
                                              std::error_code& error)
{
    auto lock = Open(folder, false, error);
    // A folder that may be written to but not read cannot be opened: no lock then, as on a file system without locks.
    error.clear();
    const std::error_code failure = lock ? Wait(timeout, [&] { return lock->Try(true); }) : std::error_code();
    if (failure == std::errc::device_or_resource_busy) {
        error = failure;
    }
    if (failure) {
        lock.reset();
    }
    return lock;
}

FileLock::~FileLock()
{
    // The lock goes with the last descriptor of this opening, and no child process has one (O_CLOEXEC).
    ::close(static_cast<int>(handle_));
}

// flock and not fcntl: the latter's locks belong to the process, and go as soon as any part of it closes the file.
std::error_code FileLock::Try(bool exclusive)
{
    int failure = 0;
    do {
        // The kernel turns one kind of lock into the other by releasing and taking: another process may come in
        // between.
        failure = ::flock(static_cast<int>(handle_), (exclusive ? LOCK_EX : LOCK_SH) | LOCK_NB) == 0 ? 0 : errno;
    } while (failure == EINTR);
    if (failure != 0) {
        ::flock(static_cast<int>(handle_), LOCK_UN); // whether a failed change keeps the old lock varies
    }
    return {failure == EWOULDBLOCK ? EBUSY : failure, std::generic_category()};
}

} // namespace orvcore
