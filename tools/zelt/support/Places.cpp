#include <tools/zelt/support/Places.h>

#include <tools/zelt/output/Output.h>

#include <orvcore/files/FileSystem.h>

namespace zelt {

namespace {

// The full path of a folder; the name itself, reported, of one that is not there, which the library passes over.
std::string FullPath(const std::string& folder, ExitCode& exit)
{
    std::string path = folder;
    const ExitCode named = OnFile(folder, [&] {
        std::error_code failed;
        const orvcore::FileKind kind = orvcore::InspectTarget(ToPath(folder), failed).kind;
        if (kind == orvcore::FileKind::Nothing && !failed) {
            throw FileError(folder, "there is no such folder");
        }
        if (kind != orvcore::FileKind::Directory && !failed) {
            throw FileError(folder, "it is not a folder");
        }
        // Full, because a listing's entries and the rows of the index have full paths, and the working folder may be
        // another one at the next start.
        path = ToText(ToFullPath(folder));
    });
    exit = named == ExitCode::kDone ? exit : named;
    return path;
}

} // namespace

bool NamePlaces(const Places& places)
{
    const bool areNamed = !places.folders.empty() || !places.libraries.empty();
    if (!areNamed) {
        ReportError("there is nothing to look into: give a FOLDER or --libraries ROOT");
    }
    return areNamed;
}

Places FullPlaces(const Places& places, ExitCode& exit)
{
    Places full = places;
    for (std::string& folder : full.folders) {
        folder = FullPath(folder, exit);
    }
    full.libraries = places.libraries.empty() ? "" : FullPath(places.libraries, exit);
    return full;
}

} // namespace zelt
