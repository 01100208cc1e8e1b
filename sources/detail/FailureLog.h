#pragma once

#include <sources/detail/FolderWalk.h>

#include <mutex>

namespace orvcapsule::detail {

/// What the last listing of each of a source's folders could not read. Thread-safe.
class FailureLog {
public:
    /// Replaces the whole log after a listing of all folders.
    void ReplaceAll(const std::vector<FolderFailure>& failures);
    /// After a listing of one folder: replaces what the log has of that folder, and of what was listed below it.
    void Replace(const std::filesystem::path& folder, Depth depth, const std::vector<FolderFailure>& failures);

    std::vector<FolderFailure> Get() const;

private:
    mutable std::mutex mutex_;
    std::vector<FolderFailure> failures_;
};

} // namespace orvcapsule::detail
