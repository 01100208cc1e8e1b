#pragma once

#include <orvcore/files/Files.h>
#include <orvcore/tasks/Future.h>

#include <functional>
#include <memory>
#include <system_error>

namespace orvcore {

/// What a copy could not do.
struct CopyFailure {
    std::filesystem::path path; ///< the file or folder, below the target; empty when it is the target itself
    std::error_code error;
};

/// Copies all that `from` holds, files and folders, into `to` in the background and returns at once. `to` and its
/// parents are created when missing. Symbolic links of `from` are left out; one below `to` that leads out of it makes
/// the copy fail. Every file arrives whole; after a failure or a cancel the files and folders that this copy has
/// created are removed again, and the future is settled after that; only the reader's own cancel settles it at once,
/// with the removal still to come.
///
/// The future carries kResultOK, or kResultFileNotWritten when something could not be copied. It is cancelled when
/// `progress` returns false, when its reader cancels it, or when the process ends first.
/// @param progress may be empty; called on the background thread with the fraction done, false cancels
/// @param failure may be null; filled in before the future carries kResultFileNotWritten
ORVPLATFORM_API Future<ResultCode> CopyDirectoryAsync(const std::filesystem::path& from,
                                                      const std::filesystem::path& to, IfExists ifExists,
                                                      std::function<bool(double fraction)> progress,
                                                      std::shared_ptr<CopyFailure> failure = nullptr);

} // namespace orvcore
