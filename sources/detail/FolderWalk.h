#pragma once

#include <sources/GraphicSource.h>

#include <filesystem>
#include <functional>
#include <vector>

namespace orvcapsule::detail {

enum class Depth { OneFolder, AllBelow };

/// The packages in one folder.
struct FolderOfPackages {
    using FileName = std::filesystem::path::string_type;

    std::filesystem::path folder;
    std::vector<FileName> packages; ///< file names in order
};

/// What a walk found.
struct FoundPackages {
    std::vector<FolderOfPackages> folders; ///< those that directly hold packages; a folder after its sub-folders
    std::size_t packages = 0;
    std::size_t files = 0; ///< packages and other files together
    std::vector<FolderFailure> failures;
};

/// Finds packages by their names, in or also below `top`, in an order that is the same on every system. Links to
/// folders are not followed, links to files are.
///
/// A missing `top`, or a folder that has been deleted meanwhile, holds nothing. A folder that the system refuses to
/// list completely is a failure; the walk goes on with the others.
/// @param stop asked at every step; true ends the walk, whose result is then of no use
FoundPackages FindPackages(const std::filesystem::path& top, Depth depth, const std::function<bool()>& stop);

/// True when the system lists the folder now.
bool CanBeListed(const std::filesystem::path& folder);
/// True when something is there to list, or when that cannot be found out.
bool MayBeThere(const std::filesystem::path& folder);
/// True for an error that concerns the whole process and not one folder: no free file handle, or no memory.
bool ConcernsWholeWalk(const std::error_code& error);

/// The absolute path of a folder without closing separators; empty for an empty path.
std::filesystem::path FullFolderPath(const std::filesystem::path& folder);

/// True when both name the same folder by the rules of paths, existing or not.
bool IsSamePath(const std::filesystem::path& one, const std::filesystem::path& other);
/// True when both lead to one existing folder.
bool LeadToSameFolder(const std::filesystem::path& one, const std::filesystem::path& other);
/// The path under which a walk through `top` comes to the folder that `wanted` names in whatever spelling; empty when
/// it does not come there.
std::filesystem::path PathInWalk(const std::filesystem::path& wanted, const std::filesystem::path& top);

} // namespace orvcapsule::detail
