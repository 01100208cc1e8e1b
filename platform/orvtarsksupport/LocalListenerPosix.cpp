#include <orvtarsksupport/LocalListener.h>

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

// A program that was killed leaves its socket behind; nobody answers there.
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
    // One that answers keeps its place: the error stays EADDRINUSE.
    return errno == EADDRINUSE && IsLeftBehind(path, address) && ::unlink(AsPath(path)) == 0 && bind();
}

} // namespace

LocalListener::LocalListener(orvcore::UTF8String path, std::intptr_t handle)
    : path_(std::move(path))
    , handle_(handle)
{
}

// The name first: as long as it is there a client may come, whom nobody would answer.
LocalListener::~LocalListener()
{
    ::unlink(AsPath(path_));
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
    return std::unique_ptr<LocalListener>(new LocalListener(path, socket.Release()));
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
