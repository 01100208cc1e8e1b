// What only a POSIX system has: pipes with a name in a folder, and access rights of files and folders.
#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/FileError.h>
#include <orvcore/files/FileSystem.h>
#include <orvcore/files/WalkTree.h>
#include <orvcore/files/shared/CopyDirectory.h>
#include <orvcore/files/shared/RenameOver.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/TempFolder.h>

#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using orvcore::AtomicFile;
using orvcore::Durability;
using test::TempFolder;
using testing::ElementsAre;

fs::perms RightsOf(const fs::path& path)
{
    return fs::symlink_status(path).permissions();
}

std::error_code ErrorOf(const std::function<void()>& work)
{
    try {
        work();
    } catch (const fs::filesystem_error& error) {
        return error.code();
    }
    return {};
}

TEST(FilesPosix, NamesThatAreNoUTF8KeepTheirBytesInUTF16)
{
    for (const char* name :
         {"", "a/\u00fc", "odd\xff", "\xe5\xad.x", "\xed\xb3\xbf", "\u00fc\x80\u00fc", "\xf0\x9f\x8e"}) {
        const orvcore::UTF8String text = orvcore::ToUTF8(std::string_view(name));
        EXPECT_EQ(orvcore::PathTextToUTF8(orvcore::PathTextToUTF16(text)), text);
        EXPECT_EQ(orvcore::PathFromUTF16(orvcore::PathToUTF16(name)), name);
    }
    EXPECT_EQ(orvcore::PathToUTF16("\u00fc\xff"), u"\u00fc\xDCFF");
    EXPECT_EQ(orvcore::PathTextToUTF8(u"\U0001F4FF\xD83D"), u8"\U0001F4FF\uFFFD") << "surrogates of other kinds";
}

// On a stack that bears no call for each level.
TEST(FilesPosix, AWalkTakesNoStackForADeepTree)
{
    const TempFolder folder;
    std::string path = folder.Path().string();
    constexpr std::size_t kLevels = 400;
    for (std::size_t i = 0; i < kLevels; ++i) {
        ASSERT_EQ(::mkdir((path += "/d").c_str(), 0700), 0);
    }
    struct Walk {
        fs::path top;
        std::size_t seen = 0;
        std::size_t left = 0;
    } walk{folder.Path()};
    const auto run = [](void* context) -> void* {
        Walk& one = *static_cast<Walk*>(context);
        orvcore::TreeVisitor visitor;
        visitor.visit = [&](const fs::path&, orvcore::FileKind) {
            ++one.seen;
            return orvcore::WalkNext::GoOn;
        };
        visitor.leave = [&](const fs::path&) { ++one.left; };
        orvcore::WalkTree(one.top, visitor);
        return nullptr;
    };
    pthread_attr_t small;
    ASSERT_EQ(::pthread_attr_init(&small), 0);
    ASSERT_EQ(::pthread_attr_setstacksize(&small, std::size_t{64} << 10), 0);
    pthread_t thread{};
    ASSERT_EQ(::pthread_create(&thread, &small, run, &walk), 0);
    ::pthread_join(thread, nullptr);
    ::pthread_attr_destroy(&small);
    EXPECT_EQ(walk.seen, kLevels);
    EXPECT_EQ(walk.left, kLevels);
}

TEST(FilesPosix, NothingReplacesWhatIsNoFile)
{
    const TempFolder folder;
    folder.Write("new", "new");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    fs::create_symlink("pipe", folder / "link");
    fs::create_symlink("away/file", folder / "lost");
    orvcore::EnsureDirectory(folder / "folder/x");
    const struct {
        const char* name;
        std::error_code error;
    } cases[] = {
        {"pipe", orvcore::FileError::NotARegularFile},
        {"link", orvcore::FileError::NotARegularFile},
        {"folder", std::make_error_code(std::errc::is_a_directory)},
        {"lost", orvcore::FileError::LinkToNothing},
    };
    for (const auto& c : cases) {
        std::error_code error;
        EXPECT_FALSE(orvcore::RenameOver(folder / "new", folder / c.name, error));
        EXPECT_EQ(error, c.error) << c.name;
        EXPECT_THROW(orvcore::CheckReplaceable(folder / c.name), fs::filesystem_error) << c.name;
        AtomicFile file(folder / c.name);
        EXPECT_FALSE(file.Commit(Durability::Cached, error));
        EXPECT_EQ(error, c.error) << c.name;
        EXPECT_EQ(ErrorOf([&] { orvcore::CopyOneFile(folder / "new", folder / c.name); }), c.error) << c.name;
        const std::error_code noSource =
            c.name == std::string_view("lost") ? std::make_error_code(std::errc::no_such_file_or_directory) : c.error;
        EXPECT_EQ(ErrorOf([&] { orvcore::CopyOneFile(folder / c.name, folder / "copy"); }), noSource) << c.name;
        EXPECT_NE(ErrorOf([&] { orvcore::ReadWholeFile(folder / c.name); }), std::error_code())
            << "nor does it wait for a pipe's other end";
    }
    EXPECT_THAT(folder.Names(), ElementsAre("folder/x/", "link", "lost", "new", "pipe"));
    EXPECT_TRUE(fs::is_fifo(folder / "pipe"));
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
}

TEST(FilesPosix, ACopyKeepsLinksAndRightsOfWhatItReplaces)
{
    const TempFolder folder;
    folder.Write("source", "new");
    folder.Write("real/target", "old");
    fs::create_symlink("real/target", folder / "link");
    fs::permissions(folder / "source", fs::perms(0444));
    fs::permissions(folder / "real/target", fs::perms(0600));
    orvcore::CopyOneFile(folder / "source", folder / "link", Durability::OnDisk);
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(folder.Read("real/target"), "new");
    EXPECT_EQ(RightsOf(folder / "real/target"), fs::perms(0600));
    orvcore::CopyOneFile(folder / "real/target", folder / "fresh");
    EXPECT_EQ(RightsOf(folder / "fresh"), fs::perms(0600)) << "a copy shows its content to nobody else";
}

// For as long as it lives, the process works for a user who owns nothing.
class AsNobody {
public:
    AsNobody()
    {
        static_cast<void>(::seteuid(kNobody));
    }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;
    ~AsNobody()
    {
        static_cast<void>(::seteuid(::getuid()));
    }
    static constexpr uid_t kNobody = 65534;
};

TEST(FilesPosix, WhatOthersOwnIsNeitherReadNorRemoved)
{
    const TempFolder folder;
    for (const char* name : {"source/a", "source/secret/x"}) {
        folder.Write(name, "x");
    }
    fs::permissions(folder / "source/secret", fs::perms::none);
    fs::permissions(folder.Path(), fs::perms(0777));
    const fs::path leftBehind = orvcore::PrivateSibling(folder / "x");
    folder.Write(leftBehind, "");
    fs::last_write_time(leftBehind, fs::file_time_type::clock::now() - std::chrono::hours(25));
    orvcore::CopyFailure failure;
    {
        const AsNobody nobody; // of no effect for a user who is not root, to whom the secret folder is closed as well
        EXPECT_EQ(CopyDirectory(folder / "source", folder / "to", orvcore::IfExists::Keep, {}, failure),
                  orvcore::kResultFileNotWritten);
        if (::getuid() == 0) {
            orvcore::RemoveLeftBehind(folder.Path(), std::chrono::hours(24));
        }
    }
    EXPECT_EQ(failure.path, "secret");
    EXPECT_EQ(failure.error, std::errc::permission_denied);
    EXPECT_FALSE(orvcore::Exists(folder / "to"));
    EXPECT_TRUE(orvcore::Exists(leftBehind)) << "another user may remove it";
    fs::permissions(folder / "source/secret", fs::perms::owner_all);
    orvcore::RemoveLeftBehind(folder.Path(), std::chrono::hours(24));
    EXPECT_FALSE(orvcore::Exists(leftBehind));
}

TEST(FilesPosix, ContentIsHiddenFromTheFirstByteOn)
{
    const TempFolder folder;
    folder.Write("secret", "old");
    fs::permissions(folder / "secret", fs::perms(0600));
    AtomicFile file(folder / "secret");
    std::error_code error;
    const std::string large(2 << 20, 'x'); // more than is gathered in memory
    ASSERT_TRUE(file.Write(large.data(), large.size(), error));
    const auto files = orvcore::ListDirectory(folder.Path()).files;
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(RightsOf(files.front()), fs::perms(0600)) << files.front();
}

TEST(FilesPosix, EveryUserFindsRoomInASharedAreaAndPrivacyInAFolderOfIt)
{
    const TempFolder folder;
    const char* const before = std::getenv("TMPDIR");
    const std::string saved = before != nullptr ? before : "";
    ::setenv("TMPDIR", folder.Path().c_str(), 1);
    const mode_t mask = ::umask(077);
    const orvcore::TemporaryFolder made(u8"area");
    ::umask(0);
    const orvcore::TemporaryFolder second(u8"area");
    ::umask(mask);
    before != nullptr ? ::setenv("TMPDIR", saved.c_str(), 1) : ::unsetenv("TMPDIR");
    EXPECT_EQ(RightsOf(folder / "area"), fs::perms(01777));
    EXPECT_EQ(RightsOf(made.Path()), fs::perms(0700));
    EXPECT_EQ(RightsOf(second.Path()), fs::perms(0700));
}

} // namespace
