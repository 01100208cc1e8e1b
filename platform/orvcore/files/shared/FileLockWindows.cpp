#include <orvcore/files/shared/FileLock.h>

#include <orvcore/files/Paths.h>
#include <orvcore/files/detail/WindowsError.h>

#include <windows.h>

// Locks of this system are of byte ranges, and bind all programs, not only those that ask: bytes that are locked cannot
// be read. So the first byte of a small file that has no content is locked, or for a folder, which has no bytes, a file
// that nobody may share.

namespace orvcore {

std::unique_ptr<FileLock> FileLock::Open(const std::filesystem::path& path, bool create, std::error_code& error)
{
    const HANDLE handle =
        // Without FILE_SHARE_DELETE: as long as the lock is open no process can remove the file and lock another of its
        // name.
        ::CreateFileW(ToSystemPath(path).c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                      nullptr, create ? OPEN_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    error = handle == INVALID_HANDLE_VALUE ? detail::LastWindowsError() : std::error_code();
    if (error) {
        return nullptr;
    }
    return std::unique_ptr<FileLock>(new FileLock(reinterpret_cast<std::intptr_t>(handle)));
}

// A folder cannot be locked here. A file that nobody else may open, and that goes when it is closed, does as well. It
// is named like the private files beside the ones they replace: should the machine fail, it is removed like those.
std::unique_ptr<FileLock> FileLock::ForMoment(const std::filesystem::path& folder, std::chrono::milliseconds timeout,
                                              std::error_code& error)
{
    const std::filesystem::path path = ToSystemPath(folder / L".orv-00000000-0000-0000-0000-000000000000.part");
    HANDLE handle = INVALID_HANDLE_VALUE;
    error = Wait(timeout, [&] {
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
    // Elsewhere a lock takes the place of the one that this object held; here a second would be refused beside it.
    ::UnlockFileEx(handle, 0, 1, 0, &start);
    const DWORD flags = LOCKFILE_FAIL_IMMEDIATELY | (exclusive ? LOCKFILE_EXCLUSIVE_LOCK : 0U);
    const bool locked = ::LockFileEx(handle, flags, 0, 1, 0, &start) != 0;
    return locked ? std::error_code() : std::make_error_code(std::errc::device_or_resource_busy);
}

} // namespace orvcore
