#pragma once

#include <orvcore/Export.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>

namespace orvcore {

/// A lock between processes, tied to a small file that stays in its place for ever. Many may hold it shared, or one
/// exclusively; the system releases it when its holder ends, however that happens. Two objects exclude each other
/// within a process too. One thread at a time.
class ORVPLATFORM_API FileLock {
public:
    /// Opens the lock at `path`, whose file is created when missing if `create` says so. Empty when that fails.
    static std::unique_ptr<FileLock> Open(const std::filesystem::path& path, bool create);

    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    /// Releases what is held.
    ~FileLock();

    /// Takes the lock, at once or not at all, in place of what this object held before. On failure nothing is held.
    bool TryExclusive();
    bool TryShared();
    /// As TryShared, again and again for at most `patience`.
    bool WaitShared(std::chrono::milliseconds patience);

private:
    explicit FileLock(std::intptr_t handle)
        : handle_(handle)
    {
    }
    bool Try(bool exclusive);

    const std::intptr_t handle_;
};

} // namespace orvcore
