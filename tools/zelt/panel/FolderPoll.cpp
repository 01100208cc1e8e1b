#include <tools/zelt/panel/FolderPoll.h>

#include <tools/zelt/output/Output.h>

#include <orvcore/files/WalkTree.h>
#include <package/PackageNames.h>

#include <algorithm>
#include <chrono>

namespace zelt {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLeastPause(1);

// Adds the files of a folder with this extension, or with any when it is empty.
void AddFiles(const std::string& folder, bool isDeep, const fs::path& extension,
              std::map<std::string, FoundFile>& files)
{
    const auto visit = [&](const fs::path& path, orvcore::FileKind kind) {
        const bool isWanted =
            kind != orvcore::FileKind::Directory && (extension.empty() || path.extension() == extension);
        std::error_code error;
        const orvcore::FileInfo info = isWanted ? orvcore::InspectTarget(path, error) : orvcore::FileInfo();
        if (info.kind == orvcore::FileKind::File) {
            files[ToText(path)] = {info.size, info.modified.time_since_epoch().count()};
        }
        return isDeep ? orvcore::WalkNext::GoOn : orvcore::WalkNext::PassOver;
    };
    // What cannot be read now looks as if it were empty; the listing of such a folder tells the reason.
    orvcore::WalkTree(ToPath(folder), {.visit = visit, .fail = [](const auto& /*folder*/, const auto& /*error*/) {
                                           return orvcore::WalkNext::GoOn;
                                       }});
}

} // namespace

FolderPoll::FolderPoll(Places places, const Catalogue& catalogue, OnChange onChange)
    : places_(std::move(places))
    , catalogue_(catalogue)
    , onChange_(std::move(onChange))
    , thread_([this] { Run(); })
{
}

FolderPoll::~FolderPoll()
{
    {
        const std::lock_guard lock(mutex_);
        ends_ = true;
    }
    wake_.notify_all();
    thread_.join();
}

void FolderPoll::SetOn(bool on)
{
    {
        const std::lock_guard lock(mutex_);
        isOn_ = on;
    }
    wake_.notify_all();
}

void FolderPoll::Run()
{
    std::unique_lock lock(mutex_);
    Clock::duration pause = kLeastPause;
    while (!ends_) {
        wake_.wait(lock, [this] { return isOn_ || ends_; });
        wake_.wait_for(lock, pause, [this] { return ends_; });
        if (ends_ || !isOn_) {
            continue;
        }
        lock.unlock();
        const auto begin = Clock::now();
        const Files files = WalkFolders();
        Files libraries = WalkLibraries();
        pause = std::max<Clock::duration>(kLeastPause, 9 * (Clock::now() - begin));
        lock.lock();
        if (isOn_ && !ends_) { // a listing that has begun meanwhile finds it all itself
            Tell(files);
            if (libraries_ && *libraries_ != libraries) {
                onChange_({});
            }
        }
        libraries_ = std::move(libraries);
    }
}

FolderPoll::Files FolderPoll::WalkFolders() const
{
    Files files;
    for (const std::string& folder : places_.folders) {
        AddFiles(folder, !places_.isShallow, orvcore::PathFromUTF8(orvcapsule::kCapsuleExtn), files);
    }
    return files;
}

FolderPoll::Files FolderPoll::WalkLibraries() const
{
    Files files;
    if (!places_.libraries.empty()) {
        AddFiles(places_.libraries, true, {}, files);
    }
    return files;
}

void FolderPoll::Tell(const Files& files)
{
    auto changes = catalogue_.Compare(files);
    for (auto& [folder, paths] : changes) {
        std::erase_if(paths, [&](const std::string& path) {
            const auto file = files.find(path);
            const auto state = file == files.end() ? std::pair(false, FoundFile()) : std::pair(true, file->second);
            const auto [at, isNew] = told_.try_emplace(path, state);
            return !isNew && std::exchange(at->second, state) == state;
        });
    }
    std::erase_if(changes, [](const auto& change) { return change.second.empty(); });
    if (!changes.empty()) {
        onChange_(changes);
    }
}

} // namespace zelt
