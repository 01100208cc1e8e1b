#pragma once

#include <orvcore/files/TemporaryFolder.h>
#include <orvcore/files/shared/FileLock.h>
#include <orvcore/text/Strings.h>

#include <filesystem>
#include <memory>

namespace orvcapsule::detail {

/// A temporary folder with a lock beside it that says that it is in use: making one removes those of the same user that
/// killed programs left there more than a day ago.
class PrivateFolder {
public:
    /// Creates it; throws `std::filesystem::filesystem_error` when that fails.
    PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;
    ~PrivateFolder();

    const std::filesystem::path& Path() const noexcept
    {
        return folder_.Path();
    }

private:
    orvcore::TemporaryFolder folder_;
    std::unique_ptr<orvcore::FileLock> use_;
};

/// The short-path rule: a path of 221 UTF-8 bytes or more is too long to be worked on. The limit is fixed and does not
/// depend on the system's own.
bool IsLongPath(const orvcore::UTF8String& path);

/// Null for a path that is used as it is, a new private folder to work in for a long one.
std::shared_ptr<const PrivateFolder> FolderForLongPath(const orvcore::UTF8String& path);

} // namespace orvcapsule::detail
