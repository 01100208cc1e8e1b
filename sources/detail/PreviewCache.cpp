#include <sources/detail/PreviewCache.h>

#include <orvcore/files/AtomicFile.h>
#include <orvcore/files/Files.h>
#include <orvcore/files/shared/RenameOver.h>
#include <orvcore/text/shared/HashMixer.h>
#include <package/Workspace.h>
#include <sources/PreviewLimit.h>

#include <algorithm>

namespace orvcapsule::detail {

// Several workers and several hosts extract into one folder without locks. The file's name is a hash of the package's
// state, so two that make the same file make the same content; each writes a private file and renames it, and the one
// that comes second throws its own away. Nothing is ever written over.

namespace fs = std::filesystem;

namespace {

std::u8string_view ExtensionOf(PreviewKind kind)
{
    return kind == PreviewKind::Still ? u8".png" : u8".mp4";
}

// The largest that is not too large. Of all languages: which of them is asked for is the package's to know.
std::uint64_t LargestPreview(const CapsuleZip& zip, std::u8string_view extension)
{
    std::uint64_t largest = 0;
    for (const orvstorage::ZipEntry& entry : zip.GetArchive().GetEntries()) {
        if (entry.name.starts_with(u8"thumb") && entry.name.ends_with(extension) && entry.size <= kMaxPreviewBytes) {
            largest = std::max(largest, entry.size);
        }
    }
    return largest;
}

} // namespace

PreviewCache::PreviewCache(std::string sourceID)
    : sourceID_(std::move(sourceID))
    , folder_(orvcore::PathFromUTF8(GetTempLocalDirectory()))
{
    std::error_code ignored; // what cannot be written later is left out then
    orvcore::EnsureDirectory(folder_, ignored);
}

fs::path PreviewCache::PathOf(PreviewKind kind, const orvcore::UTF16String& capsuleID, const ListedPackage& package,
                              orvcore::FileTime modified) const
{
    const std::u8string_view extension = ExtensionOf(kind);
    orvcore::HashMixer mixer;
    // A change of what is mixed here leaves the files of earlier releases unused until the working folder is deleted.
    mixer.AddBytes("tmpzlt", 6)
        .Add(extension)
        .Add(sourceID_)
        .Add(capsuleID)
        .Add(package.FileName())
        .Add(static_cast<std::uint64_t>(modified.time_since_epoch().count()))
        // Copies keep their time, and a copy that was worked on may keep its identifier: the folder tells them apart.
        .Add(package.Folder());
    return folder_.empty() ? fs::path() : folder_ / mixer.GetResult().ToString().append(orvcore::AsNarrow(extension));
}

PreviewCache::Extraction PreviewCache::Extract(PreviewKind kind, ListedPackage& package, std::uint64_t packageSize,
                                               const fs::path& target) const
{
    using orvstorage::ZipError;
    constexpr auto kAction = orvstorage::ZipAction::Unpack;
    const CapsuleZip& zip = package.Content();
    const orvcore::UTF8String name = u8"thumb" + orvcore::UTF8String(ExtensionOf(kind));
    // As the archive's directory tells; unpacking checks it against the data.
    const std::uint64_t size = LargestPreview(zip, ExtensionOf(kind));
    if (target.empty() && size != 0) {
        return {Outcome::Failed, {ZipError::WriteFailed, kAction, package.Path(), name, "there is no working folder"}};
    }
    if (target.empty() || (size / kLikelyRatio > packageSize && !TakeFromAllowance(size))) {
        return {Outcome::None};
    }
    const fs::path half = orvcore::PrivateSibling(target);
    const orvcore::UTF8String halfName = orvcore::PathToUTF8(half);
    if (!(kind == PreviewKind::Still ? zip.GetZELTThumbnailPNG(halfName) : zip.GetZELTThumbnailVideo(halfName))) {
        orvstorage::ZipFailure failure = zip.GetLastFailure();
        const bool isMissing = failure.error == ZipError::EntryMissing;
        return isMissing ? Extraction{Outcome::None} : Extraction{Outcome::Failed, std::move(failure)};
    }
    // The name tells the content, so another worker's file serves. To replace one that is being read would disturb its
    // readers where the system does that in two steps.
    std::error_code error;
    if (!orvcore::IsFile(target) && orvcore::RenameOver(half, target, error)) {
        return {Outcome::There};
    }
    std::error_code ignored;
    orvcore::RemoveTree(half, ignored);
    if (orvcore::IsFile(target)) { // another program may be quicker and hold it
        return {Outcome::There};
    }
    return {Outcome::Failed, orvstorage::WriteFailure(error, kAction, package.Path(), name)};
}

bool PreviewCache::TakeFromAllowance(std::uint64_t bytes) const
{
    std::uint64_t left = allowance_;
    // Workers take from it at the same time; `left` is read again whenever another one was quicker.
    while (left >= bytes) {
        if (allowance_.compare_exchange_weak(left, left - bytes)) {
            return true;
        }
    }
    return false;
}

} // namespace orvcapsule::detail
