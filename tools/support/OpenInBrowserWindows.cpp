#include <tools/support/OpenInBrowser.h>

#include <orvcore/text/Strings.h>

#include <windows.h>

#include <shellapi.h>

#include <cstdint>

namespace orvtools {

bool OpenInBrowser(const std::string& address)
{
    const orvcore::UTF16String wide = orvcore::ToUTF16(address);
    const auto result = reinterpret_cast<std::intptr_t>(ShellExecuteW(
        nullptr, L"open", reinterpret_cast<const wchar_t*>(wide.c_str()), nullptr, nullptr, SW_SHOWNORMAL));
    return result > 32; // the system's own mark of success
}

} // namespace orvtools
