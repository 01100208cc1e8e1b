#include <tools/zelt/editing/DefinitionStore.h>

#include <tools/zelt/output/Errors.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/output/Progress.h>
#include <tools/zelt/support/OpenPackage.h>
#include <tools/zelt/support/OutputFile.h>
#include <tools/zelt/support/TempFolder.h>

#include <orvcore/files/FileSystem.h>
#include <package/CapsuleZip.h>
#include <package/PackageNames.h>

namespace zelt {

namespace {

namespace fs = std::filesystem;

bool StoreIn(orvcapsule::CapsuleZip& package, const std::string& name, std::string_view definition,
             const InterruptWatch& interrupt)
{
    Progress progress("storing");
    const TempFolder folder;
    WriteText(folder.Path() / orvcapsule::kJSONFileName, definition);
    const ShowAndWatch report{progress, &interrupt};
    if (package.SetZELTDescriptionJSON(orvcore::PathToUTF16(folder.Path()), report, nullptr)) {
        return true;
    }
    // A store fails with `Cancelled` after an interruption, which is told here rather than as a failure of the archive.
    interrupt.Check();
    const orvstorage::ZipFailure failure = package.GetLastFailure();
    if (failure.error != orvstorage::ZipError::ArchiveChanged) {
        throw FileError(name, failure.Reason());
    }
    return false;
}

// A copy of a package with another definition. Errors are those of the package that is to be.
void MakeDraft(const fs::path& source, const fs::path& draft, std::string_view definition, const std::string& to,
               const InterruptWatch& interrupt)
{
    try {
        CopyWatched(source, draft, orvcore::Durability::Cached, "copying", &interrupt);
        orvcapsule::CapsuleZip package = OpenPackage(draft);
        static_cast<void>(StoreIn(package, to, definition, interrupt)); // nobody else knows the draft
    } catch (const fs::filesystem_error& error) {
        throw FileError(to, error.code().message());
    }
}

} // namespace

void NeedReadable(const std::string& file, std::string_view definition)
{
    const auto again = orvcapsule::ReadDefinition(orvcore::ToUTF8(definition));
    if (again.capsule == nullptr) {
        throw FileError(file, "the edited definition could not be read: " + again.refusals.front().text);
    }
}

bool StoreDefinition(Template& from, const std::string& to, std::string_view definition,
                     const InterruptWatch& interrupt)
{
    const fs::path source = ToPath(from.file);
    const fs::path target = ToPath(to);
    interrupt.Check();
    // In its own place the package is changed only if it is still the version that was read. Another target is made as
    // a draft and replaced whole: there is nothing in it to be kept.
    if (from.file == to || orvcore::IsSameFile(source, target)) {
        return StoreIn(from.package, to, definition, interrupt);
    }
    const TempFolder folder;
    const fs::path draft = folder.Path() / u8"package.zelt";
    MakeDraft(source, draft, definition, to, interrupt);
    PutInPlace(draft, target, &interrupt);
    return true;
}

} // namespace zelt
