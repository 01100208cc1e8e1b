#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <set>

namespace orvcore::detail {

/// What the system tells of folders; one implementation a system. Used by one thread, but for Wake.
class FolderNotices {
public:
    FolderNotices();
    FolderNotices(const FolderNotices&) = delete;
    FolderNotices& operator=(const FolderNotices&) = delete;
    ~FolderNotices();

    /// Asks for notices of what happens directly in a folder; of one that is watched already it does nothing.
    /// @return false when the system cannot tell of it
    bool Watch(const std::filesystem::path& folder);
    /// Asks for none any more.
    void Forget(const std::filesystem::path& folder);

    struct Heard {
        std::set<std::filesystem::path> folders; ///< in which something happened
        bool isIncomplete = false;               ///< notices were lost: it may be any folder
    };
    /// Waits for a notice, a call of Wake or the end of the time. Returns all notices there are.
    Heard Wait(std::chrono::milliseconds longest);
    /// Ends a Wait, this one or the next. Any thread.
    void Wake() noexcept;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace orvcore::detail
