#include <sources/detail/FailureLog.h>

#include <orvcore/files/Paths.h>
#include <orvcore/files/shared/PathNames.h>

#include <algorithm>

namespace orvcapsule::detail {

namespace fs = std::filesystem;

namespace {

// What is below a folder that was listed alone was not looked at, so its failures still hold.
bool WasListed(const fs::path& folder, const fs::path& top, Depth depth)
{
    return depth == Depth::OneFolder || top.empty() ? folder == top : orvcore::IsWithin(folder, top);
}

} // namespace

void FailureLog::ReplaceAll(const std::vector<FolderFailure>& failures)
{
    const std::lock_guard lock(mutex_);
    failures_ = failures;
}

void FailureLog::Replace(const fs::path& folder, Depth depth, const std::vector<FolderFailure>& failures)
{
    const std::lock_guard lock(mutex_);
    std::erase_if(failures_, [&](const FolderFailure& failure) {
        return WasListed(orvcore::PathFromUTF8(failure.folder), folder, depth);
    });
    failures_.insert(failures_.end(), failures.begin(), failures.end());
}

std::vector<FolderFailure> FailureLog::Get() const
{
    const std::lock_guard lock(mutex_);
    return failures_;
}

} // namespace orvcapsule::detail
