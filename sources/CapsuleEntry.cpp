#include <sources/CapsuleEntry.h>
#include <sources/SourceNames.h>

namespace orvcapsule {

CapsuleEntry::CapsuleEntry() = default;
CapsuleEntry::CapsuleEntry(const CapsuleEntry&) = default;
CapsuleEntry::CapsuleEntry(CapsuleEntry&&) noexcept = default;
CapsuleEntry& CapsuleEntry::operator=(const CapsuleEntry&) = default;
CapsuleEntry& CapsuleEntry::operator=(CapsuleEntry&&) noexcept = default;
CapsuleEntry::~CapsuleEntry() = default;

std::string CapsuleEntry::GetSourceID() const
{
    return sourcePath.empty() ? std::string() : sourcePath[0];
}

std::string CapsuleEntry::GetLibraryID() const
{
    return sourcePath.size() > 1 && sourcePath[0] == kLumoLibrariesSourceID ? sourcePath[1] : std::string();
}

std::string CapsuleEntry::GetLumoElementID() const
{
    return orvcore::ToNarrow(lumoElementID);
}

CapsuleEntry::CreatorApp CapsuleEntry::GetCreatorApp() const
{
    return authorApp == u"tsfx" ? CreatorApp::Tessel : CreatorApp::Other;
}

orvcore::UTF8String CapsuleEntry::GetVideoPreviewPath() const
{
    return {};
}

bool CapsuleEntry::SupportVideoPlayback() const
{
    return !videoPreviewPath.empty();
}

// The path of a local package's preview depends on the time of its last change, so entries of two states of one package
// differ.
bool CapsuleEntry::operator==(const CapsuleEntry& other) const
{
    return path == other.path && thumbnailPath == other.thumbnailPath;
}

bool CapsuleEntry::operator<(const CapsuleEntry& other) const
{
    return name < other.name;
}

} // namespace orvcapsule
