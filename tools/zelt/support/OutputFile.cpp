#include <tools/zelt/support/OutputFile.h>

#include <tools/zelt/output/Errors.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/output/Progress.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/FileSystem.h>

namespace zelt {

void NeedReplaceable(const std::filesystem::path& to)
{
    std::error_code error;
    if (!orvcore::CheckReplaceable(to, error)) {
        throw FileError(ToText(to), error.message());
    }
}

void NeedFree(const std::filesystem::path& to, const WriteForm& form)
{
    // Asked, and then written: another program that comes in between is not kept out.
    if (form.noClobber && orvcore::Exists(to)) {
        throw FileError(ToText(to), "it is there already");
    }
}

void CopyWatched(const std::filesystem::path& from, const std::filesystem::path& to, orvcore::Durability durability,
                 const std::string& what, const InterruptWatch* interrupt)
{
    Progress progress(what);
    std::error_code error;
    const bool copied = orvcore::CopyOneFile(from, to, durability, ShowAndWatch{progress, interrupt}, error);
    if (error == std::errc::operation_canceled) {
        throw Cancelled();
    }
    if (!copied) {
        throw std::filesystem::filesystem_error("cannot copy file", from, to, error);
    }
}

void PutInPlace(const std::filesystem::path& made, const std::filesystem::path& to, const InterruptWatch* interrupt)
{
    try {
        CopyWatched(made, to, orvcore::Durability::OnDisk, "writing", interrupt);
    } catch (const std::filesystem::filesystem_error& error) {
        throw FileError(ToText(to), error.code().message());
    }
}

void Deliver(const std::filesystem::path& made, const std::filesystem::path& to, const WriteForm& form,
             const InterruptWatch* interrupt)
{
    std::error_code unknown;
    const auto size = orvcore::InspectTarget(made, unknown).size;
    NeedFree(to, form);
    PutInPlace(made, to, interrupt);
    PrintWritten(form, ToText(to), std::to_string(size) + " bytes", {"bytes", std::uint64_t{size}});
}

} // namespace zelt
