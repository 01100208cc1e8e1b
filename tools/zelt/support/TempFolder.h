#pragma once

#include <orvcore/files/TemporaryFolder.h>

#include <filesystem>
#include <string_view>

namespace zelt {

/// A folder of the program's own.
class TempFolder : public orvcore::TemporaryFolder {
public:
    /// @throws FileError  naming the temporary folder, when it cannot be created
    TempFolder();
};

/// Writes a text as a file. @throws FileError
void WriteText(const std::filesystem::path& file, std::string_view text);

} // namespace zelt
