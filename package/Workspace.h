#pragma once

#include <orvcapsule/Export.h>
#include <orvcore/text/Strings.h>

#include <cstdint>

namespace orvcapsule {

/// @file
/// The two working folders below the system's temporary folder: "ProBrowser" for templates from local folders and
/// "ProStock" for content of the stock service. They hold what can be made again. A folder that has grown past 300 MiB
/// is deleted the next time a process initialises it; which one that is, is found out in the background and written
/// down as an empty file "cleanupRequest" inside it.
///
/// A folder is never deleted while a process that initialised it still runs: each holds a lock (a file
/// "ProBrowser.lock" or "ProStock.lock" beside the folder) until it ends. Half-made files that a killed process left
/// are removed by the next that initialises the folder and is alone in it.

/// Prepares the local working folder (`local`) or the stock one: deletes it if that was asked for, starts the search
/// for its size, and makes sure that it exists. Only the first call for a folder in a process does anything.
/// The deletion goes as far as it can: what is in use by another program stays, and the next process tries again.
/// Throws `std::filesystem::filesystem_error` when the folder cannot be created. For the host's main thread.
ORVCAPSULE_API void InitTempDirectory(bool local);

/// Full path of the local working folder, which this does not create. Empty when the system names no temporary folder.
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

/// Deletes `folder` with all it holds when its "cleanupRequest" file exists and no other process has initialised it.
/// Without that file it returns at once, and a background task adds up the sizes of all files in and below the folder,
/// those whose names begin with "." left out, and makes the file if the sum is greater than `sizeLimitBytes`. Whatever
/// goes wrong there ends the task without a trace. Does nothing when the folder does not exist.
ORVCAPSULE_API void CleanupTempDirectory(std::uint64_t sizeLimitBytes, const orvcore::UTF16String& folder);

} // namespace orvcapsule
