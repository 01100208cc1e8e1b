#include <package/Workspace.h>

#include <package/PackageNames.h>
#include <package/detail/FolderUse.h>
#include <package/detail/SafeFileName.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/FileSystem.h>
#include <orvcore/files/Files.h>
#include <orvcore/files/WalkTree.h>
#include <orvcore/host/Application.h>
#include <orvcore/tasks/Executor.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <vector>

namespace orvcapsule {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t kSizeLimitBytes = 314572800;
// Unfinished files of killed programs are removed when they are this old; they would fill the folder otherwise, because
// they do not count for its size.
constexpr std::chrono::hours kLongestMaking{1};
constexpr std::u8string_view kMarkerName = u8"cleanupRequest";

// Where users share a temporary folder, somebody may have put a folder, or a link to one, in the place of ours.
bool IsOursOrFree(const fs::path& path)
{
    // In this order: another thread may make the folder between the two questions.
    std::error_code error;
    return (orvcore::InspectPath(path, error).kind == orvcore::FileKind::Nothing && !error) || orvcore::IsOwn(path);
}

// Empty when there is none to use.
fs::path WorkingFolder(bool local)
{
    try {
        fs::path folder = orvcore::TempDirectory() / (local ? "ProBrowser" : "ProStock");
        return IsOursOrFree(folder) ? folder : fs::path();
    } catch (const fs::filesystem_error&) {
        return {};
    }
}

fs::path StockAssetFolder(const orvcore::UTF8String& assetId)
{
    const fs::path stock = WorkingFolder(false);
    if (stock.empty()) {
        return {};
    }
    fs::path folder = stock / detail::SafeFileName(orvcore::AsUTF8(orvcore::Application::GetName())) /
                      detail::SafeFileName(orvcore::AsUTF8(orvcore::Application::GetClientVersion())) /
                      detail::SafeFileName(assetId);
    std::error_code ignored;
    orvcore::MakeDirectories(folder, ignored);
    return folder;
}

orvcore::UTF8String StockAssetFile(const orvcore::UTF8String& assetId, std::u8string_view name)
{
    const fs::path folder = StockAssetFolder(assetId);
    return folder.empty() ? orvcore::UTF8String() : orvcore::PathToUTF8(folder / orvcore::PathFromUTF8(name));
}

// Deletes what can be deleted below `folder` except the file `kept`; true when nothing else is left.
bool DeleteContents(const fs::path& folder, const fs::path& kept)
{
    bool whole = true;
    const auto remove = [&](const fs::path& path) {
        std::error_code error;
        orvcore::RemoveOne(path, error);
        whole = whole && !error;
    };
    orvcore::TreeVisitor visitor;
    visitor.visit = [&](const fs::path& path, orvcore::FileKind kind) {
        if (kind != orvcore::FileKind::Directory && path != kept) {
            remove(path);
        }
        return orvcore::WalkNext::GoOn;
    };
    visitor.leave = remove;
    visitor.fail = [&](const fs::path&, const std::error_code&) {
        whole = false;
        return orvcore::WalkNext::GoOn;
    };
    orvcore::WalkTree(folder, visitor);
    return whole;
}

// The marker is deleted last: as long as another program keeps files from being deleted, the next process finds the
// marker and tries again.
void DeleteWorkingFolder(const fs::path& folder, const fs::path& marker)
{
    std::error_code error;
    const bool isLink = orvcore::InspectPath(folder, error).kind == orvcore::FileKind::Link;
    if (isLink || DeleteContents(folder, marker)) {
        orvcore::RemoveTree(folder);
    }
}

// The sizes of the files below `folder`; ends early when they pass the limit or the process ends.
std::uint64_t SizeOf(const fs::path& folder, std::uint64_t limit)
{
    std::uint64_t total = 0;
    const auto add = [&](const fs::path& path, orvcore::FileKind kind) {
        if (kind == orvcore::FileKind::File && path.filename().native().front() != '.') {
            std::error_code error;
            total += orvcore::InspectPath(path, error).size;
            if (error) {
                throw fs::filesystem_error("cannot tell the size of a working folder", path, error);
            }
        }
        return total <= limit && !orvcore::IsTerminating() ? orvcore::WalkNext::GoOn : orvcore::WalkNext::End;
    };
    orvcore::WalkTree(folder, {add});
    return total;
}

// Moved to its place, so that a link that stands there is not written through.
void Mark(const fs::path& marker)
{
    const fs::path made = orvcore::PrivateSibling(marker);
    std::error_code error;
    if (orvcore::WriteBufferToFile(made, "", 0) < 0 || !orvcore::RenameOver(made, marker, error)) {
        orvcore::RemoveTree(made);
    }
}

// Runs in the background beside programs that write into the folder; any surprise ends it without a marker.
void MarkIfLarger(std::uint64_t limit, const fs::path& folder, const fs::path& marker) noexcept
{
    try {
        if (SizeOf(folder, limit) > limit) {
            Mark(marker);
        }
    } catch (...) {
        return;
    }
}

// Previews of local templates lie in the folder itself, the files of stock assets in folders below it.
void RemoveUnfinished(const fs::path& folder)
{
    orvcore::RemoveLeftBehind(folder, kLongestMaking);
    orvcore::TreeVisitor visitor;
    visitor.visit = [](const fs::path& path, orvcore::FileKind kind) {
        if (kind == orvcore::FileKind::Directory) {
            orvcore::RemoveLeftBehind(path, kLongestMaking);
        }
        return orvcore::IsTerminating() ? orvcore::WalkNext::End : orvcore::WalkNext::GoOn;
    };
    visitor.fail = [](const fs::path&, const std::error_code&) { return orvcore::WalkNext::GoOn; };
    orvcore::WalkTree(folder, visitor);
}

// Where files are read one after another, which is not for the caller to wait for.
void InBackground(std::function<void()> task)
{
    orvcore::KeepModuleLoaded(&kMarkerName);
    static_cast<void>(orvcore::GetPreTerminationExecutor()->Post(std::move(task)));
}

// A link counts by itself, and goes with the folder; what it leads to does not matter.
bool IsMarked(const fs::path& marker)
{
    std::error_code error;
    return orvcore::InspectPath(marker, error).kind != orvcore::FileKind::Nothing;
}

void Cleanup(std::uint64_t limit, const fs::path& named)
{
    const fs::path folder = orvcore::WithoutClosingSeparators(named).make_preferred(); // its lock lies beside it
    if (!orvcore::Exists(folder) || !orvcore::IsOwn(folder)) {
        return;
    }
    const fs::path marker = folder / orvcore::PathFromUTF8(kMarkerName);
    if (IsMarked(marker)) {
        detail::WithFolderToOneself(folder, [&] {
            if (IsMarked(marker)) { // another process may have been quicker
                DeleteWorkingFolder(folder, marker);
            }
        });
        return;
    }
    InBackground([limit, folder, marker] { MarkIfLarger(limit, folder, marker); });
}

} // namespace

void InitTempDirectory(bool local)
{
    static std::atomic<bool> initialised[2] = {};
    if (initialised[local ? 1 : 0].exchange(true)) {
        return;
    }
    const fs::path folder = WorkingFolder(local);
    if (folder.empty()) {
        return;
    }
    // The lock file comes before the folder, so that two processes that start at the same time see each other. The
    // folder is held only after the clean-up: while any process holds it, it is not deleted.
    detail::MakeFolderLock(folder);
    Cleanup(kSizeLimitBytes, folder);
    detail::MakeAndHoldFolder(folder);
    InBackground([folder] { detail::WithFolderToOneself(folder, [&folder] { RemoveUnfinished(folder); }); });
}

orvcore::UTF8String GetTempLocalDirectory()
{
    return orvcore::PathToUTF8(WorkingFolder(true));
}

orvcore::UTF8String GetTempStockDirectory(const orvcore::UTF8String& assetId)
{
    return orvcore::PathToUTF8(StockAssetFolder(assetId));
}

orvcore::UTF8String GetTempStockAssetJSONPath(const orvcore::UTF8String& assetId)
{
    return StockAssetFile(assetId, kJSONFileName);
}

orvcore::UTF8String GetTempStockAssetThumbPath(const orvcore::UTF8String& assetId)
{
    return StockAssetFile(assetId, kThumbFileName);
}

orvcore::UTF8String GetTempStockAssetVideoThumbPath(const orvcore::UTF8String& assetId)
{
    return StockAssetFile(assetId, kVideoThumbFileName);
}

void CleanupTempDirectory(std::uint64_t sizeLimitBytes, const orvcore::UTF16String& folder)
{
    Cleanup(sizeLimitBytes, orvcore::PathFromUTF16(folder));
}

} // namespace orvcapsule
