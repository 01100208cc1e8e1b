#include <orvcore/FileLock.h>
#include <orvcore/Paths.h>

#include <thread>

#if defined(_WIN32)
#include <windows.h>
#else
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#endif

namespace orvcore {

namespace {

// Tries again and again while `attempt` answers "busy"; neither system can wait with a limit.
template <class Attempt>
std::error_code Wait(std::chrono::milliseconds patience, const Attempt& attempt)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    std::error_code error = attempt();
    while (error == std::errc::device_or_resource_busy && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        error = attempt();
    }
    return error;
}

} // namespace

#if defined(_WIN32)

std::unique_ptr<FileLock> FileLock::Open(const std::filesystem::path& path, bool create)
{
    const HANDLE handle =
        ::CreateFileW(ToSystemPath(path).c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                      nullptr, create ? OPEN_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return nullptr;
    }
    return std::unique_ptr<FileLock>(new FileLock(reinterpret_cast<std::intptr_t>(handle)));
}

// A folder cannot be locked here. A file that nobody else may open, and that goes when it is closed, does as well. It
// is named like the private files beside the ones they replace: should the machine fail, it is removed like those.
std::unique_ptr<FileLock> FileLock::ForMoment(const std::filesystem::path& folder, std::chrono::milliseconds patience,
                                              std::error_code& error)
{
    const std::filesystem::path path = ToSystemPath(folder / L".orv-00000000-0000-0000-0000-000000000000.part");
    HANDLE handle = INVALID_HANDLE_VALUE;
    error = Wait(patience, [&] {
        handle = ::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                               FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        const DWORD reason = handle == INVALID_HANDLE_VALUE ? ::GetLastError() : ERROR_SUCCESS;
        const bool isBusy = reason == ERROR_SHARING_VIOLATION || reason == ERROR_ACCESS_DENIED; // the latter as it goes
        return isBusy ? std::make_error_code(std::errc::device_or_resource_busy) : std::error_code();
    });
    if (handle == INVALID_HANDLE_VALUE) {
        return nullptr;
    }
    return std::unique_ptr<FileLock>(new FileLock(reinterpret_cast<std::intptr_t>(handle)));
}

FileLock::~FileLock()
{
    ::CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

std::error_code FileLock::Try(bool exclusive)
{
    const auto handle = reinterpret_cast<HANDLE>(handle_);
    OVERLAPPED start{};
    ::UnlockFileEx(handle, 0, 1, 0, &start);
    const DWORD flags = LOCKFILE_FAIL_IMMEDIATELY | (exclusive ? LOCKFILE_EXCLUSIVE_LOCK : 0U);
    const bool locked = ::LockFileEx(handle, flags, 0, 1, 0, &start) != 0;
    return locked ? std::error_code() : std::make_error_code(std::errc::device_or_resource_busy);
}

#else

std::unique_ptr<FileLock> FileLock::Open(const std::filesystem::path& path, bool create)
{
    // Read access is enough to lock, so the file of another user serves too. In a folder that users share, somebody may
    // have put a link or a pipe there: a link would have its target made, opening a pipe would wait.
    const int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | (create ? O_CREAT | O_NOFOLLOW : 0);
    const int handle = ::open(path.c_str(), flags, 0666);
    if (handle < 0) {
        return nullptr;
    }
    return std::unique_ptr<FileLock>(new FileLock(handle));
}

std::unique_ptr<FileLock> FileLock::ForMoment(const std::filesystem::path& folder, std::chrono::milliseconds patience,
                                              std::error_code& error)
{
    error.clear();
    auto lock = Open(folder, false);
    const std::error_code failure = lock ? Wait(patience, [&] { return lock->Try(true); }) : std::error_code();
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
    ::close(static_cast<int>(handle_));
}

std::error_code FileLock::Try(bool exclusive)
{
    int failure = 0;
    do {
        failure = ::flock(static_cast<int>(handle_), (exclusive ? LOCK_EX : LOCK_SH) | LOCK_NB) == 0 ? 0 : errno;
    } while (failure == EINTR);
    if (failure != 0) {
        ::flock(static_cast<int>(handle_), LOCK_UN); // whether a failed change keeps the old lock varies
    }
    return {failure == EWOULDBLOCK ? EBUSY : failure, std::generic_category()};
}

#endif

bool FileLock::TryExclusive()
{
    return !Try(true);
}

bool FileLock::TryShared()
{
    return !Try(false);
}

bool FileLock::WaitShared(std::chrono::milliseconds patience)
{
    return !Wait(patience, [this] { return Try(false); });
}

} // namespace orvcore
