#include <package/Workspace.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/shared/FileLock.h>
#include <orvcore/host/Application.h>
#include <orvcore/tasks/Executor.h>
#include <tests/support/Latch.h>
#include <tests/support/RunProgram.h>
#include <tests/support/TempFolder.h>

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <future>
#include <set>

namespace {

namespace fs = std::filesystem;
using orvcore::Exists;
using test::TempFolder;

void WaitForScans()
{
    orvtest::Latch ended(1); // the pre-termination executor runs one task after another
    ASSERT_TRUE(orvcore::GetPreTerminationExecutor()->Post([&ended] { ended.count_down(); }));
    ended.wait();
}

void Cleanup(std::uint64_t limit, const fs::path& folder)
{
    orvcapsule::CleanupTempDirectory(limit, orvcore::PathToUTF16(folder));
    WaitForScans();
}

TEST(Workspace, OnlyAFolderAboveTheLimitIsMarkedAndOnlyAMarkedOneIsDeleted)
{
    struct Case {
        const char* name;
        std::vector<std::pair<const char*, std::size_t>> files;
        bool marked;
    };
    const Case cases[] = {
        {"empty", {}, false},
        {"exactly the limit", {{"a.png", 60}, {"b.mp4", 40}}, false},
        {"one byte more, spread over folders", {{"a.png", 60}, {"x/b.mp4", 40}, {"x/y/c", 1}}, true},
        {"dot files do not count", {{".a", 500}, {"x/.b.png", 500}, {"c", 100}}, false},
        {"files in dot folders do", {{".x/a.png", 101}}, true},
        {"one large file", {{"a", 5000}}, true},
    };
    for (const Case& c : cases) {
        const TempFolder temp;
        const fs::path folder = temp / "work";
        orvcore::EnsureDirectory(folder);
        for (const auto& [name, size] : c.files) {
            temp.Write(fs::path("work") / name, std::string(size, 'x'));
        }
        Cleanup(100, folder);
        EXPECT_EQ(Exists(folder / "cleanupRequest"), c.marked) << c.name;
        for (const auto& [name, size] : c.files) {
            EXPECT_TRUE(Exists(folder / name)) << c.name << ": the search deletes nothing";
        }
        Cleanup(100, folder);
        EXPECT_EQ(Exists(folder), !c.marked) << c.name;
    }
    const TempFolder temp;
    Cleanup(0, temp / "missing");
    EXPECT_FALSE(Exists(temp / "missing"));
}

TEST(Workspace, AFolderThatAnotherProcessUsesIsLeftToTheNextStart)
{
    const TempFolder temp;
    temp.Write("work/preview.mp4", "shown there now");
    temp.Write("work/cleanupRequest", "");
    std::error_code error;
    auto otherProcess = orvcore::FileLock::Open(temp / "work.lock", true, error);
    ASSERT_TRUE(otherProcess);
    ASSERT_TRUE(otherProcess->TryShared());
    Cleanup(0, temp / "work");
    EXPECT_EQ(temp.Read("work/preview.mp4"), "shown there now");
    EXPECT_TRUE(Exists(temp / "work/cleanupRequest"));
    for (const char* name : {"work/", "work//"}) {
        Cleanup(0, temp / name);
        EXPECT_TRUE(Exists(temp / "work/preview.mp4")) << name;
    }
    otherProcess.reset();
    Cleanup(0, temp / "work/");
    EXPECT_FALSE(Exists(temp / "work"));
}

TEST(Workspace, AFolderStaysInUseWhenItsLockFileIsTidiedAway)
{
    const TempFolder temp;
    temp.Write("work/preview.mp4", "shown there now");
    temp.Write("work/cleanupRequest", "");
    std::error_code error;
    const auto file = orvcore::FileLock::Open(temp / "work.lock", true, error);
    const auto folder = orvcore::FileLock::Open(temp / "work", false, error); // which not every system has
    ASSERT_TRUE(file && file->TryShared() && (!folder || folder->TryShared()));
    EXPECT_NE(fs::remove(temp / "work.lock", error), !folder) << "who has no lock on the folder keeps its file";
    Cleanup(0, temp / "work");
    EXPECT_EQ(temp.Read("work/preview.mp4"), "shown there now");
}

TEST(Workspace, AFolderOfAnotherUserIsNotUsed)
{
    const fs::path folder = orvcore::TempDirectory() / "ProBrowser";
    orvcore::EnsureDirectory(folder);
    std::ofstream(folder / "cleanupRequest").close();
    if (std::system(("chown 12345 \"" + folder.string() + "\"").c_str()) != 0) {
        orvcore::RemoveTree(folder);
        GTEST_SKIP() << "only an administrator can give a folder away";
    }
    EXPECT_EQ(orvcapsule::GetTempLocalDirectory(), u8"");
    Cleanup(0, folder);
    EXPECT_TRUE(Exists(folder / "cleanupRequest"));
    orvcore::RemoveTree(folder);
}

TEST(Workspace, ASearchThatCannotReadEverythingLeavesNoMarker)
{
    if (!std::is_same_v<fs::path::value_type, char>) {
        GTEST_SKIP() << "paths have other limits here";
    }
    // In each folder two chains of folders, one put into the other: the end has a path too long to be opened.
    const TempFolder temp;
    fs::path chain;
    for (int i = 0; i < 9; ++i) {
        chain /= std::string(250, 'n');
    }
    for (const char* folder : {"a", "b"}) {
        temp.Write(fs::path("work") / folder / "file", std::string(60, 'x'));
        temp.Write(fs::path("work") / folder / chain / "o", "");
        temp.Write(folder / chain / "i", "");
        fs::rename(temp / folder, temp / (fs::path("work") / folder / chain / "inner"));
    }
    Cleanup(100, temp / "work");
    EXPECT_FALSE(Exists(temp / "work/cleanupRequest"));
    for (const char* folder : {"a", "b"}) {
        fs::rename(temp / (fs::path("work") / folder / chain / "inner"), temp / folder);
    }
    Cleanup(100, temp / "work");
    EXPECT_TRUE(Exists(temp / "work/cleanupRequest"));
}

TEST(Workspace, TwoProcessesAtOnceKeepWhatEachOtherUses)
{
    const fs::path folder = orvcore::TempDirectory() / "ProBrowser";
    orvcore::EnsureDirectory(folder);
    std::ofstream(folder / "old").close();
    std::ofstream(folder / "cleanupRequest").close();
    const TempFolder meeting;
    const auto run = [&meeting](const char* name, const char* other) {
        return orvtest::RunProgram(ORV_WORKSPACE_USER, {name, other, meeting.Path().string()});
    };
    auto first = std::async(std::launch::async, run, "first", "second");
    EXPECT_EQ(run("second", "first"), 0);
    EXPECT_EQ(first.get(), 0);
    EXPECT_FALSE(Exists(folder / "old")) << "the first to come deleted it";
    EXPECT_TRUE(Exists(folder / "first"));
    EXPECT_TRUE(Exists(folder / "second"));
    orvcore::RemoveTree(folder);
}

TEST(Workspace, AFileInUseIsEitherLeftWholeOrSafeToGoOnReading)
{
    const TempFolder temp;
    temp.Write("work/a/held.png", "content");
    temp.Write("work/b/free.png", "content");
    temp.Write("work/cleanupRequest", "");
    std::ifstream reader(temp / "work/a/held.png", std::ios::binary);
    ASSERT_TRUE(reader);
    Cleanup(0, temp / "work");
    EXPECT_FALSE(Exists(temp / "work/b/free.png"));
    std::string content;
    reader >> content;
    EXPECT_EQ(content, "content");
    EXPECT_EQ(Exists(temp / "work/cleanupRequest"), Exists(temp / "work/a/held.png")) << "asked for until it is done";
}

TEST(Workspace, DeletionNeverFollowsALinkOutOfTheFolder)
{
    const TempFolder temp;
    temp.Write("outside/precious", "kept");
    temp.Write("work/cleanupRequest", "");
    temp.Write("outside/cleanupRequest", "");
    temp.Write("marked/file", "content");
    std::error_code error;
    fs::create_symlink(temp / "outside/precious", temp / "marked/cleanupRequest", error);
    fs::create_directory_symlink(temp / "outside", temp / "work/link", error);
    fs::create_directory_symlink(temp / "outside", temp / "workLink", error);
    if (error) {
        GTEST_SKIP() << "no symbolic links here: " << error.message();
    }
    Cleanup(0, temp / "work");
    Cleanup(0, temp / "workLink");
    Cleanup(0, temp / "marked");
    EXPECT_FALSE(Exists(temp / "marked"));
    EXPECT_FALSE(Exists(temp / "work"));
    EXPECT_FALSE(fs::exists(fs::symlink_status(temp / "workLink")));
    EXPECT_EQ(temp.Read("outside/precious"), "kept");
}

TEST(Workspace, EachFolderIsInitialisedOnceAndThenHeld)
{
    const fs::path folder = orvcore::PathFromUTF8(orvcapsule::GetTempLocalDirectory());
    EXPECT_EQ(folder, orvcore::TempDirectory() / "ProBrowser");
    orvcore::EnsureDirectory(folder / "old");
    std::ofstream(folder / "cleanupRequest").close();
    orvcapsule::InitTempDirectory(true);
    ASSERT_TRUE(Exists(folder));
    EXPECT_TRUE(fs::is_empty(folder)) << "deleted as asked, and made again";

    std::ofstream(folder / "cleanupRequest").close();
    orvcapsule::InitTempDirectory(true);
    EXPECT_TRUE(Exists(folder / "cleanupRequest")) << "once a process";
    WaitForScans(); // which hold the folder alone for a moment
    std::error_code error;
    const auto otherProcess = orvcore::FileLock::Open(orvcore::TempDirectory() / "ProBrowser.lock", false, error);
    ASSERT_TRUE(otherProcess);
    EXPECT_FALSE(otherProcess->TryExclusive());
    EXPECT_TRUE(otherProcess->TryShared());
    const auto folderLock = orvcore::FileLock::Open(folder, false, error); // which not every system has
    EXPECT_FALSE(folderLock && folderLock->TryExclusive());

    const fs::path stock = orvcore::TempDirectory() / "ProStock";
    orvcore::EnsureDirectory(stock / "host/1/asset");
    const fs::path abandoned = orvcore::PrivateSibling(stock / "x");
    const fs::path ofAnAsset = orvcore::PrivateSibling(stock / "host/1/asset/x");
    const fs::path inTheMaking = orvcore::PrivateSibling(stock / "x");
    const fs::path hidden = stock / ".orv-hidden.part";
    for (const fs::path& file : {abandoned, ofAnAsset, inTheMaking, hidden}) {
        std::ofstream(file).close();
        const auto age = file == inTheMaking ? std::chrono::minutes(10) : std::chrono::minutes(90);
        fs::last_write_time(file, fs::file_time_type::clock::now() - age);
    }
    orvcapsule::InitTempDirectory(false);
    WaitForScans();
    EXPECT_TRUE(orvcore::IsDirectory(stock)) << "the two folders have a flag each";
    EXPECT_FALSE(Exists(abandoned) || Exists(ofAnAsset));
    EXPECT_TRUE(Exists(inTheMaking));
    EXPECT_TRUE(Exists(hidden)) << "not one of ours";
    orvcore::RemoveTree(stock);
}

TEST(Workspace, AnAssetHasAPlainFolderOfItsOwnWhateverItsId)
{
    orvcore::Application::SetName("Host/../Evil");
    orvcore::Application::SetClientVersion("25.1");
    const fs::path parent = orvcore::TempDirectory() / "ProStock" / "Host%2F..%2FEvil" / "25.1";
    struct Case {
        orvcore::UTF8String id;
        orvcore::UTF8String folder; // empty: not settled here
    };
    const std::string longName(300, 'a');
    const Case cases[] = {
        {u8"123456789", u8"123456789"},
        {u8"字幕 Title_1.2", u8"字幕 Title_1.2"},
        {u8"", u8"%"},
        {u8".", u8"%2E"},
        {u8"..", u8"%2E%2E"},
        {u8"../../etc", u8"..%2F..%2Fetc"},
        {u8"..\\x", u8"..%5Cx"},
        {u8"/etc/passwd", u8"%2Fetc%2Fpasswd"},
        {u8"C:\\x", u8"C%3A%5Cx"},
        {u8"a%2Fb", u8"a%252Fb"},
        {u8"a/b", u8"a%2Fb"},
        {u8"%", u8"%25"},
        {u8"nul", u8"%6Eul"},
        {u8"COM1.txt", u8"%43OM1.txt"},
        {u8"Aux .x", u8"%41ux .x"},
        {u8"Lpt²", u8"%4Cpt²"},
        {u8"common", u8"common"},
        {u8"COM10", u8"COM10"},
        {u8"dot.", u8"dot%2E"},
        {u8"space ", u8"space%20"},
        {orvcore::UTF8String(u8"a\0b", 3), u8"a%00b"},
        {u8"tab\t", u8"tab%09"},
        {orvcore::ToUTF8(std::string_view("\xFF\xFE")), u8"%FF%FE"},
        {orvcore::ToUTF8(longName), u8""},
        {orvcore::ToUTF8(longName + "b"), u8""},
    };
    std::set<fs::path> folders;
    for (const Case& c : cases) {
        const fs::path folder = orvcore::PathFromUTF8(orvcapsule::GetTempStockDirectory(c.id));
        const std::string shown = orvcore::ToNarrow(c.id);
        EXPECT_EQ(folder.parent_path(), parent) << shown;
        EXPECT_TRUE(orvcore::IsDirectory(folder)) << shown;
        EXPECT_TRUE(folders.insert(folder).second) << shown << " shares another id's folder";
        if (!c.folder.empty()) {
            EXPECT_EQ(orvcore::ToNarrow(orvcore::PathToUTF8(folder.filename())), orvcore::ToNarrow(c.folder));
        }
        EXPECT_EQ(orvcore::PathFromUTF8(orvcapsule::GetTempStockAssetJSONPath(c.id)), folder / "definition.json");
        EXPECT_EQ(orvcore::PathFromUTF8(orvcapsule::GetTempStockAssetThumbPath(c.id)), folder / "thumb.png");
        EXPECT_EQ(orvcore::PathFromUTF8(orvcapsule::GetTempStockAssetVideoThumbPath(c.id)), folder / "thumb.mp4");
        EXPECT_FALSE(Exists(folder / "thumb.png"));
    }
    orvcore::RemoveTree(parent.parent_path());
}

} // namespace
