#include "DefinitionStore.h"

#include "Definition.h"
#include "Errors.h"
#include "Output.h"
#include "TempFolder.h"

#include <orvcore/AtomicFile.h>
#include <orvcore/FileSystem.h>
#include <orvcore/Files.h>
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

// A copy beside its final place, which is removed unless it gets there.
class DraftCopy {
public:
    DraftCopy(const fs::path& from, const fs::path& to)
        : to_(to)
        , draft_(orvcore::PrivateSibling(to))
    {
        orvcore::CopyOneFile(from, draft_);
    }
    DraftCopy(const DraftCopy&) = delete;
    DraftCopy& operator=(const DraftCopy&) = delete;
    ~DraftCopy()
    {
        orvcore::RemoveTree(draft_);
    }
    const fs::path& Path() const noexcept
    {
        return draft_;
    }
    void PutInPlace()
    {
        std::error_code error;
        if (!orvcore::RenameOver(draft_, to_, error)) {
            throw fs::filesystem_error("", to_, error);
        }
    }

private:
    fs::path to_;
    fs::path draft_;
};

} // namespace

void NeedReadable(const std::string& file, std::string_view definition)
{
    const Definition again = ReadDefinition(orvcore::ToUTF8(definition));
    if (again.capsule == nullptr) {
        throw FileError(file, "the edited definition could not be read: " + again.refusals.front().text);
    }
}

void StoreDefinition(const std::string& from, const std::string& to, std::string_view definition)
{
    const fs::path source = ToPath(from);
    const fs::path target = ToPath(to);
    if (from == to || orvcore::IsSameFile(source, target)) {
        return StoreIn(target, definition);
    }
    try {
        DraftCopy draft(source, target);
        StoreIn(draft.Path(), definition);
        draft.PutInPlace();
    } catch (const FileError& error) {
        throw FileError(to, error.what());
    } catch (const fs::filesystem_error& error) {
        throw FileError(to, error.code().message());
    }
}

} // namespace zelt
