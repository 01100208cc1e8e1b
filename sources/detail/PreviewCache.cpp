#include <sources/detail/PreviewCache.h>

#include <orvcore/AtomicFile.h>
#include <orvcore/Files.h>
#include <orvcore/HashMixer.h>
#include <package/Workspace.h>

namespace orvcapsule::detail {

namespace fs = std::filesystem;

namespace {

std::u8string_view ExtensionOf(PreviewKind kind)
{
    return kind == PreviewKind::Still ? u8".png" : u8".mp4";
}

} // namespace

PreviewCache::PreviewCache(std::string sourceID)
    : sourceID_(std::move(sourceID))
    , folder_(orvcore::PathFromUTF8(GetTempLocalDirectory()))
{
    std::error_code ignored; // what cannot be written later is left out then
    orvcore::MakeDirectories(folder_, ignored);
}

fs::path PreviewCache::PathOf(PreviewKind kind, const CapsuleEntry& entry, const fs::path& package,
                              orvcore::FileTime modified) const
{
    const std::u8string_view extension = ExtensionOf(kind);
    orvcore::HashMixer mixer;
    mixer.AddBytes("tmpzlt", 6)
        .Add(extension)
        .Add(sourceID_)
        .Add(entry.capsuleID)
        .Add(orvcore::PathToUTF16(package.filename()))
        .Add(static_cast<std::uint64_t>(modified.time_since_epoch().count()))
        // Copies keep their time, and a copy that was worked on may keep its identifier: the folder tells them apart.
        .Add(orvcore::PathToUTF8(package.parent_path()));
    orvcore::UTF8String name = orvcore::ToUTF8(mixer.GetResult().ToString());
    name += extension;
    return folder_ / orvcore::PathFromUTF8(name);
}

bool PreviewCache::Provide(PreviewKind kind, const CapsuleZip& package, const fs::path& target) const
{
    if (orvcore::IsFile(target)) {
        return true;
    }
    const fs::path half = orvcore::PrivateSibling(target);
    const orvcore::UTF8String halfName = orvcore::PathToUTF8(half);
    if (!(kind == PreviewKind::Still ? package.GetZELTThumbnailPNG(halfName)
                                     : package.GetZELTThumbnailVideo(halfName))) {
        return false;
    }
    std::error_code error;
    if (orvcore::RenameOver(half, target, error)) {
        return true;
    }
    orvcore::RemoveTree(half);
    return orvcore::IsFile(target); // another program was quicker and holds it
}

} // namespace orvcapsule::detail
