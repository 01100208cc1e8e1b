#include <orvcore/text/Strings.h>
#include <tools/support/Arguments.h>

#include <windows.h>

#include <shellapi.h>

#include <memory>

namespace orvtools {

std::vector<std::string> UTF8Arguments(int argc, const char* const* argv)
{
    int count = 0;
    const std::unique_ptr<LPWSTR, decltype(&LocalFree)> arguments(CommandLineToArgvW(GetCommandLineW(), &count),
                                                                  &LocalFree);
    // No memory: arguments of plain letters still work.
    if (!arguments) {
        return {argv, argv + argc};
    }
    std::vector<std::string> result;
    for (int i = 0; i < count; ++i) {
        const std::wstring_view wide(arguments.get()[i]);
        result.push_back(orvcore::ToNarrow(orvcore::UTF16String(wide.begin(), wide.end())));
    }
    return result;
}

} // namespace orvtools
