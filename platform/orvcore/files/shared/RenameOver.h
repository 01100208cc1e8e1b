#pragma once

#include <orvcore/Export.h>

#include <filesystem>
#include <system_error>

namespace orvcore {

/// Puts the file `from` in the place of `to` in one step, whether `to` exists or not; both lie in one folder's file
/// system. A link at `to` is itself replaced. On Windows a place that another program holds for a moment is tried again
/// for about a second.
/// @return false, with the reason in `error`, when nothing has changed: what CheckReplaceable refuses stays, too.
[[nodiscard]] ORVPLATFORM_API bool RenameOver(const std::filesystem::path& from, const std::filesystem::path& to,
                                              std::error_code& error);

} // namespace orvcore
