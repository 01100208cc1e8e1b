#include <orvcore/files/TemporaryFolder.h>

#include <orvcore/files/FileSystem.h>
#include <orvcore/files/Files.h>
#include <orvcore/text/Guid.h>

namespace orvcore {

namespace fs = std::filesystem;

namespace {

fs::path NewFolder(std::u8string_view area)
{
    fs::path folder = TempDirectory() / PathFromUTF8(area);
    std::error_code error;
    MakeDirectory(folder, error, FolderAccess::Shared);
    if (!error) {
        folder /= Guid::Create().ToString();
        if (!MakeDirectory(folder, error, FolderAccess::OwnerOnly) && !error) {
            error = std::make_error_code(std::errc::file_exists);
        }
    }
    if (error) {
        throw fs::filesystem_error("cannot create folder", folder, error);
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
    RemoveTree(path_);
}

} // namespace orvcore
