#include <package/detail/ShortPath.h>

namespace orvcapsule::detail {

namespace {

// Bytes and not characters, and the same number on every system, so that one package is treated alike everywhere.
constexpr std::size_t kLongestPath = 220;

} // namespace

bool IsLongPath(const orvcore::UTF8String& path)
{
    return path.size() > kLongestPath;
}

std::unique_ptr<const orvcore::TemporaryFolder> FolderForLongPath(const orvcore::UTF8String& path)
{
    return IsLongPath(path) ? std::make_unique<const orvcore::TemporaryFolder>(kPrivateArea) : nullptr;
}

} // namespace orvcapsule::detail
