#include <tools/zelt/support/TempFolder.h>

#include <tools/zelt/output/Errors.h>
#include <tools/zelt/output/Output.h>

#include <orvcore/files/Files.h>

namespace zelt {

// The reason must not read as if the file that is worked on were to blame.
TempFolder::TempFolder()
try : TemporaryFolder(u8"zelt") {
} catch (const std::filesystem::filesystem_error& error) {
    if (error.path1().empty()) {
        throw FileError("the temporary folder", error.code().message());
    }
    throw FileError(ToText(error.path1()), "this temporary folder cannot be made (" + error.code().message() + ')');
}

void WriteText(const std::filesystem::path& file, std::string_view text)
{
    std::error_code error;
    if (orvcore::WriteBufferToFile(file, text.data(), text.size(), error) < 0) {
        throw FileError(ToText(file), "it cannot be written (" + error.message() + ')');
    }
}

} // namespace zelt
