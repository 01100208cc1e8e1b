#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/output/Progress.h>
#include <tools/zelt/support/OpenPackage.h>
#include <tools/zelt/support/OutputFile.h>

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
        NeedFree(ToPath(options.file), options.form);
        // Before the work, which may take long, and in the words of the output's path.
        NeedReplaceable(ToPath(options.file));
        PackFolder(directory, options.file, InterruptWatch());
        const orvcapsule::CapsuleZip package = OpenPackage(ToPath(options.file));
        const std::size_t entries = package.GetArchive().GetEntries().size();
        PrintWritten(options.form, options.file, Count(entries, "entry"), {"entries", std::uint64_t{entries}});
    });
}

void PackFolder(const std::filesystem::path& directory, const std::string& file, const InterruptWatch& interrupt)
{
    Progress progress("packing");
    const orvcapsule::CapsuleZip package = OpenPackage(ToPath(file));
    if (!package.Zip(directory, ShowAndWatch{progress, &interrupt}, nullptr)) {
        progress.Clear();
        interrupt.Check();
        throw FileError(file, package.GetLastFailure().Reason());
    }
}

} // namespace zelt
