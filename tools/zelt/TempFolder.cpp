#include "TempFolder.h"

#include "Errors.h"
#include "Output.h"

#include <orvcore/Files.h>

namespace zelt {

TempFolder::TempFolder()
    : path_(orvcore::CreatePrivateDirectory(u8"zelt"))
{
}

TempFolder::~TempFolder()
{
    orvcore::RemoveTree(path_);
}

void WriteText(const std::filesystem::path& file, std::string_view text)
{
    if (orvcore::WriteBufferToFile(file, text.data(), text.size()) < 0) {
        throw FileError(ToText(file), "it cannot be written");
    }
}

} // namespace zelt
