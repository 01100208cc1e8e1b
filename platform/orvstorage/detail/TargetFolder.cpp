#include <orvstorage/detail/TargetFolder.h>

#include <orvcore/AtomicFile.h>
#include <orvcore/FileSystem.h>
#include <orvcore/Files.h>
#include <orvstorage/detail/Libzip.h>
#include <orvstorage/detail/Unpacker.h>

#include <algorithm>

namespace orvstorage::detail {

namespace fs = std::filesystem;

namespace {

bool IsBelow(const fs::path& path, const fs::path& folder)
{
    return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first == folder.end();
}

} // namespace

TargetFolder::TargetFolder(fs::path folder)
    : folder_(std::move(folder))
{
}

TargetFolder::~TargetFolder()
{
    if (!private_.empty()) {
        orvcore::RemoveTree(private_);
    }
    // Folders may hold by now what others have put there; removing one by one fails on those and leaves them.
    std::error_code ignored;
    std::for_each(created_.rbegin(), created_.rend(), [&](const fs::path& path) { orvcore::RemoveOne(path, ignored); });
}

void TargetFolder::Keep() noexcept
{
    created_.clear();
}

fs::path TargetFolder::Open(ZipFailure& failure)
{
    std::error_code error;
    folder_ = orvcore::IsUsablePath(folder_) ? fs::absolute(folder_, error).lexically_normal() : fs::path();
    if (folder_.filename().empty() && folder_.has_relative_path()) {
        folder_ = folder_.parent_path(); // a closing slash would make the folder its own parent
    }
    if (folder_.empty()) {
        TranslateWriteError(std::make_error_code(std::errc::invalid_argument), failure);
        return {};
    }
    std::vector<fs::path> missing;
    for (fs::path at = folder_; !orvcore::Exists(at) && at != at.parent_path(); at = at.parent_path()) {
        missing.push_back(at);
    }
    for (auto at = missing.rbegin(); at != missing.rend() && !error; ++at) {
        if (orvcore::MakeDirectory(*at, error)) {
            created_.push_back(*at);
        }
    }
    if (!error) {
        canonical_ = orvcore::RealPath(folder_, error);
        known_.insert(folder_);
    }
    const fs::path staging = orvcore::PrivateSibling(folder_ / "x");
    if (!error && orvcore::MakeDirectory(staging, error)) {
        private_ = staging;
    }
    if (error) {
        TranslateWriteError(error, failure);
    }
    return staging;
}

// A link below the target, left there by someone else, must not lead an entry out of it.
bool TargetFolder::Make(const fs::path& directory, ZipFailure& failure)
{
    if (known_.contains(directory)) {
        return true;
    }
    if (!Make(directory.parent_path(), failure)) {
        return false;
    }
    std::error_code error;
    if (orvcore::MakeDirectory(directory, error)) {
        created_.push_back(directory);
    }
    const fs::path real = error ? fs::path() : orvcore::RealPath(directory, error);
    if (error) {
        TranslateWriteError(error, failure);
    } else if (!IsBelow(real, canonical_)) {
        failure.error = ZipError::OutsideTarget;
    } else {
        known_.insert(directory);
    }
    return !failure;
}

bool TargetFolder::MakeDirectory(const orvcore::UTF8String& relative, ZipFailure& failure)
{
    return Make(folder_ / orvcore::PathFromUTF8(relative).make_preferred(), failure);
}

bool TargetFolder::PutFile(const fs::path& from, const orvcore::UTF8String& relative, Existing existing,
                           ZipFailure& failure)
{
    const fs::path place = folder_ / orvcore::PathFromUTF8(relative).make_preferred();
    if (!Make(place.parent_path(), failure)) {
        return false;
    }
    std::error_code error;
    const bool isNew = orvcore::InspectPath(place, error).kind == orvcore::FileKind::Nothing;
    if (!isNew && existing == Existing::Keep) {
        return true;
    }
    if (!orvcore::RenameOver(from, place, error)) {
        TranslateWriteError(error, failure);
        return false;
    }
    if (isNew) {
        created_.push_back(place);
    }
    return true;
}

} // namespace orvstorage::detail
