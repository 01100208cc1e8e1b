#include <orvcore/files/Files.h>
#include <orvcore/files/FolderWatcher.h>

#include <gtest/gtest.h>

#include <tests/support/TempFolder.h>

#include <condition_variable>
#include <mutex>
#include <set>

namespace {

using namespace orvcore;
using test::TempFolder;
namespace fs = std::filesystem;

// What a watcher has told so far.
class Told {
public:
    FolderWatcher::Callback Callback()
    {
        return [this](const std::vector<FolderWatcher::Change>& changes) {
            const std::lock_guard lock(mutex_);
            for (const FolderWatcher::Change& change : changes) {
                for (const fs::path& file : change.files) {
                    EXPECT_EQ(file.parent_path(), change.folder);
                    files_.insert(file);
                }
            }
            told_.notify_all();
        };
    }
    // Takes out all that was told, once `file` is among it.
    std::set<fs::path> Await(const fs::path& file)
    {
        std::unique_lock lock(mutex_);
        EXPECT_TRUE(told_.wait_for(lock, std::chrono::minutes(2), [&] { return files_.contains(file); })) << file;
        return std::exchange(files_, {});
    }

private:
    std::mutex mutex_;
    std::condition_variable told_;
    std::set<fs::path> files_;
};

TEST(FolderWatcher, TellsWhatComesChangesAndGoes)
{
    const TempFolder folder;
    folder.Write("old.zelt", "1");
    for (const bool asksSystem : {true, false}) {
        SCOPED_TRACE(asksSystem ? "notices" : "comparing");
        Told told;
        const auto interval = std::chrono::milliseconds(asksSystem ? 60000 : 20);
        FolderWatcher watcher({folder.Path(), true, ".zelt", asksSystem, std::chrono::milliseconds(20), interval},
                              told.Callback());
        folder.Write("new.zelt", "1");
        folder.Write("other.txt", "1");
        EXPECT_EQ(told.Await(folder / "new.zelt"), std::set<fs::path>{folder / "new.zelt"});
        folder.Write("new.zelt", "22");
        told.Await(folder / "new.zelt");
        folder.Write("sub/deep/in.zelt", "1"); // a folder that comes is watched from then on
        told.Await(folder / "sub" / "deep" / "in.zelt");
        folder.Write("sub/deep/in.zelt", "22");
        told.Await(folder / "sub" / "deep" / "in.zelt");
        fs::rename(folder / "new.zelt", folder / "renamed.zelt");
        EXPECT_TRUE(told.Await(folder / "renamed.zelt").contains(folder / "new.zelt"));
        fs::remove_all(folder / "sub");
        told.Await(folder / "sub" / "deep" / "in.zelt");
        fs::remove_all(folder / "renamed.zelt");
        told.Await(folder / "renamed.zelt");
    }
}

TEST(FolderWatcher, GoesOnWithTheFolderThatHasTheName)
{
    const TempFolder folder;
    const fs::path now = folder / "now";
    folder.Write("now/sub/old.zelt", "1");
    folder.Write("next/sub/new.zelt", "1");
    // Elsewhere the system does not tell that the watched folder itself was renamed.
    const std::chrono::milliseconds interval(fs::path::preferred_separator == '/' ? 60000 : 20);
    Told told;
    FolderWatcher watcher({now, true, {}, true, std::chrono::milliseconds(20), interval}, told.Callback());
    const auto expectWatched = [&](const fs::path& file) {
        WriteBufferToFile(file, "1", 1);
        told.Await(file);
    };
    fs::rename(now, folder / "away");
    fs::rename(folder / "next", now);
    told.Await(now / "sub" / "new.zelt");
    expectWatched(now / "sub" / "newer.zelt");

    fs::rename(now / "sub", now / "other");
    told.Await(now / "other" / "new.zelt");
    expectWatched(now / "other" / "newest.zelt");

    fs::rename(now, folder / "next");
    told.Await(now / "other" / "new.zelt");
    fs::rename(folder / "away", now);
    told.Await(now / "sub" / "old.zelt");
    expectWatched(now / "top.zelt");
}

TEST(FolderWatcher, IsSilentAboutFoldersBelowWhereNotAsked)
{
    const TempFolder folder;
    Told told;
    FolderWatcher watcher({folder.Path(), false, {}, false, std::chrono::milliseconds(1), std::chrono::milliseconds(5)},
                          told.Callback());
    folder.Write("sub/in.zelt", "1");
    folder.Write("top.zelt", "1");
    EXPECT_FALSE(told.Await(folder / "top.zelt").contains(folder / "sub" / "in.zelt"));
}

} // namespace
