#pragma once

#include <filesystem>
#include <functional>

namespace orvcapsule::detail {

/// Makes the lock by which processes see each other's use of `folder`, a file beside it, if it is not there yet.
void MakeFolderLock(const std::filesystem::path& folder);

/// Creates `folder` with its parents when missing, and says to other processes, until this one ends, that it is in use.
/// Waits up to five seconds while another has the folder to itself. Without the rights to do so nothing is said. Throws
/// `std::filesystem::filesystem_error` when the folder cannot be created.
void MakeAndHoldFolder(const std::filesystem::path& folder);

/// Runs `action` while no other process holds the folder, nor can begin to; false, without running it, when one does,
/// another process asks for the same, or it cannot be found out. This process's own hold is no hindrance, and lasts. A
/// folder without a lock, on it or beside it, is nobody's.
bool WithFolderToOneself(const std::filesystem::path& folder, const std::function<void()>& action);

} // namespace orvcapsule::detail
