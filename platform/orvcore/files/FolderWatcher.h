#pragma once

#include <orvcore/Export.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace orvcore {

/// Tells which files in folders have come, gone or changed, so that a host lists again only what it must.
///
/// The system tells that something happened in a folder; what, the watcher finds out by comparing the folder with what
/// it held before. So nothing is told twice, and nothing is lost when the system drops notices. Folders for which the
/// system tells nothing (network drives as a rule, or when it has no more watches) are compared at an interval.
class ORVPLATFORM_API FolderWatcher {
public:
    /// What is watched, and how.
    struct Settings {
        /// Need not exist yet; what it holds is told when it comes. A folder that takes its name, as a delivery does
        /// that renames the old one away, is watched from then on, and told of by the files in which the two differ.
        std::filesystem::path folder;
        bool withSubFolders = true;           ///< links to folders are not followed
        std::filesystem::path extension = {}; ///< of the files of interest, with its dot, ".zelt"; empty: all files
        bool asksSystem = true; ///< false: only compares, for a folder whose system is known to tell nothing
        /// How long it must be quiet before changes are told: a file that is being copied changes many times.
        std::chrono::milliseconds quietTime{300};
        /// Between comparisons where the system tells nothing. It tells nothing of links to the folder and of the
        /// folders around it either: whether another folder has the name by way of these is looked at as often.
        std::chrono::milliseconds interval{5000};
    };

    /// What changed in one folder.
    struct Change {
        std::filesystem::path folder;             ///< full path, built on that of the settings
        std::vector<std::filesystem::path> files; ///< full paths, in order: new, changed and gone ones
    };
    using Callback = std::function<void(const std::vector<Change>& changes)>;

    /// Records what the folders hold now, without reporting it, then watches.
    /// @param callback  runs on the watcher's own thread, one call at a time, and must not destroy the watcher; what it
    ///        throws goes to the handler of `SetTaskExceptionHandler`. Throws `std::system_error` when there is no
    ///        thread.
    FolderWatcher(Settings settings, Callback callback);
    FolderWatcher(const FolderWatcher&) = delete;
    FolderWatcher& operator=(const FolderWatcher&) = delete;
    /// Waits for a running callback; none begins afterwards.
    ~FolderWatcher();

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace orvcore
