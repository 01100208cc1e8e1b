#pragma once

#include <orvcore/Export.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <system_error>

namespace orvcore {

/// A lock between processes, tied to a small file that stays in its place for ever. Many may hold it shared, or one
/// exclusively; the system releases it when its holder ends, however that happens. Two objects exclude each other
/// within a process too. One thread at a time.
class ORVPLATFORM_API FileLock {
public:
    /// Opens the lock at `path`, whose file is created when missing if `create` says so. Empty when that fails, and
    /// where a link is in the place of a file that may be created. A folder that exists is a lock, too, which lasts as
    /// long as the folder; only on Windows it is none, while the file of an open lock cannot be removed there.
    static std::unique_ptr<FileLock> Open(const std::filesystem::path& path, bool create);

    /// Has `folder` exclusively, for a moment's work on what it holds, among those who ask this function. Nothing is
    /// left in the folder, however the holder ends. Waits for at most `timeout`.
    /// @return empty with an `error` when others did not let go in time; empty without one where there are no locks
    static std::unique_ptr<FileLock> ForMoment(const std::filesystem::path& folder, std::chrono::milliseconds timeout,
                                               std::error_code& error);

    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    /// Releases what is held.
    ~FileLock();

    /// Takes the lock, at once or not at all, in place of what this object held before. On failure nothing is held.
    bool TryExclusive();
    bool TryShared();
    /// As TryShared, again and again for at most `timeout`.
    bool WaitShared(std::chrono::milliseconds timeout);

private:
    explicit FileLock(std::intptr_t handle)
        : handle_(handle)
    {
    }
    std::error_code Try(bool exclusive);
    /// Tries again and again while `attempt` answers "busy": no system can wait with a limit.
    static std::error_code Wait(std::chrono::milliseconds timeout, const std::function<std::error_code()>& attempt);

    const std::intptr_t handle_;
};

} // namespace orvcore
