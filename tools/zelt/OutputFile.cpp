#include "OutputFile.h"

#include "Errors.h"
#include "Output.h"
#include "Progress.h"

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/Files.h>

namespace zelt {

void NeedReplaceable(const std::filesystem::path& to)
{
    std::error_code error;
    if (!orvcore::MayReplace(to, error)) {
        throw FileError(ToText(to), error.message());
    }
}

void PutInPlace(const std::filesystem::path& made, const std::filesystem::path& to)
{
    const Progress progress("writing");
    try {
        orvcore::CopyOneFile(made, to, orvcore::Durability::OnDisk);
    } catch (const std::filesystem::filesystem_error& error) {
        throw FileError(ToText(to), error.code().message());
    }
}

} // namespace zelt
