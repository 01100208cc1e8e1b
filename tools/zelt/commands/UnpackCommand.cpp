#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/output/Progress.h>
#include <tools/zelt/support/OpenPackage.h>

#include <orvcore/files/Files.h>
#include <package/CapsuleZip.h>

namespace zelt {

namespace {

bool IsEmptyFolder(const std::filesystem::path& directory)
{
    std::error_code error;
    const auto listing = orvcore::ListDirectory(directory, error);
    // A missing one is made, and unpacking tells what else is wrong with it.
    return error || (listing.directories.empty() && listing.files.empty());
}

// Entries that are refused for their names leave all others unpacked, so each of them is told.
[[noreturn]] void ThrowFailure(const std::string& file, const orvcapsule::CapsuleZip& package)
{
    const std::string last = package.GetLastFailure().Reason();
    for (const auto& failure : package.GetArchive().Check(false)) {
        if (const std::string reason = failure.Reason(); reason != last) {
            ReportError(file, reason);
        }
    }
    throw FileError(file, last);
}

void UnpackInto(const std::filesystem::path& directory, const orvcapsule::CapsuleZip& package, const std::string& file)
{
    const InterruptWatch interrupt;
    Progress progress("unpacking");
    if (!package.UnZip(directory, true, ShowAndWatch{progress, &interrupt}, nullptr)) {
        progress.Clear();
        if (package.GetLastFailure().error == orvstorage::ZipError::Cancelled) {
            throw Cancelled();
        }
        ThrowFailure(file, package);
    }
}

} // namespace

ExitCode RunUnpack(const UnpackOptions& options)
{
    return OnFile(options.file, [&] {
        const std::filesystem::path directory = ToPath(options.directory);
        // Asked before and not left to the archive: unpacking into a folder that was named by mistake would mix the
        // two.
        if (!options.overwrite && !IsEmptyFolder(directory)) {
            throw FileError(options.directory, "the folder is not empty; --overwrite unpacks into it all the same");
        }
        const orvcapsule::CapsuleZip package = OpenPackage(ToPath(options.file));
        UnpackInto(directory, package, options.file);
        std::size_t files = 0;
        for (const auto& entry : package.GetArchive().GetEntries()) {
            files += entry.isDirectory ? 0 : 1;
        }
        PrintWritten(options.form, options.directory, Count(files, "file"), {"files", std::uint64_t{files}});
    });
}

} // namespace zelt
