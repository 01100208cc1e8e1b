#pragma once

#include <orvcore/Files.h>
#include <orvcore/Future.h>

#include <functional>

namespace orvcore {

/// What to do with a file that stands where another is to go.
enum class IfExists { Keep, Overwrite };

/// Copies all that `from` holds, files and folders, into `to` in the background and returns at once. Symbolic links
/// are left out. Every file arrives whole; after a failure or a cancel the files and folders that this copy has
/// created are removed again.
///
/// The future carries kResultOK, or kResultFileNotWritten when something could not be copied. It is cancelled when
/// `progress` returns false, when its reader cancels it, or when the process ends first.
/// @param progress may be empty; called on the background thread with the fraction done, false cancels
ORVPLATFORM_API Future<ResultCode> CopyDirectoryAsync(const std::filesystem::path& from,
                                                      const std::filesystem::path& to, IfExists ifExists,
                                                      std::function<bool(double fraction)> progress);

} // namespace orvcore
