#include <orvcore/host/shared/Environment.h>

#include <cstdlib>

namespace orvcore {

std::optional<UTF8String> ReadEnvironment(const std::string& name)
{
#if defined(_WIN32)
    const std::wstring wideName(name.begin(), name.end());
    const wchar_t* value = _wgetenv(wideName.c_str());
    if (value == nullptr) {
        return std::nullopt;
    }
    const std::wstring wide(value);
    return ToUTF8(UTF16String(wide.begin(), wide.end()));
#else
    const char* value = std::getenv(name.c_str());
    if (value == nullptr) {
        return std::nullopt;
    }
    return ToUTF8(std::string_view(value));
#endif
}

} // namespace orvcore
