#include <orvcore/Console.h>

#include <cstdio>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#else
#include <unistd.h>
#endif

namespace orvcore {

namespace {

std::FILE* FileOf(StandardStream stream) noexcept
{
    return stream == StandardStream::Output ? stdout : stderr;
}

} // namespace

#if defined(_WIN32)

bool IsTerminal(StandardStream stream) noexcept
{
    return _isatty(_fileno(FileOf(stream))) != 0;
}

void SetBinary(StandardStream stream) noexcept
{
    _setmode(_fileno(FileOf(stream)), _O_BINARY);
}

#else

bool IsTerminal(StandardStream stream) noexcept
{
    return isatty(fileno(FileOf(stream))) != 0;
}

void SetBinary(StandardStream /*stream*/) noexcept {}

#endif

} // namespace orvcore
