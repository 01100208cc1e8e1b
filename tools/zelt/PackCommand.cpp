#include "Commands.h"
#include "Output.h"
#include "OutputFile.h"
#include "Progress.h"

#include <orvcore/files/Files.h>
#include <package/CapsuleZip.h>

namespace zelt {

ExitCode RunPack(const PackOptions& options)
{
    return OnFile(options.directory, [&] {
        const std::filesystem::path directory = ToPath(options.directory);
        if (!orvcore::IsDirectory(directory)) {
            throw FileError(options.directory, "there is no such folder");
        }
        NeedReplaceable(ToPath(options.file));
        PackFolder(directory, options.file, InterruptWatch());
        const orvcapsule::CapsuleZip package(ToPath(options.file));
        PrintLine(Printable(options.file) + ": " + Count(package.GetArchive().GetEntries().size(), "entry"));
    });
}

void PackFolder(const std::filesystem::path& directory, const std::string& file, const InterruptWatch& interrupt)
{
    Progress progress("packing");
    const orvcapsule::CapsuleZip package(ToPath(file));
    const auto report = [&](double fraction, void*) {
        progress.Set(fraction);
        return !interrupt.IsRaised();
    };
    if (!package.Zip(directory, report, nullptr)) {
        progress.Clear();
        interrupt.Check();
        throw FileError(file, package.GetLastFailure().Reason());
    }
}

} // namespace zelt
