#include <orvcore/host/shared/Environment.h>

#include <windows.h>

namespace orvcore {

std::optional<UTF8String> ReadEnvironment(const std::string& name)
{
    const std::wstring wideName(name.begin(), name.end());
    std::wstring value;
    // The system's environment and not the C library's copy, which lacks what a host with another C library has set
    // since. The answer counts the closing NUL only where the room was too small. Another thread may set a longer value
    // between two questions, so the room is asked for again until it is enough.
    DWORD length = 0;
    do {
        value.resize(length);
        ::SetLastError(ERROR_SUCCESS); // an empty value leaves it as it is
        length = ::GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size()));
        if (length == 0 && ::GetLastError() == ERROR_ENVVAR_NOT_FOUND) {
            return std::nullopt;
        }
    } while (length > value.size());
    return ToUTF8(UTF16String(value.begin(), value.begin() + static_cast<std::ptrdiff_t>(length)));
}

} // namespace orvcore
