#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/shared/RenameOver.h>
#include <orvstorage/ZipFile.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/TempFolder.h>
#include <tests/support/ZipBytes.h>

#include <random>
#include <thread>

namespace {

namespace fs = std::filesystem;
using orvstorage::ZipError;
using orvstorage::ZipFile;
using test::TempFolder;
using test::ZipBytes;
using testing::ElementsAre;

std::string Noise(std::size_t size)
{
    std::mt19937 random(1);
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
    return bytes;
}

void WritePackageFolder(const TempFolder& folder)
{
    folder.Write("in/definition.json", std::string(5000, 'j'));
    folder.Write("in/thumb.PNG", std::string(5000, 'p'));
    folder.Write("in/project.tsgraphic", std::string(500000, 'x') + Noise(800000));
    folder.Write("in/Thumbnails/\u5b57.mp4", "film");
    folder.Write("in/empty", "");
}

TEST(ZipWrite, PathsOfAnyLengthWork)
{
    const TempFolder folder;
    fs::path deep = "in";
    while ((folder / deep).native().size() < 400) {
        deep /= orvcore::PathFromUTF8(u8"\U0001F3AC \u5b57\u5e55");
    }
    folder.Write(deep / "file", "content");
    const ZipFile zip(folder / deep.parent_path() / "a.zelt");
    ASSERT_TRUE(zip.Zip(folder / "in", {}, nullptr)) << zip.GetLastFailure().Message();
    ASSERT_TRUE(zip.UnZip(folder / deep / "out", true)) << zip.GetLastFailure().Message();
    EXPECT_EQ(folder.Read(deep / "out" / deep.lexically_relative("in") / "file"), "content");
}

TEST(ZipWrite, OneFolderGivesOneArchiveInNameOrder)
{
    const TempFolder folder;
    WritePackageFolder(folder);
    fs::create_directory(folder / "in/no files here");
    for (const auto& file : fs::recursive_directory_iterator(folder / "in")) {
        if (file.is_directory()) {
            continue; // not every system lets a program set a folder's time
        }
        fs::last_write_time(file, fs::file_time_type::clock::now() - std::chrono::hours(1));
    }
    const ZipFile zip(folder / "in/self.zelt"); // lies in the folder it is made of, which must not grow
    ASSERT_TRUE(zip.Zip(folder / "in", {}, nullptr)) << zip.GetLastFailure().Message();
    const std::string first = folder.Read("in/self.zelt");
    ASSERT_TRUE(zip.Zip(folder / "in/", {}, nullptr));
    EXPECT_TRUE(first == folder.Read("in/self.zelt"));
    std::vector<std::string> names;
    for (const auto& entry : zip.GetEntries()) {
        names.push_back(orvcore::ToNarrow(entry.name));
        const bool packed = entry.name == u8"definition.json" || entry.name == u8"project.tsgraphic";
        EXPECT_EQ(entry.compressedSize < entry.size, packed) << names.back();
    }
    EXPECT_THAT(names,
                ElementsAre("Thumbnails/\u5b57.mp4", "definition.json", "empty", "project.tsgraphic", "thumb.PNG"));
    ASSERT_TRUE(zip.UnZip(folder / "out", true));
    for (const std::string& name : names) {
        EXPECT_TRUE(folder.Read("in/" + name) == folder.Read("out/" + name)) << name;
    }
}

TEST(ZipWrite, BlocksJoinAtEveryBoundary)
{
    const TempFolder folder;
    std::string text = Noise(40000); // looks back as far as deflate can, over the ends of blocks
    while (text.size() < (9U << 20)) {
        text += text.substr(text.size() / 3, 30000) + std::to_string(text.size());
    }
    std::vector<std::string> names;
    for (const std::size_t blocks : {1U, 2U, 4U, 32U}) {
        for (const int offset : {-1, 0, 1}) {
            names.push_back(std::to_string(blocks) + "and" + std::to_string(offset));
            folder.Write("in/" + names.back(), text.substr(0, (blocks << 18) + static_cast<std::size_t>(offset)));
        }
    }
    const ZipFile zip(folder / "a.zelt");
    ASSERT_TRUE(zip.Zip(folder / "in", {}, nullptr)) << zip.GetLastFailure().Message();
    ASSERT_TRUE(zip.UnZip(folder / "out", true)) << zip.GetLastFailure().Message();
    for (const std::string& name : names) {
        EXPECT_TRUE(folder.Read("in/" + name) == folder.Read("out/" + name)) << name;
    }
}

// However large it was: sizes that are read in whole pieces, and one that is not.
TEST(ZipWrite, AFileThatGrowsMeanwhileEndsThePacking)
{
    const struct {
        std::string name;
        std::size_t size;
    } cases[] = {{"in/b", 5}, {"in/b", 32U << 18}, {"in/b.png", 1U << 18}};
    for (const auto& c : cases) {
        const TempFolder folder;
        folder.Write("in/a.png", Noise(600000));
        folder.Write(c.name, std::string(c.size, 'x'));
        const ZipFile zip(folder / "a.zelt");
        const auto grow = [&](double fraction, void*) {
            if (fraction > 0) { // all has been listed by then
                fs::resize_file(folder / c.name, c.size + 1);
            }
            return true;
        };
        EXPECT_FALSE(zip.Zip(folder / "in", grow, nullptr)) << c.name << c.size;
        EXPECT_FALSE(fs::exists(folder / "a.zelt"));
    }
}

TEST(ZipWrite, CancelledAtAnyPointTheOldArchiveIsWhole)
{
    const TempFolder folder;
    WritePackageFolder(folder);
    for (const char* name : {"1", "2", "3", "4", "5"}) {
        folder.Write(fs::path("in") / name, Noise(300000));
    }
    folder.Write("a.zelt", "old");
    const ZipFile zip(folder / "a.zelt");
    int mine = 0;
    const std::function<bool(const orvstorage::ZipProgress&)> changes[] = {
        [&](const auto& progress) { return zip.Zip(folder / "in", progress, &mine); },
        [&](const auto& progress) { return zip.AddItem(u8"1", folder / "in", true, progress, &mine); },
    };
    for (const auto& change : changes) {
        const std::string old = folder.Read("a.zelt");
        int calls = 0;
        double last = 0;
        int cancelAt = 1;
        const auto progress = [&](double fraction, void* opaque) {
            EXPECT_EQ(opaque, &mine);
            EXPECT_GE(fraction, last);
            EXPECT_LE(fraction, 1.0);
            last = fraction;
            return ++calls != cancelAt;
        };
        for (; !change(progress); ++cancelAt) {
            ASSERT_EQ(zip.GetLastFailure().error, ZipError::Cancelled);
            ASSERT_EQ(calls, cancelAt) << "asked on after the answer was no";
            ASSERT_TRUE(folder.Read("a.zelt") == old);
            ASSERT_EQ(orvcore::ListDirectory(folder.Path()).files.size(), 1U);
            calls = 0;
            last = 0;
        }
        EXPECT_EQ(last, 1.0);
        EXPECT_GT(cancelAt, 6);
        EXPECT_THROW(change([](double, void*) -> bool { throw std::runtime_error("host"); }), std::runtime_error);
        EXPECT_EQ(zip.Check(true).size(), 0U);
    }
}

TEST(ZipWrite, AnUnpackingCancelledAtAnyPointLeavesNothing)
{
    const TempFolder folder;
    WritePackageFolder(folder);
    folder.Write("in/large", Noise(6 << 20)); // enough for several threads
    const ZipFile zip(folder / "a.zelt");
    ASSERT_TRUE(zip.Zip(folder / "in", {}, nullptr));
    folder.Write("out/empty", "old");
    const std::function<bool(const orvstorage::ZipProgress&)> calls[] = {
        [&](const auto& progress) { return zip.UnzipItems(u8"large", folder / "made/deep/large", progress, nullptr); },
        [&](const auto& progress) { return zip.UnzipOver(u8"large", folder / "over", progress, nullptr); },
        [&](const auto& progress) { return zip.UnZip(folder / "out", true, progress, nullptr); },
    };
    const auto caller = std::this_thread::get_id();
    for (const auto& call : calls) {
        const auto before = folder.Names();
        EXPECT_THROW(call([](double, void*) -> bool { throw std::runtime_error("host"); }), std::runtime_error);
        int asked = 0;
        int cancelAt = 0;
        double last = 0;
        const auto progress = [&](double fraction, void*) {
            EXPECT_EQ(std::this_thread::get_id(), caller);
            EXPECT_GE(fraction, last);
            last = fraction;
            return ++asked != cancelAt;
        };
        const auto cancelled = [&] {
            ++cancelAt;
            asked = 0;
            last = 0;
            return !call(progress);
        };
        while (cancelled()) {
            ASSERT_EQ(zip.GetLastFailure().error, ZipError::Cancelled);
            ASSERT_EQ(asked, cancelAt) << "asked on after the answer was no";
            ASSERT_EQ(folder.Names(), before);
            ASSERT_EQ(folder.Read("out/empty"), "old");
        }
        EXPECT_EQ(last, 1.0);
        // At the start and at the end at least: how much of the rest falls to the thread that asks differs.
        EXPECT_GE(cancelAt, 3);
        orvcore::RemoveTree(folder / "made");
    }
    EXPECT_EQ(folder.Read("out/empty"), "");
}

TEST(ZipWrite, WhatKilledProgramsLeftGoesAfterADay)
{
    const TempFolder folder;
    folder.Write("in/a", "1");
    const struct {
        fs::path path;
        int hours; // old
        bool isRemoved;
    } cases[] = {
        {orvcore::PrivateSibling(folder / "a.zip"), 25, true},
        {orvcore::PrivateSibling(folder / "a.zip"), 23, false},
        {folder / ".orv-mine.part", 25, false},
        {folder / ".orv-{12345678-1234-1234-1234-123456789abc}.part", 25, false},
        {orvcore::PrivateSibling(folder / "in/a"), 25, false},
    };
    const auto leave = [&](const fs::path& path, int hours) {
        folder.Write(path, "half");
        fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(hours));
    };
    for (const auto& c : cases) {
        leave(c.path, c.hours);
    }
    const fs::path staging = orvcore::PrivateSibling(folder / "in/a");
    folder.Write(staging / "0", "half");
    std::error_code noLinks;
    const fs::path link = orvcore::PrivateSibling(folder / "a.zip");
    fs::create_symlink(cases[2].path, link, noLinks);
    ASSERT_TRUE(ZipFile(folder / "a.zip").Zip(folder / "in", {}, nullptr));
    for (const auto& c : cases) {
        EXPECT_EQ(orvcore::Exists(c.path), !c.isRemoved) << c.path;
    }
    EXPECT_EQ(orvcore::Exists(link), !noLinks);
    leave(cases[0].path, 25);
    EXPECT_TRUE(ZipFile(folder / "a.zip").UnzipItems(u8"a", folder / "single"));
    EXPECT_FALSE(orvcore::Exists(cases[0].path));
    leave(cases[0].path, 25);
    orvcore::CopyOneFile(folder / "single", folder / "copy");
    EXPECT_FALSE(orvcore::Exists(cases[0].path));
    EXPECT_EQ(ZipFile(folder / "a.zip").GetEntries().size(), 1U) << "what is left behind is not packed";
    std::error_code notOld; // the C++ library of the Windows cross-build cannot set the time of a folder
    fs::last_write_time(staging, fs::file_time_type::clock::now() - std::chrono::hours(25), notOld);
    ASSERT_TRUE(ZipFile(folder / "a.zip").UnZip(folder / "in", true));
    EXPECT_EQ(orvcore::Exists(staging), bool(notOld));
}

TEST(ZipWrite, FoldersThatCannotBecomeAPackageAreRefused)
{
    const TempFolder folder;
    const auto fails = [&](const fs::path& source, ZipError expected) {
        folder.Write("a.zelt", "old");
        const ZipFile zip(folder / "a.zelt");
        EXPECT_FALSE(zip.Zip(source, {}, nullptr));
        EXPECT_EQ(NameOf(zip.GetLastFailure().error), NameOf(expected));
        EXPECT_EQ(folder.Read("a.zelt"), "old");
    };
    fails(folder / "missing", ZipError::SourceMissing);
    fails({}, ZipError::SourceMissing);
    fs::create_directory(folder / "empty");
    fails(folder / "empty", ZipError::NothingToPack);
    fs::path deep = "deep";
    for (int i = 0; i < 65; ++i) {
        deep /= "d";
    }
    folder.Write(deep / "x", "x");
    fails(folder / "deep", ZipError::TooDeep);
    std::error_code error;
    folder.Write("linked/file", "x");
    fs::create_symlink("file", folder / "linked/link", error);
    if (!error) {
        fails(folder / "linked", ZipError::SymbolicLink);
    }
    folder.Write("case/a", "x");
    folder.Write("case/A", "x");
    if (orvcore::ListDirectory(folder / "case").files.size() == 2) { // a system where case counts
        fails(folder / "case", ZipError::NameClash);
        folder.Write("reserved/aux.png", "x");
        fails(folder / "reserved", ZipError::ReservedName);
    }
}

TEST(ZipWrite, AddingReplacesOneEntryAndCopiesTheOthersAsTheyArePacked)
{
    const TempFolder folder;
    folder.Write("in/b", "new b");
    folder.Write("in/sub/c", "new c");
    using namespace std::string_literals;
    const std::string unixTime = "UT\5\0\1old!"s;
    const std::string otherTime = "UT\5\0\1kept"s;
    const std::string ntfsTime = "\x0a\0\4\0ntfs"s;
    // "a" is packed in a way that a new packing would not give; its checksum is wrong, which a new packing would
    // notice.
    const std::string stored = std::string("\x01\x05\x00\xfa\xff", 5) + "raw a";
    folder.Write("z.zip", ZipBytes()
                              .Add({.name = "a", .data = stored, .method = 8, .crc = 77, .declaredSize = 5})
                              .Add({.name = "b", .data = "old b", .extra = unixTime + "\x33\x22\1\0k"s + ntfsTime})
                              .Add({.name = "c", .data = "old c", .extra = otherTime})
                              .Finish("a comment"));
    const ZipFile zip(folder / "z.zip");
    EXPECT_FALSE(zip.AddItem(u8"b", folder / "in", false));
    EXPECT_EQ(zip.GetLastFailure().error, ZipError::EntryExists);
    ASSERT_TRUE(zip.AddItem(u8"b", folder / "in", true)) << zip.GetLastFailure().Message();
    ASSERT_TRUE(zip.AddItem(u8"sub/c", folder / "in", false));
    const std::string bytes = folder.Read("z.zip");
    EXPECT_NE(bytes.find(stored), std::string::npos);
    EXPECT_NE(bytes.find("a comment"), std::string::npos);
    EXPECT_EQ(bytes.find(unixTime), std::string::npos) << "the old content's date would hide the new one's";
    EXPECT_EQ(bytes.find(ntfsTime), std::string::npos);
    EXPECT_NE(bytes.find("\x33\x22\1\0k"s), std::string::npos);
    EXPECT_NE(bytes.find(otherTime), std::string::npos);
    std::vector<std::string> names;
    for (const auto& entry : zip.GetEntries()) {
        names.push_back(orvcore::ToNarrow(entry.name));
    }
    EXPECT_THAT(names, ElementsAre("a", "b", "c", "sub/c"));
    EXPECT_EQ(zip.UnzipItem(u8"a"), nullptr);
    ASSERT_TRUE(zip.UnzipItems(u8"b", folder / "b.out"));
    EXPECT_EQ(folder.Read("b.out"), "new b");
    for (const auto name : {u8"b", u8"sub/c"}) {
        ASSERT_TRUE(zip.RemoveItem(name)) << zip.GetLastFailure().Message();
        EXPECT_FALSE(zip.RemoveItem(name));
        EXPECT_EQ(zip.GetLastFailure().error, ZipError::EntryMissing);
    }
    EXPECT_NE(folder.Read("z.zip").find(stored), std::string::npos);
    EXPECT_TRUE(zip.RemoveItem(u8"c"));
    EXPECT_FALSE(zip.RemoveItem(u8"a"));
    EXPECT_EQ(zip.GetLastFailure().error, ZipError::NothingToPack);
    EXPECT_EQ(zip.GetEntries().size(), 1U);
}

TEST(ZipWrite, AChangeNeverUndoesAnothers)
{
    const TempFolder folder;
    folder.Write("in/a", "mine");
    const std::string first = ZipBytes().Add({.name = "a", .data = "1"}).Finish();
    const std::string second = ZipBytes().Add({.name = "a", .data = "2"}).Finish();
    folder.Write("second.zip", second);
    const fs::path path = folder / "z.zip";
    std::error_code error;
    const struct {
        const char* name;
        std::function<void()> change;
    } cases[] = {
        {"replaced", [&] { EXPECT_TRUE(orvcore::RenameOver(folder / "second.zip", path, error)); }},
        {"deleted", [&] { fs::remove(path); }},
        {"written over", [&] { folder.Write("z.zip", second + std::string(4, '\0')); }},
    };
    for (const auto& c : cases) {
        for (const bool hasWritten : {false, true}) {
            folder.Write("z.zip", first);
            folder.Write("second.zip", second);
            const ZipFile zip(path);
            EXPECT_NE(zip.UnzipItem(u8"a"), nullptr);
            EXPECT_TRUE(!hasWritten || zip.AddItem(u8"a", folder / "in", true)) << "its own change is no other's";
            c.change();
            if (c.name == std::string_view("deleted") && orvcore::Exists(path)) {
                continue; // a system that keeps a deleted file, name and all, while it is open
            }
            const std::string changed = folder.Read("z.zip");
            for (int attempt = 0; attempt < 2; ++attempt) {
                EXPECT_FALSE(zip.AddItem(u8"a", folder / "in", true)) << c.name << hasWritten;
                EXPECT_EQ(NameOf(zip.GetLastFailure().error), "ArchiveChanged") << c.name << hasWritten;
                EXPECT_EQ(folder.Read("z.zip"), changed);
                static_cast<void>(zip.UnzipItem(u8"a")); // to have looked is not to have agreed
            }
            zip.Reopen();
            if (c.name != std::string_view("written over")) { // which is no archive any more
                EXPECT_TRUE(zip.AddItem(u8"a", folder / "in", true)) << zip.GetLastFailure().Message();
            }
        }
    }
}

TEST(ZipWrite, OfChangesAtTheSameMomentNoneIsLost)
{
    const TempFolder folder;
    constexpr int kWriters = 8;
    constexpr int kChanges = 4;
    const auto nameOf = [](int writer, int change) { return std::to_string(writer) + "-" + std::to_string(change); };
    const auto write = [&](int writer) {
        const ZipFile zip(folder / "z.zip");
        for (int change = 0; change < kChanges; ++change) {
            const std::string name = nameOf(writer, change);
            folder.Write("in/" + name, name);
            while (!zip.AddItem(orvcore::AsUTF8(name), folder / "in", false)) {
                ASSERT_EQ(NameOf(zip.GetLastFailure().error), "ArchiveChanged") << zip.GetLastFailure().Message();
                zip.Reopen();
            }
        }
    };
    orvcore::EnsureDirectory(folder / "in");
    std::vector<std::thread> writers;
    for (int i = 0; i < kWriters; ++i) {
        writers.emplace_back(write, i);
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    EXPECT_EQ(ZipFile(folder / "z.zip").GetEntries().size(), std::size_t{kWriters * kChanges});
    EXPECT_THAT(ZipFile(folder / "z.zip").Check(true), testing::IsEmpty());
    EXPECT_EQ(orvcore::ListDirectory(folder.Path()).files.size(), 1U) << "something is left beside the archive";
}

TEST(ZipWrite, APlaceThatCannotBeWrittenIsTheArchivesFault)
{
    const TempFolder folder;
    folder.Write("in/a", "1");
    const struct {
        fs::path archive;
        const char* reason;
    } cases[] = {
        {{}, "it cannot be written (its path is empty)"},
        {folder / "missing/x.zip", "it cannot be written (No such file or directory)"},
        {folder / "in", "it cannot be written (Is a directory)"},
    };
    for (const auto& c : cases) {
        const ZipFile zip(c.archive);
        EXPECT_FALSE(zip.Zip(folder / "in", {}, nullptr));
        EXPECT_EQ(zip.GetLastFailure().Reason(), c.reason);
        EXPECT_FALSE(zip.AddItem(u8"a", folder / "in", true));
        EXPECT_EQ(zip.GetLastFailure().Reason(), c.reason);
    }
    EXPECT_THAT(folder.Names(), ElementsAre("in/a"));
}

TEST(ZipWrite, AnAddThatCannotBeDoneChangesNothing)
{
    const TempFolder folder;
    folder.Write("in/definition.json", "{}");
    folder.Write("in/A", "x");
    folder.Write("outside", "x");
    const std::string archive = ZipBytes().Add({.name = "a", .data = "1"}).Finish();
    const struct {
        std::u8string_view entry;
        std::string archive;
        ZipError error;
    } cases[] = {
        {u8"missing", archive, ZipError::SourceMissing},
        {u8"../outside", archive, ZipError::ParentComponent},
        {u8"", archive, ZipError::EmptyName},
        {u8"A", archive, ZipError::NameClash},
        {u8"definition.json", "no archive", ZipError::NotAZip},
        {u8"definition.json", archive.substr(0, archive.size() - 4), ZipError::Truncated},
    };
    for (const auto& c : cases) {
        folder.Write("z.zip", c.archive);
        const ZipFile zip(folder / "z.zip");
        EXPECT_FALSE(zip.AddItem(c.entry, folder / "in", true));
        EXPECT_EQ(NameOf(zip.GetLastFailure().error), NameOf(c.error)) << zip.GetLastFailure().Message();
        EXPECT_TRUE(folder.Read("z.zip") == c.archive);
    }
    const ZipFile fresh(folder / "fresh.zip");
    EXPECT_TRUE(fresh.AddItem(u8"definition.json", folder / "in", false));
    EXPECT_EQ(fresh.UnzipItem(u8"definition.json")->size(), 2U);
}

TEST(ZipWrite, PasswordsOpenWhatTheyEncrypt)
{
    const TempFolder folder;
    WritePackageFolder(folder);
    ASSERT_TRUE(ZipFile(folder / "a.zelt", "secret").Zip(folder / "in", {}, nullptr));
    const struct {
        const char* password;
        ZipError error;
    } cases[] = {{"", ZipError::PasswordNeeded}, {"wrong", ZipError::WrongPassword}, {"secret", ZipError::None}};
    for (const auto& c : cases) {
        const ZipFile zip(folder / "a.zelt", c.password);
        EXPECT_EQ(zip.UnzipItem(u8"definition.json") != nullptr, c.error == ZipError::None);
        EXPECT_EQ(NameOf(zip.GetLastFailure().error), NameOf(c.error));
        EXPECT_EQ(zip.UnZip(folder / "out", true), c.error == ZipError::None);
        const std::string before = folder.Read("a.zelt");
        // Nor may an archive end with two passwords. Without one an entry that is new is not encrypted.
        folder.Write("new/definition.json", "new");
        folder.Write("new/z", "new");
        EXPECT_EQ(zip.AddItem(u8"definition.json", folder / "new", true), c.error == ZipError::None);
        EXPECT_EQ(NameOf(zip.GetLastFailure().error), NameOf(c.error));
        if (c.error == ZipError::WrongPassword) {
            EXPECT_FALSE(zip.AddItem(u8"z", folder / "new", true));
            EXPECT_EQ(NameOf(zip.GetLastFailure().error), NameOf(c.error));
        }
        EXPECT_EQ(folder.Read("a.zelt") == before, c.error != ZipError::None);
    }
    EXPECT_EQ(folder.Read("out/definition.json"), std::string(5000, 'j'));
}

} // namespace
