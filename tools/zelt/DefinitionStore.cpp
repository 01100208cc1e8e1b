#include "DefinitionStore.h"

#include "Definition.h"
#include "Errors.h"
#include "Output.h"
#include "OutputFile.h"
#include "Progress.h"
#include "TempFolder.h"

#include <orvcore/files/FileSystem.h>
#include <orvcore/files/Files.h>
#include <package/CapsuleZip.h>
#include <package/PackageNames.h>

namespace zelt {

namespace {

namespace fs = std::filesystem;

void StoreIn(const fs::path& package, std::string_view definition)
{
    const TempFolder folder;
    WriteText(folder.Path() / orvcapsule::kJSONFileName, definition);
    orvcapsule::CapsuleZip zip(package);
    if (!zip.SetZELTDescriptionJSON(orvcore::PathToUTF16(folder.Path()))) {
        throw FileError(ToText(package), zip.GetLastFailure().Reason());
    }
}

// A copy of a package with another definition. Errors are those of the package that is to be.
void MakeDraft(const fs::path& source, const fs::path& draft, std::string_view definition, const std::string& to)
{
    try {
        orvcore::CopyOneFile(source, draft);
        StoreIn(draft, definition);
    } catch (const FileError& error) {
        throw FileError(to, error.what());
    } catch (const fs::filesystem_error& error) {
        throw FileError(to, error.code().message());
    }
}

} // namespace

void NeedReadable(const std::string& file, std::string_view definition)
{
    const Definition again = ReadDefinition(orvcore::ToUTF8(definition));
    if (again.capsule == nullptr) {
        throw FileError(file, "the edited definition could not be read: " + again.refusals.front().text);
    }
}

void StoreDefinition(const std::string& from, const std::string& to, std::string_view definition,
                     const InterruptWatch& interrupt)
{
    const fs::path source = ToPath(from);
    const fs::path target = ToPath(to);
    interrupt.Check();
    if (from == to || orvcore::IsSameFile(source, target)) {
        const Progress progress("storing");
        return StoreIn(target, definition);
    }
    const TempFolder folder;
    const fs::path draft = folder.Path() / u8"package.zelt";
    {
        const Progress progress("storing");
        MakeDraft(source, draft, definition, to);
    }
    interrupt.Check();
    PutInPlace(draft, target);
}

} // namespace zelt
