#include <orvcore/host/shared/Environment.h>

#include <cstdlib>

namespace orvcore {

std::optional<UTF8String> ReadEnvironment(const std::string& name)
{
    const std::wstring wideName(name.begin(), name.end());
    // The C library's own copy of the environment: what a host that has another C library sets while it runs is not in
    // it.
    const wchar_t* value = _wgetenv(wideName.c_str());
    if (value == nullptr) {
        return std::nullopt;
    }
    const std::wstring wide(value);
    return ToUTF8(UTF16String(wide.begin(), wide.end()));
}

} // namespace orvcore
