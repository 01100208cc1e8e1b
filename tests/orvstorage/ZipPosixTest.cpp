// What only a POSIX system lets a test do: kill a process in the middle of its work, and run out of room.
#include <orvcore/files/shared/CopyDirectory.h>
#include <orvstorage/ZipFile.h>

#include <gtest/gtest.h>

#include <tests/support/TempFolder.h>
#include <tests/support/ZipBytes.h>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using orvstorage::ZipError;
using orvstorage::ZipFile;
using test::TempFolder;
using test::ZipBytes;

// Runs `work` in a process of its own and returns how it ended.
template <class Work>
int InChild(const Work& work)
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(work());
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return status;
}

int WithFileSizeLimit(rlim_t bytes, const std::function<bool()>& work)
{
    ::signal(SIGXFSZ, SIG_IGN); // writes then fail as on a full disk
    const rlimit limit{bytes, bytes};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    return work() ? 0 : 1;
}

std::string Incompressible(std::size_t size)
{
    std::string bytes;
    for (std::uint32_t x = 1; bytes.size() < size; x = x * 1664525U + 1013904223U) {
        bytes += static_cast<char>(x >> 24);
    }
    return bytes;
}

TEST(ZipPosix, KilledAtAnyPointTheOldArchiveIsWhole)
{
    const TempFolder folder;
    for (const char* name : {"in/1", "in/2", "in/3", "in/4", "in/5"}) {
        folder.Write(name, Incompressible(300000));
    }
    folder.Write("a.zelt", "old");
    const ZipFile zip(folder / "a.zelt");
    for (int killAt = 1;; ++killAt) {
        const int status = InChild([&] {
            int calls = 0;
            const auto progress = [&](double, void*) { return ++calls < killAt || ::raise(SIGKILL) != 0; };
            return zip.Zip(folder / "in", progress, nullptr) ? 0 : 1;
        });
        if (WIFEXITED(status)) {
            EXPECT_EQ(WEXITSTATUS(status), 0);
            EXPECT_GT(killAt, 4);
            break;
        }
        ASSERT_EQ(folder.Read("a.zelt"), "old");
    }
    EXPECT_TRUE(zip.Check(true).empty());
    // What killed processes left behind in a folder is not packed with it.
    const auto leftBehind = orvcore::ListDirectory(folder.Path()).files;
    ASSERT_GT(leftBehind.size(), 1U);
    ASSERT_TRUE(zip.Zip(folder.Path(), {}, nullptr));
    EXPECT_EQ(zip.GetEntries().size(), 5U);
}

TEST(ZipPosix, OutOfRoomNothingChangesAndNothingStays)
{
    const TempFolder folder;
    folder.Write("in/a.bin", Incompressible(3 << 20));
    ASSERT_TRUE(ZipFile(folder / "good.zip").Zip(folder / "in", {}, nullptr));
    folder.Write("a.zelt", "old");
    const ZipFile zip(folder / "a.zelt");
    const ZipFile good(folder / "good.zip");
    const auto failsFull = [](const ZipFile& file, bool done) {
        return !done && file.GetLastFailure().error == ZipError::DiskFull;
    };
    const auto copyFailsFull = [&] {
        orvcore::CopyFailure failure;
        return CopyDirectory(folder / "in", folder / "made/copy", orvcore::IfExists::Keep, {}, failure) ==
                   orvcore::kResultFileNotWritten &&
               failure.error == std::errc::file_too_large;
    };
    for (const rlim_t room : {0U, 100U, 1U << 20}) {
        EXPECT_EQ(InChild([&] {
                      return WithFileSizeLimit(room, [&] {
                          return failsFull(zip, zip.Zip(folder / "in", {}, nullptr)) &&
                                 failsFull(good, good.UnZip(folder / "out", true)) &&
                                 failsFull(good, good.UnzipItems(u8"a.bin", folder / "made/deep/single")) &&
                                 failsFull(good, good.AddItem(u8"a.bin", folder / "in", true)) && copyFailsFull();
                      });
                  }),
                  0);
    }
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"a.zelt", "good.zip", "in/a.bin"}));
    EXPECT_EQ(folder.Read("a.zelt"), "old");
    EXPECT_TRUE(good.Check(true).empty());
}

TEST(ZipPosix, MemoryDoesNotGrowWithAnEntry)
{
    const TempFolder folder;
    folder.Write("in/large.bin", "");
    std::filesystem::resize_file(folder / "in/large.bin", 200U << 20);
    const ZipFile zip(folder / "a.zip");
    rusage before{};
    rusage after{};
    ::getrusage(RUSAGE_SELF, &before);
    ASSERT_TRUE(zip.Zip(folder / "in", {}, nullptr));
    ASSERT_TRUE(zip.UnzipItems(u8"large.bin", folder / "out"));
    ASSERT_TRUE(zip.UnZip(folder / "all", true));
    ::getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 48 << 10); // KiB
}

TEST(ZipPosix, LongNamesOfManyFoldersCostLittleMemory)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers keep what is freed";
#endif
    const TempFolder folder;
    ZipBytes bytes;
    for (int i = 0; i < 300; ++i) {
        std::string name;
        for (int depth = 0; depth < 64; ++depth) {
            name += std::to_string(1000 + i) + std::string(27, 'n') + '/';
        }
        bytes.Add({.name = name});
    }
    folder.Write("a.zip", bytes.Finish());
    EXPECT_EQ(InChild([&] {
                  rusage before{};
                  rusage after{};
                  ::getrusage(RUSAGE_SELF, &before);
                  const bool good = ZipFile(folder / "a.zip").Check(false).empty();
                  ::getrusage(RUSAGE_SELF, &after);
                  return good && after.ru_maxrss - before.ru_maxrss < 16 << 10 ? 0 : 1; // KiB
              }),
              0);
}

TEST(ZipPosix, SpecialFilesAreNeitherPackedNorReplaced)
{
    const TempFolder folder;
    folder.Write("in/a", "1");
    const ZipFile good(folder / "good.zip");
    ASSERT_TRUE(good.Zip(folder / "in", {}, nullptr));
    for (const char* name : {"pipe", "out/a"}) {
        orvcore::EnsureDirectory((folder / name).parent_path());
        ASSERT_EQ(::mkfifo((folder / name).c_str(), 0600), 0);
    }
    const ZipFile zip(folder / "pipe");
    const std::string expected = "it cannot be written (it is not a regular file)";
    EXPECT_FALSE(zip.Zip(folder / "in", {}, nullptr));
    EXPECT_EQ(zip.GetLastFailure().Reason(), expected);
    EXPECT_FALSE(good.UnzipItems(u8"a", folder / "pipe"));
    EXPECT_EQ(good.GetLastFailure().Reason(), "cannot unpack \"a\": " + expected);
    EXPECT_FALSE(good.UnZip(folder / "out", true));
    EXPECT_EQ(good.GetLastFailure().Reason(), "cannot unpack \"a\": " + expected);
    EXPECT_TRUE(std::filesystem::is_fifo(folder / "pipe"));
    EXPECT_TRUE(std::filesystem::is_fifo(folder / "out/a"));
    EXPECT_FALSE(good.Zip(folder / "out", {}, nullptr));
    EXPECT_EQ(good.GetLastFailure().error, ZipError::SpecialFile);
    EXPECT_FALSE(good.AddItem(u8"pipe", folder.Path(), true));
    EXPECT_EQ(good.GetLastFailure().error, ZipError::SpecialFile);
}

TEST(ZipPosix, ArchivesAreRegularFilesAndNothingElseIsWaitedFor)
{
    const TempFolder folder;
    folder.Write("good.zip", ZipBytes().Add({.name = "a", .data = "1"}).Finish());
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink("pipe", folder / "to pipe");
    std::filesystem::create_symlink("good.zip", folder / "to good");
    const struct {
        std::filesystem::path path;
        const char* reason;
    } cases[] = {
        {folder / "pipe", "the file cannot be opened (it is not a regular file)"},
        {folder / "to pipe", "the file cannot be opened (it is not a regular file)"},
        {"/dev/null", "the file cannot be opened (it is not a regular file)"},
        {folder.Path(), "the file cannot be opened (Is a directory)"},
        {folder / "to good", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(InChild([&] {
                      ::alarm(30); // ends the child that waits
                      const ZipFile zip(c.path);
                      return (zip.UnzipItem(u8"a") != nullptr) == (*c.reason == 0) &&
                                     zip.GetLastFailure().Reason() == c.reason
                                 ? 0
                                 : 1;
                  }),
                  0)
            << c.path;
    }
}

TEST(ZipPosix, AnEntryIsStoppedAtTheSizeThatItDeclares)
{
    const TempFolder folder;
    const test::Zeros zeros(40000);
    folder.Write("a.zip",
                 ZipBytes().Add({.name = "a", .data = zeros.deflated, .method = 8, .declaredSize = 1000}).Finish());
    const ZipFile zip(folder / "a.zip");
    const auto isStopped = [&](bool done) { return !done && zip.GetLastFailure().error == ZipError::SizeMismatch; };
    EXPECT_EQ(InChild([&] {
                  return WithFileSizeLimit(1U << 20, [&] {
                      return isStopped(zip.UnZip(folder / "out", true)) &&
                             isStopped(zip.UnzipItems(u8"a", folder / "single"));
                  });
              }),
              0);
}

} // namespace
