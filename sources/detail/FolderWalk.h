#pragma once

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
};

/// Finds packages by their names, in or also below `top`, in an order that is the same on every system. Links to
/// folders are not followed, links to files are.
///
/// A missing `top` holds nothing. Folders below it that are missing by now or that the system refuses to list are
/// passed over. What concerns the whole walk is thrown (`std::filesystem::filesystem_error`): a `top` that cannot be
/// listed, and a process that runs out of files or memory.
/// @param stop asked at every step; true ends the walk, whose result is then of no use
FoundPackages FindPackages(const std::filesystem::path& top, Depth depth, const std::function<bool()>& stop);

/// The absolute path of a folder without closing separators; empty for an empty path.
std::filesystem::path FullFolderPath(const std::filesystem::path& folder);

/// True when both name the same folder by the rules of paths, existing or not.
bool IsSamePath(const std::filesystem::path& one, const std::filesystem::path& other);
/// True when both lead to one existing folder.
bool LeadToSameFolder(const std::filesystem::path& one, const std::filesystem::path& other);
/// True when `inner` names a folder somewhere below `outer`.
bool IsBelow(const std::filesystem::path& inner, const std::filesystem::path& outer);

} // namespace orvcapsule::detail
