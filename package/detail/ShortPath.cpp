#include <package/detail/ShortPath.h>

#include <orvcore/files/Files.h>

namespace orvcapsule::detail {

namespace {

constexpr std::size_t kLongestPath = 220;

} // namespace

PrivateFolder::PrivateFolder()
    : path_(orvcore::CreatePrivateDirectory(u8"Capsule"))
{
}

PrivateFolder::~PrivateFolder()
{
    orvcore::RemoveTree(path_);
}

bool IsLongPath(const orvcore::UTF8String& path)
{
    return path.size() > kLongestPath;
}

std::shared_ptr<const PrivateFolder> FolderForLongPath(const orvcore::UTF8String& path)
{
    return IsLongPath(path) ? std::make_shared<PrivateFolder>() : nullptr;
}

} // namespace orvcapsule::detail
