#pragma once

#include <filesystem>
#include <functional>

namespace orvcapsule::detail {

/// Creates the lock file of `folder`, beside it, when it is missing. Processes see each other's use of the folder by
/// its lock.
void MakeFolderLock(const std::filesystem::path& folder);

/// Creates `folder` with its parents when missing, and holds its locks shared until this process ends: so other
/// processes see that it is in use. Waits up to five seconds for a process that holds a lock exclusively. A lock that
/// cannot be opened or taken is not held. Throws `std::filesystem::filesystem_error` when the folder cannot be created.
void MakeAndHoldFolder(const std::filesystem::path& folder);

/// Runs `action` while this process holds the locks of `folder` exclusively, so that no other process uses the folder
/// or can begin to. Returns false, without running `action`, when another process holds a lock or asks for the same, or
/// when that cannot be found out. Shared locks of this process do not prevent it; they are taken again afterwards. A
/// folder that has no lock, on it or beside it, counts as unused.
bool WithFolderToOneself(const std::filesystem::path& folder, const std::function<void()>& action);

} // namespace orvcapsule::detail
