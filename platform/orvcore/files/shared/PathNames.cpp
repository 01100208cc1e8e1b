#include <orvcore/files/shared/PathNames.h>

#include <orvcore/text/shared/ASCII.h>

#include <algorithm>
#include <array>
#include <string>

namespace orvcore {

bool IsWithin(const std::filesystem::path& path, const std::filesystem::path& folder)
{
    // Name by name: "/a/bc" does not lie within "/a/b".
    return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first == folder.end();
}

bool IsDeviceName(std::u8string_view name)
{
    constexpr std::array<std::u8string_view, 6> kDevices = {u8"con", u8"prn",    u8"aux",
                                                            u8"nul", u8"conin$", u8"conout$"};
    constexpr std::array<std::u8string_view, 3> kSuperscriptDigits = {u8"\u00b9", u8"\u00b2", u8"\u00b3"};
    // Windows looks at the name up to its first dot, without the spaces before it, and knows the digits 1 to 3 of the
    // Latin-1 characters as well.
    std::u8string stem(name.substr(0, name.find(u8'.')));
    stem.erase(stem.find_last_not_of(u8' ') + 1);
    std::transform(stem.begin(), stem.end(), stem.begin(), &ToASCIILower<char8_t>);
    if (std::find(kDevices.begin(), kDevices.end(), stem) != kDevices.end()) {
        return true;
    }
    if (!stem.starts_with(u8"com") && !stem.starts_with(u8"lpt")) {
        return false;
    }
    const std::u8string_view port = std::u8string_view(stem).substr(3);
    return (port.size() == 1 && IsASCIIDigit(port[0])) ||
           std::find(kSuperscriptDigits.begin(), kSuperscriptDigits.end(), port) != kSuperscriptDigits.end();
}

} // namespace orvcore
