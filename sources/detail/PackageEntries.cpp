#include <sources/detail/PackageEntries.h>

#include <capsule/Serialization.h>
#include <orvcore/Files.h>
#include <sources/LocalGraphicsSource.h>
#include <sources/detail/EntryFields.h>

#include <boost/smart_ptr/make_shared.hpp>

namespace orvcapsule::detail {

namespace fs = std::filesystem;

namespace {

// Nothing of a package that a listing looks at is large; what is must not take the memory of every worker.
void LimitMemory(CapsuleZip& zip)
{
    orvstorage::ZipLimits limits;
    limits.maxItemSize = kMaxPreviewBytes;
    zip.GetArchive().SetLimits(limits);
}

} // namespace

PackageEntries::PackageEntries(const std::string& sourceID, std::function<bool()> stop)
    : sourceID_(sourceID)
    , previews_(sourceID)
    , stop_(std::move(stop))
{
}

boost::shared_ptr<CapsuleEntry> PackageEntries::Make(const fs::path& package, const std::string& directoryKey) const
{
    std::error_code ignored;
    const orvcore::FileInfo facts = orvcore::InspectTarget(package, ignored);
    if (facts.kind != orvcore::FileKind::File) {
        return nullptr;
    }
    auto entry = boost::make_shared<CapsuleEntry>();
    entry->sourcePath.reserve(2);
    entry->sourcePath.push_back(sourceID_);
    if (!directoryKey.empty()) {
        entry->sourcePath.push_back(directoryKey);
    }
    entry->path = orvcore::PathToUTF8(package);
    entry->fileSize = facts.size;
    entry->name = orvcore::PathToUTF16(package.stem());
    entry->modified = ToPosixTime(facts.modified);
    try {
        CapsuleZip zip(package);
        LimitMemory(zip);
        if (ReadDefinition(*entry, zip)) {
            entry->thumbnailPath = Preview(PreviewKind::Still, *entry, package, facts.modified, zip);
        }
        entry->videoPreviewPath = Preview(PreviewKind::Video, *entry, package, facts.modified, zip);
    } catch (const fs::filesystem_error&) { // no room for the private copy of a package with a long path
    }
    return entry;
}

bool PackageEntries::ReadDefinition(CapsuleEntry& entry, const CapsuleZip& zip) const
{
    const orvcore::UTF8String text = zip.GetZELTDescriptionJSON();
    if (text.empty()) {
        return false;
    }
    try {
        const std::shared_ptr<Capsule> capsule = serialization::CapsuleFromJson(text);
        if (capsule) {
            FillFromCapsule(entry, *capsule);
        }
        return capsule != nullptr;
    } catch (const std::exception&) { // a definition that its reader gives up is an unreadable one
        return false;
    }
}

orvcore::UTF8String PackageEntries::Preview(PreviewKind kind, const CapsuleEntry& entry, const fs::path& package,
                                            orvcore::FileTime modified, const CapsuleZip& zip) const
{
    const fs::path target = previews_.PathOf(kind, entry, package, modified);
    const bool isThere = !stop_() && previews_.Provide(kind, zip, target) && !stop_();
    return isThere ? orvcore::PathToUTF8(target) : orvcore::UTF8String();
}

orvcore::UTF8String PackageEntries::GetThumbnailPath(const CapsuleEntry& entry) const
{
    const fs::path package = orvcore::PathFromUTF8(entry.path);
    std::error_code ignored;
    const orvcore::FileInfo facts = orvcore::InspectTarget(package, ignored);
    // A package that is gone may still have its preview; one that was replaced needs a new one.
    const orvcore::FileTime modified =
        facts.kind == orvcore::FileKind::File ? facts.modified : ToFileTime(entry.modified);
    const fs::path target = previews_.PathOf(PreviewKind::Still, entry, package, modified);
    if (orvcore::IsFile(target)) {
        return stop_() ? orvcore::UTF8String() : orvcore::PathToUTF8(target);
    }
    try {
        CapsuleZip zip(package);
        LimitMemory(zip);
        return Preview(PreviewKind::Still, entry, package, modified, zip);
    } catch (const fs::filesystem_error&) {
        return {};
    }
}

} // namespace orvcapsule::detail
