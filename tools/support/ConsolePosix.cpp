#include <tools/support/Console.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvtools {

namespace {

int HandleOf(StandardStream stream) noexcept
{
    return stream == StandardStream::Output ? STDOUT_FILENO : STDERR_FILENO;
}

bool IsPipe(int handle) noexcept
{
    struct stat status {};
    return ::fstat(handle, &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

// Keeps other programs that ask for this lock out of the pipe. It is the process's own, unlike that of flock: programs
// that one parent started share the open file. A system that has no locks on pipes writes without.
class PipeLock {
public:
    explicit PipeLock(int handle) noexcept
        : handle_(handle)
    {
        Set(F_WRLCK);
    }
    ~PipeLock()
    {
        Set(F_UNLCK);
    }
    PipeLock(const PipeLock&) = delete;
    PipeLock& operator=(const PipeLock&) = delete;

private:
    void Set(short type) noexcept
    {
        struct flock lock {};
        lock.l_type = type;
        lock.l_whence = SEEK_SET;
        while (::fcntl(handle_, F_SETLKW, &lock) < 0 && errno == EINTR) {
        }
    }
    int handle_;
};

// A write may take less than it was given, and a signal may end it before it has taken anything.
bool WriteAll(int handle, std::string_view text) noexcept
{
    while (!text.empty()) {
        const ssize_t written = ::write(handle, text.data(), text.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
    return true;
}

// The whole lines at the beginning that a pipe takes as one, or one line that is longer.
// The system writes up to PIPE_BUF bytes into a pipe without mixing them with another writer's; more may be torn apart,
// also in the middle of a line.
std::string_view NextPiece(std::string_view lines) noexcept
{
    if (lines.size() <= PIPE_BUF) {
        return lines;
    }
    std::size_t end = lines.rfind('\n', PIPE_BUF - 1);
    if (end == lines.npos) {
        end = lines.find('\n');
    }
    return lines.substr(0, end == lines.npos ? end : end + 1);
}

} // namespace

bool IsTerminal(StandardStream stream) noexcept
{
    return ::isatty(HandleOf(stream)) != 0;
}

void SetBinary(StandardStream /*stream*/) noexcept {}

void SetConsoleUTF8() {}

std::size_t TerminalWidth(StandardStream stream) noexcept
{
    struct winsize size {};
    return ::ioctl(HandleOf(stream), TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

// "dumb" is what editors and build tools set for a terminal that shows escape sequences as they are.
bool TakesColour(StandardStream stream) noexcept
{
    const char* terminal = std::getenv("TERM");
    return IsTerminal(stream) && terminal != nullptr && std::string_view(terminal) != "dumb";
}

bool WriteLines(StandardStream stream, std::string_view lines) noexcept
{
    const int handle = HandleOf(stream);
    if (!IsPipe(handle)) {
        return WriteAll(handle, lines);
    }
    const PipeLock lock(handle);
    while (!lines.empty()) {
        const std::string_view piece = NextPiece(lines);
        if (!WriteAll(handle, piece)) {
            return false;
        }
        lines.remove_prefix(piece.size());
    }
    return true;
}

} // namespace orvtools
