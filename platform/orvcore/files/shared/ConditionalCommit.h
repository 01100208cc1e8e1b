#pragma once

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/shared/NativeFile.h>

#include <functional>
#include <optional>
#include <system_error>

namespace orvcore::detail {

/// Puts an AtomicFile in place if that is still wanted at the last moment.
class ORVPLATFORM_API ConditionalCommit {
public:
    /// As AtomicFile::Commit, but calls `isWanted` first; its false gives the error `operation_canceled`. A lock keeps
    /// all other commits of this kind, in this process and in others, out of that folder from this question until the
    /// file is in place.
    /// @param placed after success, what the new file is known by, or empty where that cannot be told
    [[nodiscard]] static bool Run(AtomicFile& file, const std::function<bool()>& isWanted, Durability durability,
                                  std::optional<FileVersion>& placed, std::error_code& error);
};

} // namespace orvcore::detail
