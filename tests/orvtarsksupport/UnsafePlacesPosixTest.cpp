#include "tests/support/TestBroker.h"

#include <orvcore/files/shared/FileLock.h>
#include <orvtarsksupport/BrokerTransport.h>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace orvtarsksupport;
using test::TestBroker;
namespace fs = std::filesystem;

constexpr uid_t kOther = 65534; // nobody
constexpr gid_t kSame = static_cast<gid_t>(-1);

TarskStatus SendTo(const fs::path& socket)
{
    orvcore::UTF8String reply;
    return MakeBrokerTransport(orvcore::PathToUTF8(socket), std::chrono::minutes(10))
        ->Send({u8"n", u8"secret", false}, reply)
        .status;
}

// A client that gets through makes the broker count.
TEST(UnsafePlacesTest, NothingIsSentWhereOthersCouldListen)
{
    std::atomic<int> clients = 0;
    TestBroker broker([&](LocalStream) { ++clients; });
    const fs::path socket = orvcore::PathFromUTF8(broker.Path());
    const fs::path folder = socket.parent_path();
    for (const mode_t mode : {0777U, 0720U, 0702U, 01777U}) {
        ASSERT_EQ(::chmod(folder.c_str(), mode), 0);
        EXPECT_EQ(SendTo(socket), TarskStatus::UnsafeFolder) << mode;
    }
    ASSERT_EQ(::chmod(folder.c_str(), 0711), 0);
    const test::TempFolder mine;
    mine.Write("file", "");
    fs::create_symlink(socket, mine / "link");
    for (const char* name : {"file", "link"}) {
        EXPECT_EQ(SendTo(mine / name), TarskStatus::ForeignBroker) << name;
    }
    EXPECT_EQ(SendTo(mine / "file" / "x"), TarskStatus::NoBroker);
    EXPECT_EQ(clients, 0);
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give files away";
    }
    ASSERT_EQ(::chown(socket.c_str(), kOther, kSame), 0);
    EXPECT_EQ(SendTo(socket), TarskStatus::ForeignBroker);
    ASSERT_EQ(::chown(socket.c_str(), 0, kSame), 0);
    ASSERT_EQ(::chown(folder.c_str(), kOther, kSame), 0);
    EXPECT_EQ(SendTo(socket), TarskStatus::UnsafeFolder);
    ASSERT_EQ(::chown(folder.c_str(), 0, kSame), 0);
    EXPECT_EQ(clients, 0);
}

TEST(UnsafePlacesTest, AProcessOfAnotherUserIsNoBroker)
{
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can become another user";
    }
    const test::TempFolder folder;
    const std::string socket = (folder / "broker.sock").string();
    ASSERT_EQ(::chown(folder.Path().c_str(), kOther, kSame), 0);
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    if (child == 0) { // listens as another user, as far as a folder's path lets it, until it is killed
        std::error_code error;
        const bool isOther = ::chdir(folder.Path().c_str()) == 0 && ::setuid(kOther) == 0;
        const auto listener = isOther ? LocalListener::Open(u8"broker.sock", error) : nullptr;
        const char told = listener ? '1' : '0';
        for (ssize_t written = ::write(ready[1], &told, 1); written == 1;) {
            ::pause();
        }
        ::_exit(0);
    }
    char told = 0;
    EXPECT_EQ(::read(ready[0], &told, 1), 1);
    EXPECT_EQ(told, '1');
    // Folder and socket look right by now; the process behind them is still the other user's.
    EXPECT_EQ(::chown(socket.c_str(), 0, kSame), 0);
    EXPECT_EQ(::chown(folder.Path().c_str(), 0, kSame), 0);
    EXPECT_EQ(SendTo(socket), TarskStatus::ForeignBroker);
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    ::close(ready[0]);
    ::close(ready[1]);
}

TEST(UnsafePlacesTest, ADeadSocketIsReplacedAndALivingOneIsNot)
{
    std::error_code error;
    const TestBroker broker([](LocalStream) {});
    EXPECT_EQ(LocalListener::Open(broker.Path(), error), nullptr);
    EXPECT_EQ(error, std::errc::address_in_use);
    const test::TempFolder folder;
    folder.Write("file", "kept");
    EXPECT_EQ(LocalListener::Open(orvcore::PathToUTF8(folder / "file"), error), nullptr);
    EXPECT_EQ(folder.Read("file"), "kept");
    // What a killed program leaves: the name of a socket that nobody has open.
    auto listener = LocalListener::Open(orvcore::PathToUTF8(folder / "a"), error);
    fs::rename(folder / "a", folder / "b");
    listener.reset();
    listener = LocalListener::Open(orvcore::PathToUTF8(folder / "b"), error);
    EXPECT_NE(listener, nullptr) << error.message();
    // Nor does one end that took the place of a listener's file.
    fs::remove(folder / "b");
    const auto later = LocalListener::Open(orvcore::PathToUTF8(folder / "b"), error);
    listener.reset();
    EXPECT_TRUE(fs::exists(folder / "b"));
    // The program that holds the folder's lock may be about to listen.
    listener = LocalListener::Open(orvcore::PathToUTF8(folder / "c"), error);
    fs::rename(folder / "c", folder / "d");
    listener.reset();
    const auto lock = orvcore::FileLock::ForMoment(folder.Path(), std::chrono::milliseconds(0), error);
    EXPECT_EQ(LocalListener::Open(orvcore::PathToUTF8(folder / "d"), error), nullptr);
    EXPECT_EQ(error, std::errc::device_or_resource_busy);
    EXPECT_TRUE(fs::exists(folder / "d"));
}

} // namespace
