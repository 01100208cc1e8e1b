#pragma once

#include <sources/GraphicSource.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace orvcapsule::detail {

enum class Depth { OneFolder, AllBelow };

using FolderPath = std::shared_ptr<const std::filesystem::path>;
using FileName = std::filesystem::path::string_type;

/// What a walk found.
struct FoundPackages {
    std::vector<FolderPath> folders;   ///< those that directly hold packages; a folder after its sub-folders
    std::vector<std::size_t> packages; ///< the packages by their numbers, in the order of these folders and by name
    std::size_t files = 0;             ///< packages and other files together
    std::vector<FolderFailure> failures;
};

/// Finds packages by their names, in or also below `top`. Links to folders are not followed, links to files are. The
/// result's order is the same on every system; before it is known, `onPackage` is told of each package as the walk
/// comes to it.
///
/// A missing `top`, or a folder that has been deleted meanwhile, holds nothing. A folder that the system refuses to
/// list completely is a failure; the walk goes on with the others.
/// @param onPackage the first call is for the package number 0, the next one for 1
/// @param stop asked at every step; true ends the walk, whose result is then of no use
FoundPackages FindPackages(const std::filesystem::path& top, Depth depth,
                           const std::function<void(const FolderPath& folder, FileName package)>& onPackage,
                           const std::function<bool()>& stop);

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
