#include <tools/zelt/support/LibraryWriter.h>

#include <tools/zelt/output/Errors.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/support/OutputFile.h>
#include <tools/zelt/support/TempFolder.h>
#include <tools/zelt/support/Template.h>

#include <lumolibmanager/FolderLibManager.h>
#include <orvcore/files/AtomicFile.h>
#include <orvcore/json/JSONTextWriter.h>
#include <orvcore/text/Guid.h>
#include <package/PackageNames.h>

namespace zelt {

namespace {

namespace fs = std::filesystem;
using namespace lumolibmanager;
using orvcore::UTF8String;
using orvcore::serialization::JSONTextWriter;

// A folder in the making, under a name that no reader of libraries looks at; gone with this object unless it was put in
// place.
class DraftFolder {
public:
    explicit DraftFolder(const fs::path& target)
        : target_(target)
        , path_(orvcore::PrivateSibling(target))
    {
        orvcore::EnsureDirectory(path_);
    }
    DraftFolder(const DraftFolder&) = delete;
    DraftFolder& operator=(const DraftFolder&) = delete;
    ~DraftFolder()
    {
        std::error_code ignored;
        orvcore::RemoveTree(path_, ignored);
    }

    const fs::path& Path() const noexcept
    {
        return path_;
    }
    // A folder cannot be replaced in one step, but it can appear in one: the name is a new identifier, so nothing
    // stands there.
    void PutInPlace() const
    {
        fs::rename(orvcore::ToSystemPath(path_), orvcore::ToSystemPath(target_));
    }

private:
    fs::path target_;
    fs::path path_;
};

void WriteMember(JSONTextWriter& writer, std::string_view key, std::string_view text)
{
    writer.Key(key);
    writer.String(text);
}

// Puts a template's files into `folder`, the draft's sub-folder `name`, and its element into the manifest.
void WriteElement(JSONTextWriter& writer, const fs::path& draft, const std::string& name, const std::string& file,
                  const InterruptWatch& interrupt)
{
    const Template from = NeedCapsule(file);
    const fs::path folder = draft / name;
    orvcore::EnsureDirectory(folder);
    const auto inFolder = [&](const UTF8String& leaf) { return name + '/' + orvcore::ToNarrow(leaf); };
    const auto pathOf = [&](const UTF8String& leaf) { return orvcore::PathToUTF8(folder / leaf); };
    const UTF8String package = u8"package" + orvcapsule::kCapsuleExtn;
    // Flushed before the rename, which may otherwise reach the disk first.
    CopyWatched(ToPath(file), folder / package, orvcore::Durability::OnDisk, "copying", &interrupt);
    WriteText(folder / orvcapsule::kJSONFileName, orvcore::AsNarrow(from.text));

    const std::string title = orvcore::ToNarrow(from.definition.capsule->GetDisplayName());
    writer.BeginObject();
    WriteMember(writer, kManifestIDKey, orvcore::Guid::Create().ToString());
    // The definition has the name; the manifest's is for readers that wait for it, and has a limit.
    const bool isUsable = !title.empty() && title.size() <= kMaxTextSize;
    WriteMember(writer, kManifestNameKey, isUsable ? title : ToText(ToPath(file).stem()));
    WriteMember(writer, kManifestTypeKey, kElementType_Capsule);
    writer.Key(kManifestFilesKey);
    writer.BeginObject();
    WriteMember(writer, kManifestPrimaryRole, inFolder(package));
    WriteMember(writer, kManifestAlternateRole, inFolder(orvcapsule::kJSONFileName));
    if (from.package.GetZELTThumbnailPNG(pathOf(orvcapsule::kThumbFileName))) {
        WriteMember(writer, kMimeType_ImagePNG, inFolder(orvcapsule::kThumbFileName));
    }
    if (from.package.GetZELTThumbnailVideo(pathOf(orvcapsule::kVideoThumbFileName))) {
        WriteMember(writer, kMimeType_VideoMP4, inFolder(orvcapsule::kVideoThumbFileName));
    }
    writer.EndObject();
    writer.EndObject();
}

} // namespace

std::string WriteLibrary(const std::string& root, const std::string& name, const std::vector<std::string>& files)
{
    if (name.size() > kMaxTextSize) {
        throw UsageError("the library's name is longer than " + std::to_string(kMaxTextSize) + " bytes");
    }
    const InterruptWatch interrupt;
    // Drafts of programs that were killed.
    orvcore::RemoveLeftBehind(ToPath(root), std::chrono::hours(24));
    std::string id = orvcore::Guid::Create().ToString();
    const DraftFolder draft(ToPath(root) / id);
    JSONTextWriter writer(true);
    writer.BeginObject();
    writer.Key(kManifestVersionKey);
    writer.Int(kManifestVersion);
    WriteMember(writer, kManifestIDKey, id);
    WriteMember(writer, kManifestNameKey, name);
    writer.Key(kManifestElementsKey);
    writer.BeginArray();
    for (std::size_t i = 0; i < files.size(); ++i) {
        interrupt.Check();
        WriteElement(writer, draft.Path(), std::to_string(i + 1), files[i], interrupt);
    }
    writer.EndArray();
    writer.EndObject();
    WriteText(draft.Path() / kManifestName, orvcore::AsNarrow(writer.Take()));
    interrupt.Check();
    draft.PutInPlace();
    return id;
}

} // namespace zelt
