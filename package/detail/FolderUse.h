#pragma once

#include <filesystem>
#include <functional>

namespace orvcapsule::detail {

/// Makes the lock by which processes see each other's use of `folder`, a file beside it, if it is not there yet.
void MakeFolderLock(const std::filesystem::path& folder);

/// Says to other processes, until this one ends, that `folder` is in use. Waits up to five seconds while another has
/// the folder to itself. Without the rights to do so nothing is said.
void HoldFolder(const std::filesystem::path& folder);

/// Runs `action` while no other process holds the folder, nor can begin to; false, without running it, when one does,
/// another process asks for the same, or it cannot be found out. This process's own hold is no hindrance, and lasts. A
/// folder without a lock is nobody's.
bool WithFolderToOneself(const std::filesystem::path& folder, const std::function<void()>& action);

} // namespace orvcapsule::detail
