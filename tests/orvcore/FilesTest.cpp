#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/FileSystem.h>
#include <orvcore/files/Files.h>
#include <orvcore/files/WalkTree.h>
#include <orvcore/files/shared/CopyDirectory.h>

#include <gtest/gtest.h>

#include <tests/support/TempFolder.h>

namespace {

namespace fs = std::filesystem;
using orvcore::AtomicFile;
using test::TempFolder;

TEST(Paths, KeepEveryScriptInBothForms)
{
    for (const std::u16string text : {u"plain", u"\u5b57\u5e55", u"\U0001F3AC clip", u"a b/c d"}) {
        const fs::path path = orvcore::PathFromUTF16(text);
        EXPECT_EQ(orvcore::PathToUTF16(path), text);
        EXPECT_EQ(orvcore::PathFromUTF8(orvcore::PathToUTF8(path)), path);
    }
}

TEST(Files, WritingABufferTellsWhyItFailed)
{
    TempFolder folder;
    folder.Write("kept", "a long old content");
    orvcore::WriteBufferToFile(folder / "kept", "new", 3);
    EXPECT_EQ(folder.Read("kept"), "new");
    const struct {
        fs::path path;
        orvcore::ResultCode result;
        std::errc reason;
    } cases[] = {
        {folder / "no/folder", orvcore::kResultFileNotOpened, std::errc::no_such_file_or_directory},
        {folder.Path(), orvcore::kResultFileNotOpened, std::errc::is_a_directory},
        {folder / std::string("kept\0x", 6), orvcore::kResultFileNotOpened, std::errc::invalid_argument},
        {"/dev/full", orvcore::kResultFileNotWritten, std::errc::no_space_on_device},
    };
    for (const auto& c : cases) {
        const bool isDevice = c.path == "/dev/full";
        if (!isDevice || orvcore::Exists(c.path)) {
            std::error_code error;
            EXPECT_EQ(orvcore::WriteBufferToFile(c.path, "x", 1, error), c.result) << c.path;
            EXPECT_EQ(error, c.reason) << c.path;
            EXPECT_THROW(orvcore::WriteBufferToFile(c.path, "x", 1), fs::filesystem_error) << c.path;
            EXPECT_EQ(orvcore::Exists(c.path), isDevice || c.path == folder.Path()) << c.path;
        }
    }
    EXPECT_EQ(folder.Read("kept"), "new");
}

TEST(Files, ReadingRefusesWhatIsTooLarge)
{
    TempFolder folder;
    folder.Write("five", "12345");
    EXPECT_EQ(orvcore::ReadWholeFile(folder / "five", 5), "12345");
    std::error_code error;
    EXPECT_EQ(orvcore::ReadWholeFile(folder / "five", 4, error), "");
    EXPECT_EQ(error, std::errc::file_too_large);
    EXPECT_THROW(orvcore::ReadWholeFile(folder / "none"), fs::filesystem_error);
    EXPECT_THROW(orvcore::ReadWholeFile(folder.Path()), fs::filesystem_error);
}

TEST(Files, WalkGoesDepthFirstAndIntoNoLink)
{
    using orvcore::WalkNext;
    TempFolder folder;
    for (const char* name : {"b", "a/2", "a/deep/1", "c/3"}) {
        folder.Write(name, "");
    }
    std::error_code noLinks;
    fs::create_directory_symlink(folder.Path(), folder / "a/loop", noLinks);
    struct Case {
        fs::path at; // where the walk is told `next`
        WalkNext next;
        std::vector<fs::path> seen;
        std::vector<fs::path> left;
    };
    const Case cases[] = {
        {"", WalkNext::GoOn, {"a", "a/deep", "a/deep/1", "a/2", "c", "c/3", "b"}, {"a/deep", "a", "c"}},
        {"a/deep", WalkNext::PassOver, {"a", "a/deep", "a/2", "c", "c/3", "b"}, {"a", "c"}},
        {"a/2", WalkNext::End, {"a", "a/deep", "a/deep/1", "a/2"}, {"a/deep"}},
        {"c", WalkNext::End, {"a", "a/deep", "a/deep/1", "a/2", "c"}, {"a/deep", "a"}},
    };
    for (const Case& c : cases) {
        std::vector<fs::path> seen;
        std::vector<fs::path> left;
        orvcore::TreeVisitor visitor;
        visitor.visit = [&](const fs::path& path, orvcore::FileKind kind) {
            const fs::path name = path.lexically_relative(folder.Path());
            EXPECT_EQ(kind == orvcore::FileKind::Link, name == "a/loop");
            if (kind != orvcore::FileKind::Link) {
                seen.push_back(name);
            }
            return name == c.at ? c.next : WalkNext::GoOn;
        };
        visitor.leave = [&](const fs::path& path) { left.push_back(path.lexically_relative(folder.Path())); };
        EXPECT_EQ(orvcore::WalkTree(folder.Path(), visitor), c.next != WalkNext::End) << c.at;
        EXPECT_EQ(seen, c.seen) << c.at;
        EXPECT_EQ(left, c.left) << c.at;
    }
}

TEST(Files, AWalkTellsOfAFolderThatCannotBeRead)
{
    using orvcore::WalkNext;
    TempFolder folder;
    folder.Write("file", "");
    const auto goOn = [](const fs::path&, orvcore::FileKind) { return WalkNext::GoOn; };
    for (const fs::path& top : {fs::path(), folder / "missing", folder / "file"}) {
        EXPECT_THROW(orvcore::WalkTree(top, {goOn}), fs::filesystem_error) << top;
        for (const WalkNext next : {WalkNext::GoOn, WalkNext::PassOver, WalkNext::End}) {
            fs::path failed = "none";
            orvcore::TreeVisitor visitor{goOn};
            visitor.fail = [&](const fs::path& path, const std::error_code& error) {
                EXPECT_TRUE(error);
                failed = path;
                return next;
            };
            EXPECT_EQ(orvcore::WalkTree(top, visitor), next != WalkNext::End);
            EXPECT_EQ(failed, top);
        }
    }
}

TEST(Files, PathsOfAnyLengthWork)
{
    TempFolder folder;
    fs::path deep = folder.Path();
    while (deep.native().size() < 500) { // Windows' own limit is 260, and less for a folder
        deep /= orvcore::PathFromUTF8(u8"字幕 😀 a folder");
    }
    orvcore::EnsureDirectory(deep);
    orvcore::EnsureDirectory(deep);
    orvcore::WriteBufferToFile(deep / "a", "content", 7);
    orvcore::CopyOneFile(deep / "a", deep / "b");
    std::error_code error;
    AtomicFile file(deep / "c");
    EXPECT_TRUE(file.Write("c", 1, error) && file.Commit(AtomicFile::Durability::OnDisk, error)) << error.message();
    EXPECT_EQ(orvcore::ReadWholeFile(deep / "b"), "content");
    EXPECT_EQ(orvcore::ListDirectory(deep).files, (std::vector<fs::path>{deep / "a", deep / "b", deep / "c"}));
    EXPECT_EQ(orvcore::InspectPath(deep / "a", error).size, 7U);
    EXPECT_TRUE(orvcore::IsSameFile(orvcore::RealPath(deep / "a", error), deep / "a"));
    EXPECT_FALSE(orvcore::IsSameFile(deep / "a", deep / "b"));
    EXPECT_FALSE(orvcore::RemoveOne(deep, error));
    EXPECT_EQ(error, std::errc::directory_not_empty);
    orvcore::RemoveTree(folder.Path());
    EXPECT_FALSE(orvcore::Exists(folder.Path()));
}

TEST(Files, RelativePathsWorkInADeepWorkingFolder)
{
    TempFolder folder;
    const fs::path before = fs::current_path();
    // A working folder itself must be shorter than the system's limit on Windows.
    const fs::path working = folder / std::string(200 - std::min<std::size_t>(folder.Path().native().size(), 150), 'w');
    orvcore::EnsureDirectory(working);
    fs::current_path(working);
    const fs::path relative = fs::path(std::string(90, 'd')) / std::string(90, 'f');
    const bool isWindows = fs::path::preferred_separator == '\\'; // Wine opens such a path in any form
    EXPECT_EQ(orvcore::ToSystemPath(relative) != relative, isWindows);
    EXPECT_EQ(orvcore::ToSystemPath("short"), "short");
    EXPECT_NO_THROW(orvcore::EnsureDirectory(relative.parent_path()));
    orvcore::WriteBufferToFile(relative, "content", 7);
    EXPECT_EQ(orvcore::ReadWholeFile(relative), "content");
    EXPECT_EQ(orvcore::ListDirectory(relative.parent_path()).files, (std::vector<fs::path>{relative}));
    orvcore::RemoveTree(relative.parent_path());
    fs::current_path(before);
}

TEST(Files, ErrorsAreTheSameOnEverySystem)
{
    TempFolder folder;
    folder.Write("file", "x");
    std::error_code error;
    EXPECT_FALSE(orvcore::MakeDirectory(folder / "file", error));
    EXPECT_EQ(error, std::errc::file_exists);
    EXPECT_FALSE(orvcore::MakeDirectory(folder / "no/folder", error));
    EXPECT_EQ(error.message(), "No such file or directory");
    EXPECT_THROW(orvcore::MakeDirectory(folder / "no/folder"), fs::filesystem_error);
    orvcore::EnsureDirectory(folder / "new/file/x", error);
    EXPECT_FALSE(error);
    orvcore::EnsureDirectory(folder / "file/x/y", error);
    EXPECT_EQ(error, std::errc::not_a_directory);
    EXPECT_THROW(orvcore::EnsureDirectory(fs::path()), fs::filesystem_error);
    for (const fs::path& nothing : {folder / "none", folder / std::string("file\0x", 6), fs::path()}) {
        EXPECT_FALSE(orvcore::RemoveOne(nothing));
        EXPECT_NO_THROW(orvcore::RemoveTree(nothing));
        EXPECT_EQ(orvcore::InspectPath(nothing).kind, orvcore::FileKind::Nothing);
    }
    EXPECT_THROW(orvcore::RealPath(folder / "none"), fs::filesystem_error);
    orvcore::ReadDirectory(
        folder / "file", [](const fs::path&, orvcore::FileKind) { return true; }, error);
    EXPECT_EQ(error, std::errc::not_a_directory);
    fs::permissions(folder / "file", fs::perms::owner_read);
    orvcore::CopyOneFile(folder / "file", folder / "copy");
    folder.Write("other", "y");
    EXPECT_NO_THROW(orvcore::CopyOneFile(folder / "other", folder / "file")) << "over a read-only file";
    EXPECT_TRUE(orvcore::RemoveOne(folder / "copy", error)) << error.message();
}

TEST(CopyOneFile, TellsHowFarItIsAndCanBeCancelled)
{
    TempFolder folder;
    folder.Write("big", std::string(3'000'000, 'n'));
    folder.Write("to", "old");
    std::vector<double> told;
    const auto copy = [&](std::size_t until) {
        told.clear();
        orvcore::CopyOneFile(folder / "big", folder / "to", orvcore::Durability::Cached, [&](double fraction) {
            told.push_back(fraction);
            return told.size() < until;
        });
    };
    try {
        copy(2);
        FAIL();
    } catch (const fs::filesystem_error& error) {
        EXPECT_EQ(error.code(), std::errc::operation_canceled);
    }
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"big", "to"}));
    EXPECT_EQ(fs::file_size(folder / "to"), 3U);
    copy(100);
    EXPECT_EQ(fs::file_size(folder / "to"), 3'000'000U);
    EXPECT_TRUE(told.size() == 3 && told[0] < told[1] && told[2] == 1.0) << told.size();
}

TEST(AtomicFile, AppearsWholeOrNotAtAll)
{
    TempFolder folder;
    folder.Write("target", "old");
    std::error_code error;
    {
        AtomicFile given(folder / "target");
        EXPECT_TRUE(given.Write("half", 4, error));
        EXPECT_EQ(folder.Read("target"), "old");
    }
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"target"}));
    fs::permissions(folder / "target", fs::perms::owner_read | fs::perms::owner_write);
    const fs::perms rights = fs::status(folder / "target").permissions();
    AtomicFile taken(folder / "target");
    EXPECT_TRUE(taken.Write("whole", 5, error));
    EXPECT_TRUE(taken.Commit(AtomicFile::Durability::OnDisk, error)) << error.message();
    EXPECT_EQ(folder.Read("target"), "whole");
    EXPECT_EQ(fs::status(folder / "target").permissions(), rights);
    AtomicFile nowhere(folder / "missing/target");
    EXPECT_FALSE(nowhere.Commit(AtomicFile::Durability::Cached, error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
}

TEST(CopyDirectory, CopiesAllOrTellsWhatItCouldNot)
{
    using orvcore::IfExists;
    constexpr orvcore::ResultCode kFailed = orvcore::kResultFileNotWritten;
    const std::function<bool(double)> always = [](double) { return true; };
    const std::function<bool(double)> untilLast = [](double fraction) { return fraction < 0.9; };
    const struct {
        const char* from;
        const char* to;
        IfExists ifExists;
        const std::function<bool(double)>& progress;
        orvcore::ResultCode result;
        std::errc error;
        const char* failed;
        std::string content; // of the file that was there
    } cases[] = {
        {"source", "to", IfExists::Overwrite, always, orvcore::kResultOK, {}, "", "new"},
        {"source", "to", IfExists::Keep, always, orvcore::kResultOK, {}, "", "old"},
        {"source", "to", IfExists::Overwrite, untilLast, orvcore::kFutureCancelled, {}, "", "old"},
        {"missing", "to", IfExists::Overwrite, always, kFailed, std::errc::no_such_file_or_directory, "", "old"},
        {"to/a", "to", IfExists::Overwrite, always, kFailed, std::errc::not_a_directory, "", "old"},
        {"source", "to/a", IfExists::Overwrite, always, kFailed, std::errc::not_a_directory, "", "old"},
        {"blocked", "to", IfExists::Overwrite, always, kFailed, std::errc::is_a_directory, "b", "old"},
    };
    for (const auto& c : cases) {
        const TempFolder folder;
        for (const char* name : {"source/a", "source/inner/deep/x", "blocked/a", "blocked/b"}) {
            folder.Write(name, "new");
        }
        orvcore::EnsureDirectory(folder / "source/empty");
        folder.Write("to/a", "old");
        folder.Write("to/b/x", "in the way");
        const auto before = folder.Names();
        for (const bool inBackground : {false, true}) {
            const auto failure = std::make_shared<orvcore::CopyFailure>();
            const auto from = folder / c.from;
            const auto to = folder / c.to;
            const auto result = inBackground
                                    ? WaitForResultCode(CopyDirectoryAsync(from, to, c.ifExists, c.progress, failure),
                                                        std::chrono::hours(1))
                                    : CopyDirectory(from, to, c.ifExists, c.progress, *failure);
            EXPECT_EQ(result, c.result) << c.from;
            EXPECT_EQ(failure->error, c.result == kFailed ? std::make_error_code(c.error) : std::error_code());
            EXPECT_EQ(failure->path, c.failed);
            EXPECT_EQ(folder.Read("to/a"), c.content);
            if (c.result == orvcore::kResultOK) {
                EXPECT_EQ(folder.Read("to/inner/deep/x"), "new");
                EXPECT_TRUE(orvcore::IsDirectory(folder / "to/empty"));
            } else {
                EXPECT_EQ(folder.Names(), before) << c.from;
            }
        }
    }
}

TEST(AtomicFile, PatchesWhatWasWrittenBefore)
{
    // Around the size of the gathering buffer, a patch may hit bytes already on disk, bytes in the buffer, or both.
    TempFolder folder;
    for (const std::size_t size : {10U, 511U << 10, 513U << 10, 3000U << 10}) {
        std::string expected(size, 'x');
        AtomicFile file(folder / "patched");
        std::error_code error;
        for (std::size_t done = 0; done < size; done += 100000) {
            ASSERT_TRUE(file.Write(expected.data(), std::min<std::size_t>(100000, size - done), error));
        }
        for (const std::size_t at : {std::size_t{0}, size / 2, size - 4}) {
            file.Seek(at);
            ASSERT_TRUE(file.Write("PACK", 4, error));
            expected.replace(at, 4, "PACK");
        }
        file.Seek(size);
        ASSERT_TRUE(file.Write("end", 3, error));
        EXPECT_EQ(file.Size(), size + 3);
        ASSERT_TRUE(file.Commit(AtomicFile::Durability::Cached, error));
        EXPECT_TRUE(folder.Read("patched") == expected + "end") << size;
    }
}

} // namespace
