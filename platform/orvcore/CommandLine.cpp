#include <orvcore/CommandLine.h>

#if defined(_WIN32)

#include <orvcore/text/Strings.h>

#include <windows.h>

#include <shellapi.h>

#include <cstdlib>
#include <memory>

namespace orvcore {

namespace {

UINT theFirstCodePage = 0;

void RestoreConsole()
{
    SetConsoleOutputCP(theFirstCodePage);
}

} // namespace

std::vector<std::string> UTF8Arguments(int argc, const char* const* argv)
{
    int count = 0;
    const std::unique_ptr<LPWSTR, decltype(&LocalFree)> arguments(CommandLineToArgvW(GetCommandLineW(), &count),
                                                                  &LocalFree);
    if (!arguments) {
        return {argv, argv + argc};
    }
    std::vector<std::string> result;
    for (int i = 0; i < count; ++i) {
        const std::wstring_view wide(arguments.get()[i]);
        result.push_back(ToNarrow(UTF16String(wide.begin(), wide.end())));
    }
    return result;
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

} // namespace orvcore

#else

namespace orvcore {

std::vector<std::string> UTF8Arguments(int argc, const char* const* argv)
{
    return {argv, argv + argc};
}

void SetConsoleUTF8() {}

} // namespace orvcore

#endif
