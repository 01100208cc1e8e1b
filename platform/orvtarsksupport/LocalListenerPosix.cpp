#include <orvtarsksupport/LocalListener.h>

#include <orvcore/files/Paths.h>
#include <orvcore/files/shared/FileLock.h>
#include <orvtarsksupport/detail/PosixSocket.h>

#include <cerrno>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>

namespace orvtarsksupport {

namespace {

const char* AsPath(const orvcore::UTF8String& path)
{
    return reinterpret_cast<const char*>(path.c_str());
}

// The inode of the file at `path` itself; 0 when there is none.
std::uint64_t InodeOf(const orvcore::UTF8String& path)
{
    struct stat status {};
    return ::lstat(AsPath(path), &status) == 0 ? status.st_ino : 0;
}

// Between its bind and its listen a socket refuses clients as one that was left behind does. All who open a listener
// take those two steps under a lock of the folder, so neither is taken for the other.
std::unique_ptr<orvcore::FileLock> LockFolderOf(const orvcore::UTF8String& path, std::error_code& error)
{
    const std::filesystem::path folder = orvcore::PathFromUTF8(path).parent_path();
    return orvcore::FileLock::ForMoment(folder.empty() ? "." : folder, std::chrono::milliseconds(500), error);
}

// A program that was killed leaves its socket behind, which refuses connections.
bool IsLeftBehind(const orvcore::UTF8String& path, const sockaddr_un& address)
{
    struct stat status {};
    if (::lstat(AsPath(path), &status) != 0 || !S_ISSOCK(status.st_mode)) {
        return false;
    }
    // Non-blocking: a listener whose queue is full answers EAGAIN, and is alive.
    const detail::Descriptor probe(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    return ::connect(probe.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 &&
           errno == ECONNREFUSED;
}

bool Bind(int socket, const orvcore::UTF8String& path, const sockaddr_un& address)
{
    const auto bind = [&] { return ::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0; };
    if (bind()) {
        return true;
    }
    const int failure = errno;
    if (failure == EADDRINUSE && IsLeftBehind(path, address) && ::unlink(AsPath(path)) == 0 && bind()) {
        return true;
    }
    errno = failure; // one that answers keeps its place
    return false;
}

} // namespace

LocalListener::LocalListener(orvcore::UTF8String path, std::intptr_t handle, std::uint64_t inode)
    : path_(std::move(path))
    , handle_(handle)
    , inode_(inode)
{
}

// The name first: as long as it is there a client may connect, and would get no answer. Its user may have removed it,
// and another may listen there; while this socket is open no new file gets its inode.
LocalListener::~LocalListener()
{
    if (InodeOf(path_) == inode_) {
        ::unlink(AsPath(path_));
    }
    ::close(static_cast<int>(handle_));
}

std::unique_ptr<LocalListener> LocalListener::Open(const orvcore::UTF8String& path, std::error_code& error)
{
    error.clear();
    sockaddr_un address{};
    if (!detail::MakeAddress(path, address)) {
        error = std::make_error_code(path.empty() ? std::errc::invalid_argument : std::errc::filename_too_long);
        return nullptr;
    }
    const auto lock = LockFolderOf(path, error);
    if (error) {
        return nullptr;
    }
    // Non-blocking: the client that poll has told of may have gone, and accept would then wait beyond the deadline.
    detail::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (socket.Get() < 0 || !Bind(socket.Get(), path, address)) {
        error = {errno, std::generic_category()};
        return nullptr;
    }
    // Nobody connects before it listens, so the rights are there in time. The socket was made with the rights of any
    // new file.
    if (::chmod(AsPath(path), S_IRUSR | S_IWUSR) != 0 || ::listen(socket.Get(), SOMAXCONN) != 0) {
        error = {errno, std::generic_category()};
        ::unlink(AsPath(path));
        return nullptr;
    }
    return std::unique_ptr<LocalListener>(new LocalListener(path, socket.Release(), InodeOf(path)));
}

std::optional<LocalStream> LocalListener::Accept(Deadline deadline)
{
    const int socket = static_cast<int>(handle_);
    while (detail::WaitForSocket(socket, POLLIN, deadline)) {
        const int client = ::accept4(socket, nullptr, nullptr, SOCK_CLOEXEC);
        if (client >= 0) {
            return LocalStream(client);
        }
        // Between the notice and this call the client may have gone again: the listener waits for the next.
        if (errno != EAGAIN && errno != EINTR && errno != ECONNABORTED) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

} // namespace orvtarsksupport
