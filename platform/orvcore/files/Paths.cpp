#include <orvcore/files/Paths.h>

namespace orvcore {

namespace fs = std::filesystem;

bool IsUsablePath(const fs::path& path)
{
    return !path.empty() && path.native().find(fs::path::value_type{}) == fs::path::string_type::npos;
}

fs::path TempDirectory()
{
    return fs::temp_directory_path();
}

fs::path TempDirectory(std::error_code& error)
{
    return fs::temp_directory_path(error);
}

fs::path WithoutClosingSeparators(fs::path folder)
{
    // The parent of "a/b/" is "a/b", while a root is its own parent: without the second condition "/" would never end.
    while (!folder.has_filename() && folder.has_relative_path()) {
        folder = folder.parent_path();
    }
    return folder;
}

} // namespace orvcore
