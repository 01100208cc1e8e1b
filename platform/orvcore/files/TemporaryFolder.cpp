#include <orvcore/files/TemporaryFolder.h>

#include <orvcore/files/FileSystem.h>
#include <orvcore/text/Guid.h>

namespace orvcore {

namespace fs = std::filesystem;

namespace {

fs::path NewFolder(std::u8string_view area)
{
    fs::path folder = TempDirectory() / PathFromUTF8(area);
    MakeDirectory(folder, FolderAccess::Shared);
    folder /= Guid::Create().ToString();
    if (!MakeDirectory(folder, FolderAccess::OwnerOnly)) {
        throw fs::filesystem_error("cannot create folder", folder, std::make_error_code(std::errc::file_exists));
    }
    return folder;
}

} // namespace

TemporaryFolder::TemporaryFolder(std::u8string_view area)
    : path_(NewFolder(area))
{
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    RemoveTree(path_, ignored);
}

} // namespace orvcore
