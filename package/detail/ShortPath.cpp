#include <package/detail/ShortPath.h>

#include <orvcore/Files.h>

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

std::shared_ptr<const PrivateFolder> FolderForLongPath(const orvcore::UTF8String& path)
{
    return path.size() > kLongestPath ? std::make_shared<PrivateFolder>() : nullptr;
}

} // namespace orvcapsule::detail
