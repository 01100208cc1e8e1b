#pragma once

#include <orvcore/Export.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <system_error>

namespace orvcore {

/// A lock between processes, tied to a small file. Many may hold it shared, or one exclusively; the system releases it
/// when its holder ends, even if it crashes. Two objects of one process exclude each other, too. Remove the file
/// only when no process will ask for this lock again: a new file of its name is another lock. One thread at a time.
class ORVPLATFORM_API FileLock {
public:
    /// Opens the lock at `path`; `create` creates the file when it is missing. Empty, with the reason in `error`, when
    /// that fails, and with `create` when the path is a link. An existing folder can be locked as well, as long as it
    /// exists; not on Windows, where the file of an open lock cannot be removed.
    static std::unique_ptr<FileLock> Open(const std::filesystem::path& path, bool create, std::error_code& error);

    /// Locks `folder` exclusively against other callers of this function, for a short change of its content. Nothing is
    /// left in the folder, even if the process is killed. Waits for at most `timeout`.
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
