#include <orvcore/host/shared/Environment.h>

#include <cstdlib>

namespace orvcore {

std::optional<UTF8String> ReadEnvironment(const std::string& name)
{
    // Nothing guards this against a host that changes its environment at the same moment, so callers ask seldom.
    const char* value = std::getenv(name.c_str());
    if (value == nullptr) {
        return std::nullopt;
    }
    return ToUTF8(std::string_view(value));
}

} // namespace orvcore
