#include <orvtarsksupport/LocalStream.h>

#include <orvcore/files/Paths.h>
#include <orvcore/host/shared/Environment.h>
#include <orvtarsksupport/BrokerTransport.h>
#include <orvtarsksupport/detail/PosixSocket.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>

// The other side is checked twice, because the path can change between the look and the connection. Before it: the
// folder belongs to this user or root and nobody else writes there, and the socket in it is theirs. After it: the
// process at the other end is theirs, which the kernel noted when that process began to listen. Only then is anything
// sent.
//
// Calls on the connected socket never block by themselves: each waits by poll for what is left of the caller's time.

namespace orvtarsksupport {

namespace fs = std::filesystem;
using namespace std::chrono;

namespace detail {

bool MakeAddress(const orvcore::UTF8String& path, sockaddr_un& address) noexcept
{
    address = {};
    address.sun_family = AF_UNIX;
    // The system takes 108 bytes with the closing NUL. A longer path must not be cut: it would name another socket.
    if (path.empty() || path.size() >= sizeof address.sun_path || path.find(u8'\0') != path.npos) {
        return false;
    }
    std::copy(path.begin(), path.end(), address.sun_path);
    return true;
}

TarskResult FromErrno() noexcept
{
    switch (errno) {
    case ENOENT:
    case ENOTDIR:
    // A socket that a killed broker has left behind: it is there, but no process listens.
    case ECONNREFUSED:
        return {TarskStatus::NoBroker};
    // What a connection ends with when its time limit (SO_SNDTIMEO) passes.
    case EAGAIN:
        return {TarskStatus::TimedOut};
    case EPIPE:
    case ECONNRESET:
        return {TarskStatus::BrokenOff};
    default:
        return {TarskStatus::Failed, {errno, std::generic_category()}};
    }
}

TarskResult WaitForSocket(int socket, short events, Deadline deadline)
{
    for (;;) {
        // Rounded up: rounded down the last fraction of a millisecond would be spent in a loop without waiting.
        const auto left = ceil<milliseconds>(deadline - steady_clock::now()).count();
        if (left <= 0) {
            return {TarskStatus::TimedOut};
        }
        pollfd question{socket, events, 0};
        const int ready = ::poll(&question, 1, static_cast<int>(std::min<std::int64_t>(left, INT_MAX)));
        // Also when the other side has gone: the next read or write tells how.
        if (ready > 0) {
            return {};
        }
        if (ready < 0 && errno != EINTR) {
            return FromErrno();
        }
    }
}

} // namespace detail

namespace {

bool IsTrusted(uid_t owner)
{
    return owner == ::geteuid() || owner == 0;
}

// The folder is asked through one handle, and the socket inside that folder.
TarskResult CheckPlace(const fs::path& path)
{
    const fs::path parent = path.parent_path();
    // O_PATH: a handle to ask by, for which the folder need not be readable.
    const detail::Descriptor folder(::open(parent.empty() ? "." : parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct stat status {};
    if (folder.Get() < 0 || ::fstat(folder.Get(), &status) != 0) {
        return detail::FromErrno();
    }
    if (!IsTrusted(status.st_uid) || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        return {TarskStatus::UnsafeFolder};
    }
    if (::fstatat(folder.Get(), path.filename().c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return detail::FromErrno();
    }
    return {S_ISSOCK(status.st_mode) && IsTrusted(status.st_uid) ? TarskStatus::Delivered : TarskStatus::ForeignBroker};
}

// Whatever has become of the path meanwhile, this is the process at the other end.
TarskResult CheckPeer(int socket)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
        return detail::FromErrno();
    }
    return {IsTrusted(peer.uid) ? TarskStatus::Delivered : TarskStatus::ForeignBroker};
}

// Connecting to a busy listener blocks in the system, where poll cannot wait for it: its time limit is the socket's.
TarskResult ConnectSocket(int socket, const sockaddr_un& address, Deadline deadline)
{
    for (;;) {
        const auto left = ceil<microseconds>(deadline - steady_clock::now()).count();
        if (left <= 0) {
            return {TarskStatus::TimedOut};
        }
        const timeval limit{left / 1'000'000, left % 1'000'000};
        if (::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit) != 0) {
            return detail::FromErrno();
        }
        if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
            return {};
        }
        if (errno != EINTR) {
            return detail::FromErrno();
        }
    }
}

} // namespace

orvcore::UTF8String DefaultBrokerPath()
{
    orvcore::UTF8String folder = orvcore::ReadEnvironment("XDG_RUNTIME_DIR").value_or(orvcore::UTF8String());
    // Not set in a process that was started outside of the user's session; the system's usual place then.
    if (!folder.starts_with(u8'/')) {
        folder = orvcore::ToUTF8("/run/user/" + std::to_string(::geteuid()));
    }
    return folder + u8"/orv-broker/broker.sock";
}

LocalStream::~LocalStream()
{
    if (handle_ != kNone) {
        ::close(static_cast<int>(handle_));
    }
}

TarskResult LocalStream::Connect(const orvcore::UTF8String& path, Deadline deadline, LocalStream& stream)
{
    sockaddr_un address{};
    if (!detail::MakeAddress(path, address)) {
        return {TarskStatus::Failed, std::make_error_code(std::errc::filename_too_long)};
    }
    if (const TarskResult place = CheckPlace(orvcore::PathFromUTF8(path)); !place) {
        return place;
    }
    LocalStream made(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (made.handle_ == kNone) {
        return detail::FromErrno();
    }
    TarskResult result = ConnectSocket(static_cast<int>(made.handle_), address, deadline);
    if (result) {
        result = CheckPeer(static_cast<int>(made.handle_));
    }
    if (result) {
        stream = std::move(made);
    }
    return result;
}

TarskResult LocalStream::Write(std::string_view bytes, Deadline deadline)
{
    const int socket = static_cast<int>(handle_);
    while (!bytes.empty()) {
        if (const TarskResult ready = detail::WaitForSocket(socket, POLLOUT, deadline); !ready) {
            return ready;
        }
        // MSG_NOSIGNAL: writing to a socket whose other end has gone would raise SIGPIPE, which ends a host that does
        // not expect it.
        const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        } else if (errno != EINTR && errno != EAGAIN) {
            return detail::FromErrno();
        }
    }
    return {};
}

TarskResult LocalStream::Read(std::span<char> bytes, Deadline deadline)
{
    const int socket = static_cast<int>(handle_);
    while (!bytes.empty()) {
        if (const TarskResult ready = detail::WaitForSocket(socket, POLLIN, deadline); !ready) {
            return ready;
        }
        const ssize_t got = ::recv(socket, bytes.data(), bytes.size(), MSG_DONTWAIT);
        if (got == 0) {
            return {TarskStatus::BrokenOff};
        }
        if (got > 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(got));
        } else if (errno != EINTR && errno != EAGAIN) {
            return detail::FromErrno();
        }
    }
    return {};
}

} // namespace orvtarsksupport
