#include <tools/support/Console.h>

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <io.h>

namespace orvtools {

namespace {

// The console is shared with the shell that started the program, so its code page must be as it was at the end. A
// program that is killed leaves it changed.
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
    // 0 is what a process without a console gets.
    if (now != 0 && now != CP_UTF8 && theFirstCodePage == 0) {
        theFirstCodePage = now;
        SetConsoleOutputCP(CP_UTF8);
        std::atexit(&RestoreConsole);
    }
}

std::size_t TerminalWidth(StandardStream stream) noexcept
{
    CONSOLE_SCREEN_BUFFER_INFO info{};
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(HandleOf(stream)));
    return GetConsoleScreenBufferInfo(handle, &info) != 0
               ? static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1)
               : 0;
}

bool TakesColour(StandardStream stream) noexcept
{
    constexpr DWORD kEscapeSequences = 4; // ENABLE_VIRTUAL_TERMINAL_PROCESSING, which older headers lack
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(HandleOf(stream)));
    DWORD mode = 0;
    return IsTerminal(stream) && GetConsoleMode(handle, &mode) != 0 &&
           SetConsoleMode(handle, mode | kEscapeSequences) != 0;
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
