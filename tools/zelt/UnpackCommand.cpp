#include "Commands.h"
#include "Output.h"
#include "Progress.h"

#include <orvcore/files/Files.h>
#include <package/CapsuleZip.h>

namespace zelt {

namespace {

bool IsEmptyFolder(const std::filesystem::path& directory)
{
    const auto listing = orvcore::ListDirectory(directory);
    return listing.directories.empty() && listing.files.empty();
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

} // namespace

ExitCode RunUnpack(const UnpackOptions& options)
{
    return OnFile(options.file, [&] {
        const std::filesystem::path directory = ToPath(options.directory);
        if (!options.overwrite && !IsEmptyFolder(directory)) {
            throw FileError(options.directory, "the folder is not empty; --overwrite unpacks into it all the same");
        }
        const orvcapsule::CapsuleZip package(ToPath(options.file));
        {
            Progress progress("unpacking");
            if (!package.UnZip(directory, true)) {
                progress.Clear();
                ThrowFailure(options.file, package);
            }
        }
        std::size_t files = 0;
        for (const auto& entry : package.GetArchive().GetEntries()) {
            files += entry.isDirectory ? 0 : 1;
        }
        PrintLine(Printable(options.directory) + ": " + Count(files, "file"));
    });
}

} // namespace zelt
