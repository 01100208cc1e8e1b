#pragma once

#include <orvcapsule/Export.h>
#include <orvcore/text/Strings.h>

#include <cstdint>

namespace orvcapsule {

/// @file
/// The two working folders below the system's temporary folder: "ProBrowser" for templates from local folders and
/// "ProStock" for content of the stock service. They only hold what can be made again. When a process initialises a
/// folder, a background task measures it; above 300 MiB the task creates the empty file "cleanupRequest" in it, and the
/// next process that initialises the folder deletes the folder.
///
/// A folder is not deleted while a process that initialised it is running: each such process holds shared locks until
/// it ends, on a file "ProBrowser.lock" or "ProStock.lock" beside the folder and, except on Windows, on the folder
/// itself. Unfinished files of killed processes are removed in the background by the next process that initialises the
/// folder, if no other process uses it.
///
/// If several users share the temporary folder, the working folder may belong to another user. Then it is not used: the
/// functions below act as if the system had no temporary folder.

/// Prepares the local working folder (`local`) or the stock one: deletes it if that was requested, starts measuring it,
/// and makes sure that it exists. Does nothing when there is no temporary folder. Only the first call per folder in a
/// process does anything. The deletion may be incomplete: files that another program uses stay, and the next process
/// tries again. Throws `std::filesystem::filesystem_error` when the folder cannot be created. For the host's main
/// thread.
ORVCAPSULE_API void InitTempDirectory(bool local);

/// Full path of the local working folder, which this does not create. Empty when the system names no temporary folder.
/// Any thread.
ORVCAPSULE_API orvcore::UTF8String GetTempLocalDirectory();

/// Full path of a stock asset's folder, created with its parents when missing: the stock folder, then the host
/// application's name, its client version and the id. Each of the three is one plain folder name whatever it contains:
/// an id that could lead elsewhere, or that a file system does not take as a name, is written with "%" and two
/// hexadecimal digits for each offending byte, different ids always giving different names (docs/decisions has the
/// rules). Failing to create the folder is not reported here; writing into it will. Any thread.
ORVCAPSULE_API orvcore::UTF8String GetTempStockDirectory(const orvcore::UTF8String& assetId);

/// @name Files of a stock asset
/// Paths in the asset's folder, which is created as above; the files need not exist. Any thread.
/// @{
ORVCAPSULE_API orvcore::UTF8String GetTempStockAssetJSONPath(const orvcore::UTF8String& assetId);
ORVCAPSULE_API orvcore::UTF8String GetTempStockAssetThumbPath(const orvcore::UTF8String& assetId);
ORVCAPSULE_API orvcore::UTF8String GetTempStockAssetVideoThumbPath(const orvcore::UTF8String& assetId);
/// @}

/// Deletes `folder` with its content when its "cleanupRequest" file exists and no other process has initialised it.
/// Without that file it returns at once, and a background task adds up the sizes of all files in and below the folder,
/// except those whose names begin with ".", and creates the file if the sum is greater than `sizeLimitBytes`. Any
/// failure there ends the task silently. Does nothing when the folder does not exist or belongs to another user.
ORVCAPSULE_API void CleanupTempDirectory(std::uint64_t sizeLimitBytes, const orvcore::UTF16String& folder);

} // namespace orvcapsule
