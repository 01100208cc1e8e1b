#include <package/Workspace.h>

#include <package/PackageNames.h>
#include <package/detail/FolderUse.h>
#include <package/detail/SafeFileName.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/FileSystem.h>
#include <orvcore/files/Files.h>
#include <orvcore/files/WalkTree.h>
#include <orvcore/files/shared/RenameOver.h>
#include <orvcore/host/Application.h>
#include <orvcore/tasks/Executor.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <vector>

namespace orvcapsule {

// The order of a start, for each of the two folders:
// - make the lock file beside the folder, so that two processes that start at the same time see each other;
// - if the marker is there, delete the folder while holding its locks exclusively; if not, queue the task that measures
//   it;
// - make the folder and hold its locks shared, until the process ends;
// - queue the task that removes unfinished files, which runs only while this process is the only one to use the folder.
//
// The marker is a message to the next process. The one that measures the folder never deletes it: at that moment its
// own host shows the previews. A process may be killed between any two steps; each step leaves a state from which the
// next start goes on. The folder holds only what can be made again, so every fault here costs time and is passed over.

namespace fs = std::filesystem;

namespace {

// 300 MiB; Workspace.h promises it.
constexpr std::uint64_t kSizeLimitBytes = 314572800;
// Unfinished files of killed programs are removed when they are this old; they would fill the folder otherwise, because
// they do not count for its size.
constexpr std::chrono::hours kLongestMaking{1};
// Written by one process and looked for by another, perhaps of another release: the name must not change.
constexpr std::u8string_view kMarkerName = u8"cleanupRequest";

// Where users share a temporary folder, somebody may have put a folder, or a link to one, in the place of ours.
bool IsOursOrFree(const fs::path& path)
{
    // In this order: another thread may make the folder between the two questions.
    std::error_code error;
    return (orvcore::InspectPath(path, error).kind == orvcore::FileKind::Nothing && !error) || orvcore::IsOwn(path);
}

// Empty when there is none to use.
// Processes of all releases share the two folders by these names. Whose folder it is is asked at each call: another
// user may put one there at any time after the first.
fs::path WorkingFolder(bool local)
{
    std::error_code error;
    const fs::path folder = orvcore::TempDirectory(error) / (local ? "ProBrowser" : "ProStock");
    return !error && IsOursOrFree(folder) ? folder : fs::path();
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
    std::error_code ignored; // a write there meets the same obstacle
    orvcore::EnsureDirectory(folder, ignored);
    return folder;
}

orvcore::UTF8String StockAssetFile(const orvcore::UTF8String& assetId, std::u8string_view name)
{
    const fs::path folder = StockAssetFolder(assetId);
    return folder.empty() ? orvcore::UTF8String() : orvcore::PathToUTF8(folder / orvcore::PathFromUTF8(name));
}

// Deletes what can be deleted below `folder` except the file `kept`; true when nothing else is left.
// Goes on after a failure: on Windows a file that a player has open cannot be deleted, and the hundreds of others can.
// `leave` comes for a folder after its content, and fails for one in which something stayed.
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
    // Of a link only the link goes: walking through it would delete the files of the folder that it leads to.
    const bool isLink = orvcore::InspectPath(folder, error).kind == orvcore::FileKind::Link;
    if (isLink || DeleteContents(folder, marker)) {
        orvcore::RemoveTree(folder, error);
    }
}

// The sizes of the files below `folder`; ends early when they pass the limit or the process ends.
// Names that begin with a dot are files in the making. They are removed by their age, and would otherwise have a folder
// deleted in which only one large download was going on. Without a `fail` the walk throws at what it cannot read, which
// ends the measuring without a marker.
std::uint64_t SizeOf(const fs::path& folder, std::uint64_t limit)
{
    std::uint64_t total = 0;
    const auto add = [&](const fs::path& path, orvcore::FileKind kind) {
        if (kind == orvcore::FileKind::File && path.filename().native().front() != '.') {
            total += orvcore::InspectPath(path).size;
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
    orvcore::WriteBufferToFile(made, "", 0);
    if (!orvcore::RenameOver(made, marker, error)) {
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
// The pre-termination executor and not the CPU-bound one: exit does not wait for it. Both tasks are safe to be
// abandoned at any point, since the next start does what was left.
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
    // CleanupTempDirectory is public and gets any path: another user's folder is never deleted or marked.
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
