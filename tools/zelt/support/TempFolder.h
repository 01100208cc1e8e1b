#pragma once

#include <filesystem>
#include <string_view>

namespace zelt {

/// A private folder below the system's temporary folder, deleted with this object.
class TempFolder {
public:
    /// @throws FileError  naming the temporary folder, when it cannot be created
    TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder();

    const std::filesystem::path& Path() const noexcept
    {
        return path_;
    }

private:
    std::filesystem::path path_;
};

/// Writes a text as a file. @throws FileError
void WriteText(const std::filesystem::path& file, std::string_view text);

} // namespace zelt
