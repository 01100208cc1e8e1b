#pragma once

#include <orvcore/Export.h>

#include <filesystem>
#include <memory>
#include <string_view>

namespace orvcore {

class FileLock;

/// A new folder below the system's temporary folder, removed with all that it holds when this object goes; what cannot
/// be removed stays. Nobody else knows its name, and on systems with access rights nobody else may look into it, while
/// all users may have such folders in one area. A lock beside the folder says that it is in use: making one removes
/// those in the same area that the same user's killed programs left more than a day ago.
class ORVPLATFORM_API TemporaryFolder {
public:
    /// The folder is `area`, then a new identifier's text. Throws `std::filesystem::filesystem_error` when it cannot be
    /// created.
    explicit TemporaryFolder(std::u8string_view area);
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const std::filesystem::path& Path() const noexcept
    {
        return path_;
    }

private:
    const std::filesystem::path path_;
    std::unique_ptr<FileLock> use_;
};

} // namespace orvcore
