#pragma once

#include <orvcore/files/Files.h>
#include <orvcore/tasks/Future.h>

#include <functional>
#include <memory>
#include <system_error>

namespace orvcore {

/// What a copy could not do.
struct CopyFailure {
    std::filesystem::path path; ///< the file or folder, below the source and the target; empty when it is one of these
    std::error_code error;
};

/// Copies all that `from` holds, files and folders, into `to`, on the calling thread. `to` and its parents are created
/// when missing. Symbolic links of `from` are left out; one below `to` that leads out of it makes the copy fail, and so
/// does a source that is missing or cannot be read whole. Every file arrives whole; after a failure or a cancel
/// the files and folders that this copy has created are removed again and what it has replaced is put back.
/// @param progress may be empty; told the fraction done, false cancels. What it throws is passed on to the caller,
///        nothing copied.
/// @param failure filled in where the result is kResultFileNotWritten
/// @return kResultOK, kResultFileNotWritten, or kFutureCancelled after a cancel
ORVPLATFORM_API ResultCode CopyDirectory(const std::filesystem::path& from, const std::filesystem::path& to,
                                         IfExists ifExists, const std::function<bool(double fraction)>& progress,
                                         CopyFailure& failure);

/// The same in the background: returns at once. The future is settled when all is copied, or taken back; only the
/// reader's own cancel settles it at once, with the removal still to come.
///
/// The future carries kResultOK, or kResultFileNotWritten when something could not be copied. It is cancelled when
/// `progress` returns false, when its reader cancels it, or when the process ends first. The end of the process does
/// not wait for a copy that is running: the files that have arrived stay, and what they replaced lies in a private
/// folder
/// (".orv-...") in the target, which the first copy a day later removes. Nothing that runs on the pre-termination
/// executor may wait for it: that runs one task at a time, this copy among them.
/// @param progress may be empty; called on the background thread with the fraction done, false cancels
/// @param failure may be null; filled in before the future carries kResultFileNotWritten
ORVPLATFORM_API Future<ResultCode> CopyDirectoryAsync(const std::filesystem::path& from,
                                                      const std::filesystem::path& to, IfExists ifExists,
                                                      std::function<bool(double fraction)> progress,
                                                      std::shared_ptr<CopyFailure> failure = nullptr);

} // namespace orvcore
