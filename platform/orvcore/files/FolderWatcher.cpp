#include <orvcore/files/FolderWatcher.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/WalkTree.h>
#include <orvcore/files/detail/FolderNotices.h>
#include <orvcore/tasks/Executor.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <set>
#include <thread>

// The system's notices only say that it is time to look; what has changed is found by comparing the folders with what
// was known. So a notice too many costs a look, and one too few is made up for by the next.
//
// `known_` and `watched_` are used by one thread at a time without a lock: by the constructor, then by the watcher's
// own. The order against lost changes: a folder is watched first and read then, so what happens after the reading is
// heard. For the end `isEnding_` is set before Wake, and looked at after each wait; a Wake that comes before the wait
// ends it at once.
//
// After a notice the watcher waits until nothing has been heard for the quiet time, because a file that is being copied
// changes many times, but no longer than the interval (or the quiet time, where that is longer). Where a folder cannot
// be watched, all are compared once each interval.

namespace orvcore {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using Watched = detail::FolderNotices::Watched;

namespace {

using Files = std::map<fs::path, FileInfo>;
using Folders = std::map<fs::path, Files>;

// The files that differ between two states of a folder.
std::vector<fs::path> Differences(const Files& before, const Files& now)
{
    std::vector<fs::path> files;
    for (const auto& [file, info] : now) {
        const auto old = before.find(file);
        if (old == before.end() || old->second != info) {
            files.push_back(file);
        }
    }
    for (const auto& [file, info] : before) {
        if (!now.contains(file)) {
            files.push_back(file);
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

class FolderWatcher::Impl {
public:
    Impl(Settings settings, Callback callback)
        : settings_(std::move(settings))
        , callback_(std::move(callback))
        , notices_(detail::MakeFolderNotices(settings_.folder, settings_.withSubFolders))
    {
        known_ = Look(); // here, so that what happens once the watcher is made is told
        thread_ = std::thread([this] { Run(); });
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl()
    {
        isEnding_ = true;
        notices_->Wake();
        thread_.join();
    }

private:
    void Run()
    {
        auto nextLook = Clock::now() + settings_.interval;
        while (!isEnding_) {
            const auto left = std::chrono::duration_cast<milliseconds>(nextLook - Clock::now());
            const bool isQuiet = !notices_->Wait(std::clamp(left, milliseconds(0), settings_.interval));
            if (isEnding_ || (isQuiet && Clock::now() < nextLook)) {
                continue;
            }
            if (!isQuiet) {
                AwaitQuiet();
            }
            if (!isQuiet || !isAllWatched_ || HasOtherFolder()) {
                Compare();
            }
            nextLook = Clock::now() + settings_.interval;
        }
    }

    // Whether another folder has taken the watched one's name, unnoticed: the folder around it was renamed, or a link.
    bool HasOtherFolder()
    {
        return notices_->Watch(settings_.folder) != Watched::Still;
    }

    // No longer than the interval: a file that is written all day is told now and then.
    void AwaitQuiet()
    {
        const auto end = Clock::now() + std::max(settings_.interval, settings_.quietTime);
        while (!isEnding_ && Clock::now() < end && notices_->Wait(settings_.quietTime)) {
        }
    }

    void Compare()
    {
        Folders now = Look();
        std::vector<Change> changes;
        for (const auto& [folder, files] : now) {
            AddChange(folder, Differences(known_[folder], files), changes);
        }
        for (const auto& [folder, files] : known_) {
            if (!now.contains(folder)) {
                AddChange(folder, Differences(files, {}), changes);
            }
        }
        known_ = std::move(now);
        if (!changes.empty() && !isEnding_) {
            OneTimeInvocation task([this, &changes] { callback_(changes); });
            RunTask(task);
        }
    }

    static void AddChange(const fs::path& folder, std::vector<fs::path> files, std::vector<Change>& changes)
    {
        if (!files.empty()) {
            changes.push_back({folder, std::move(files)});
        }
    }

    // Asks for notices before it reads a folder: what happens in between is heard.
    Folders Look()
    {
        Folders folders;
        const std::set<fs::path> before = std::exchange(watched_, {});
        folders[settings_.folder];
        isAllWatched_ = Watch(settings_.folder);
        if (!isAllWatched_ && Watch(settings_.folder.parent_path())) { // there it will come
            Watch(settings_.folder);                                   // or has come meanwhile
        }
        TreeVisitor visitor;
        visitor.visit = [&](const fs::path& path, FileKind kind) {
            if (isEnding_) {
                return WalkNext::End;
            }
            if (kind != FileKind::Directory) {
                Take(path, folders);
                return WalkNext::GoOn;
            }
            if (!settings_.withSubFolders) {
                return WalkNext::PassOver;
            }
            folders[path];
            isAllWatched_ = Watch(path) && isAllWatched_;
            return WalkNext::GoOn;
        };
        visitor.fail = [](const fs::path&, const std::error_code&) { return WalkNext::GoOn; };
        WalkTree(settings_.folder, visitor);
        for (const fs::path& folder : before) {
            if (!watched_.contains(folder)) {
                notices_->Forget(folder);
            }
        }
        return folders;
    }

    bool Watch(const fs::path& folder)
    {
        const bool isWatched = settings_.asksSystem && notices_->Watch(folder) != Watched::No;
        if (isWatched) {
            watched_.insert(folder);
        }
        return isWatched;
    }

    void Take(const fs::path& path, Folders& folders) const
    {
        std::error_code error;
        if ((settings_.extension.empty() || path.extension() == settings_.extension) &&
            !IsPrivateName(path.filename())) {
            const FileInfo info = InspectTarget(path, error);
            if (info.kind == FileKind::File) {
                folders[path.parent_path()].emplace(path, info);
            }
        }
    }

    const Settings settings_;
    const Callback callback_;
    const std::unique_ptr<detail::FolderNotices> notices_;
    std::set<fs::path> watched_;
    bool isAllWatched_ = false; ///< otherwise folders are compared at the interval, too
    Folders known_;
    std::atomic<bool> isEnding_ = false;
    std::thread thread_;
};

FolderWatcher::FolderWatcher(Settings settings, Callback callback)
    : impl_(std::make_unique<Impl>(std::move(settings), std::move(callback)))
{
}

FolderWatcher::~FolderWatcher() = default;

} // namespace orvcore
