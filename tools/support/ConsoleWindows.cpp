#include <tools/support/Console.h>

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <io.h>

namespace orvtools {

namespace {

UINT theFirstCodePage = 0;

void RestoreConsole()
{
    SetConsoleOutputCP(theFirstCodePage);
}

int HandleOf(StandardStream stream) noexcept
{
    return _fileno(stream == StandardStream::Output ? stdout : stderr);
}

} // namespace

bool IsTerminal(StandardStream stream) noexcept
{
    return _isatty(HandleOf(stream)) != 0;
}

void SetBinary(StandardStream stream) noexcept
{
    _setmode(HandleOf(stream), _O_BINARY);
}

void SetConsoleUTF8()
{
    const UINT now = GetConsoleOutputCP();
    if (now != 0 && now != CP_UTF8 && theFirstCodePage == 0) {
        theFirstCodePage = now;
        SetConsoleOutputCP(CP_UTF8);
        std::atexit(&RestoreConsole);
    }
}

// The system takes what one call writes into a pipe as one, whatever its length.
bool WriteLines(StandardStream stream, std::string_view lines) noexcept
{
    constexpr std::size_t kLargestCall = std::size_t{1} << 30;
    while (!lines.empty()) {
        const int written =
            _write(HandleOf(stream), lines.data(), static_cast<unsigned>(std::min(lines.size(), kLargestCall)));
        if (written <= 0) {
            return false;
        }
        lines.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

} // namespace orvtools
