#pragma once

#include <package/CapsuleZip.h>

#include <filesystem>
#include <optional>

namespace orvcapsule::detail {

/// One package file while its entry is made: opened when its content is first needed, and then only once.
class ListedPackage {
public:
    explicit ListedPackage(const std::filesystem::path& path);

    const std::filesystem::path& Path() const noexcept
    {
        return path_;
    }
    const orvcore::UTF16String& FileName() const noexcept
    {
        return fileName_;
    }
    const orvcore::UTF8String& Folder() const noexcept
    {
        return folder_;
    }
    /// Entries larger than kMaxPreviewBytes are not read. Throws `std::filesystem::filesystem_error` when there is no
    /// room for the private copy of a package with a long path.
    const CapsuleZip& Content();

private:
    std::filesystem::path path_;
    orvcore::UTF16String fileName_;
    orvcore::UTF8String folder_;
    std::optional<CapsuleZip> zip_;
};

} // namespace orvcapsule::detail
