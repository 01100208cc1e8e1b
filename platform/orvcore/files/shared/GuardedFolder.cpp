#include <orvcore/files/shared/GuardedFolder.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/FileError.h>
#include <orvcore/files/FileSystem.h>

#include <algorithm>
#include <chrono>

namespace orvcore::detail {

namespace fs = std::filesystem;

namespace {

bool IsBelow(const fs::path& path, const fs::path& folder)
{
    return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first == folder.end();
}

} // namespace

GuardedFolder::GuardedFolder(fs::path folder)
    : folder_(std::move(folder))
{
}

GuardedFolder::~GuardedFolder()
{
    if (!private_.empty()) {
        RemoveTree(private_);
    }
    // Folders may hold by now what others have put there; removing one by one fails on those and leaves them.
    std::error_code ignored;
    std::for_each(created_.rbegin(), created_.rend(), [&](const fs::path& path) { RemoveOne(path, ignored); });
}

void GuardedFolder::Keep() noexcept
{
    created_.clear();
}

fs::path GuardedFolder::Open(std::error_code& error)
{
    error.clear();
    folder_ = IsUsablePath(folder_) ? fs::absolute(folder_, error).lexically_normal() : fs::path();
    folder_ = WithoutClosingSeparators(folder_); // a closing slash would make the folder its own parent
    if (folder_.empty()) {
        error = std::make_error_code(std::errc::invalid_argument);
        return {};
    }
    std::vector<fs::path> missing;
    for (fs::path at = folder_; !Exists(at) && at != at.parent_path(); at = at.parent_path()) {
        missing.push_back(at);
    }
    for (auto at = missing.rbegin(); at != missing.rend() && !error; ++at) {
        if (orvcore::MakeDirectory(*at, error)) {
            created_.push_back(*at);
        }
    }
    if (!error) {
        RemoveLeftBehind(folder_, std::chrono::hours(24));
        canonical_ = RealPath(folder_, error);
        known_.insert(folder_);
    }
    const fs::path staging = PrivateSibling(folder_ / "x");
    if (!error && orvcore::MakeDirectory(staging, error)) {
        private_ = staging;
    }
    return private_;
}

bool GuardedFolder::Make(const fs::path& directory, std::error_code& error)
{
    if (known_.contains(directory)) {
        return true;
    }
    if (!Make(directory.parent_path(), error)) {
        return false;
    }
    if (orvcore::MakeDirectory(directory, error)) {
        created_.push_back(directory);
    }
    const fs::path real = error ? fs::path() : RealPath(directory, error);
    if (!error && !IsBelow(real, canonical_)) {
        error = FileError::OutsideTarget;
    }
    if (!error) {
        known_.insert(directory);
    }
    return !error;
}

bool GuardedFolder::MakeDirectory(const fs::path& relative, std::error_code& error)
{
    error.clear();
    return Make(folder_ / relative, error);
}

bool GuardedFolder::Has(const fs::path& relative) const
{
    std::error_code ignored;
    return InspectPath(folder_ / relative, ignored).kind != FileKind::Nothing;
}

bool GuardedFolder::PutFile(const fs::path& from, const fs::path& relative, IfExists ifExists, std::error_code& error)
{
    error.clear();
    const fs::path place = folder_ / relative;
    if (!Make(place.parent_path(), error)) {
        return false;
    }
    const bool isNew = !Has(relative);
    if (!isNew && ifExists == IfExists::Keep) {
        return true;
    }
    if (!RenameOver(from, place, error)) {
        return false;
    }
    if (isNew) {
        created_.push_back(place);
    }
    return true;
}

} // namespace orvcore::detail
