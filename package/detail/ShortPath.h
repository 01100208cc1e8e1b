#pragma once

#include <orvcore/Strings.h>

#include <filesystem>
#include <memory>

namespace orvcapsule::detail {

/// A folder of our own under the temporary folder, deleted with all it holds when the object goes; errors of that are
/// swallowed.
class PrivateFolder {
public:
    /// Creates it; throws `std::filesystem::filesystem_error` when that fails.
    PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;
    ~PrivateFolder();

    const std::filesystem::path& Path() const
    {
        return path_;
    }

private:
    std::filesystem::path path_;
};

/// The short-path rule: null for a path of at most 220 UTF-8 bytes, which is used as it is; a new private folder to
/// work in for a longer one. The limit is fixed and does not depend on the system's own.
std::shared_ptr<const PrivateFolder> FolderForLongPath(const orvcore::UTF8String& path);

} // namespace orvcapsule::detail
