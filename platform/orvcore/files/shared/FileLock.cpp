#include <orvcore/files/Paths.h>
#include <orvcore/files/shared/FileLock.h>

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

#if defined(_WIN32)

std::unique_ptr<FileLock> FileLock::Open(const std::filesystem::path& path, bool create)
{
    const HANDLE handle = ::CreateFileW(ToSystemPath(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                        create ? OPEN_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return nullptr;
    }
    return std::unique_ptr<FileLock>(new FileLock(reinterpret_cast<std::intptr_t>(handle)));
}

FileLock::~FileLock()
{
    ::CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

bool FileLock::Try(bool exclusive)
{
    const auto handle = reinterpret_cast<HANDLE>(handle_);
    OVERLAPPED start{};
    ::UnlockFileEx(handle, 0, 1, 0, &start);
    const DWORD flags = LOCKFILE_FAIL_IMMEDIATELY | (exclusive ? LOCKFILE_EXCLUSIVE_LOCK : 0U);
    return ::LockFileEx(handle, flags, 0, 1, 0, &start) != 0;
}

#else

std::unique_ptr<FileLock> FileLock::Open(const std::filesystem::path& path, bool create)
{
    // Read access is enough to lock, so the file of another user serves too.
    const int handle = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | (create ? O_CREAT : 0), 0666);
    if (handle < 0) {
        return nullptr;
    }
    return std::unique_ptr<FileLock>(new FileLock(handle));
}

FileLock::~FileLock()
{
    ::close(static_cast<int>(handle_));
}

bool FileLock::Try(bool exclusive)
{
    int result = 0;
    do {
        result = ::flock(static_cast<int>(handle_), (exclusive ? LOCK_EX : LOCK_SH) | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    if (result != 0) {
        ::flock(static_cast<int>(handle_), LOCK_UN); // whether a failed change keeps the old lock varies
    }
    return result == 0;
}

#endif

bool FileLock::TryExclusive()
{
    return Try(true);
}

bool FileLock::TryShared()
{
    return Try(false);
}

bool FileLock::WaitShared(std::chrono::milliseconds patience)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!TryShared()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5)); // neither system can wait with a limit
    }
    return true;
}

} // namespace orvcore
