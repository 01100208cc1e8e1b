#include <sources/detail/LocalEntryMaker.h>

#include <orvcore/files/Files.h>
#include <sources/PreviewLimit.h>
#include <sources/detail/EntryFields.h>
#include <sources/detail/ListedDefinition.h>
#include <validation/TemplateReading.h>
#include <validation/shared/CannotOpen.h>

#include <boost/smart_ptr/make_shared.hpp>

namespace orvcapsule::detail {

// The steps for one package: ask the system for the file's facts (where it refuses them, opening the package below
// tells why and becomes the entry's refusal), take the definition's fields from the notes or else from the package,
// then look for each preview in the working folder and extract it only when it is not there. The package is opened at
// the first step that needs its content.
//
// `state` collects what the next listing may rely on. `isKnown` stays true only where everything was read or is known
// to be missing; has...: false means that the package has no such preview, so it is not looked for again until it
// changes.

namespace fs = std::filesystem;

LocalEntryMaker::LocalEntryMaker(const std::string& sourceID, std::function<bool()> stop)
    : sourceID_(sourceID)
    , previews_(sourceID)
    , extractsPreviews_(GetPreviewsInListings())
    , stop_(std::move(stop))
{
}

boost::shared_ptr<CapsuleEntry> LocalEntryMaker::Make(const fs::path& package, const std::string& directoryKey,
                                                      const ListingNotes& known, NotedFile& state) const
{
    std::error_code error;
    // Taken before the package is read. If another program replaces it in between, the facts are older than the content
    // and will not be those of the next listing, which then reads the package again.
    const orvcore::FileInfo facts = orvcore::InspectTarget(package, error);
    if (!error && facts.kind != orvcore::FileKind::File) {
        return nullptr;
    }
    state.facts = facts;
    auto entry = boost::make_shared<CapsuleEntry>();
    entry->sourcePath.reserve(directoryKey.empty() ? 1 : 2);
    entry->sourcePath.push_back(sourceID_);
    if (!directoryKey.empty()) {
        entry->sourcePath.push_back(directoryKey);
    }
    entry->path = orvcore::PathToUTF8(package);
    entry->name = orvcore::ToUTF16(orvcore::PathToUTF8(package.stem()));
    if (!error) {
        entry->fileSize = facts.size;
        entry->modified = ToPosixTime(facts.modified);
    }
    try {
        ListedPackage one(package);
        FillFromContent(*entry, one, known, state);
    } catch (const fs::filesystem_error& noRoom) { // for the private copy of a package with a long path
        state.isKnown = false;
        entry->refusal = std::make_shared<const Finding>(CannotOpen(noRoom.code()));
    }
    state.isKnown = state.isKnown && !error; // without its facts the next listing cannot tell whether it has changed
    return entry;
}

void LocalEntryMaker::FillFromContent(CapsuleEntry& entry, ListedPackage& package, const ListingNotes& known,
                                      NotedFile& state) const
{
    bool hasDefinition = known.Recall(entry, state);
    if (stop_()) {
        return;
    }
    if (!hasDefinition) {
        hasDefinition = FillFromDefinition(entry, package.Content(), stop_);
        state.hasStill = hasDefinition;
        // A package whose definition cannot be read keeps its film, which needs no definition to be shown.
        state.hasVideo = true; // until it is looked for
        state.isKnown = hasDefinition && entry.refusal == nullptr;
    }
    if (!extractsPreviews_) {
        return;
    }
    const Thumbnail still = Preview(PreviewKind::Still, entry, package, state);
    const Thumbnail video = Preview(PreviewKind::Video, entry, package, state);
    entry.thumbnailPath = still.path;
    entry.videoPreviewPath = video.path;
    entry.previewFailure = still.failure ? still.failure : video.failure;
}

Thumbnail LocalEntryMaker::Preview(PreviewKind kind, const CapsuleEntry& entry, ListedPackage& package,
                                   NotedFile& state) const
{
    using Outcome = PreviewCache::Outcome;
    bool& has = kind == PreviewKind::Still ? state.hasStill : state.hasVideo;
    if (!has || stop_()) {
        return {};
    }
    const fs::path target = previews_.PathOf(kind, entry.capsuleID, package, state.facts.modified);
    const auto [outcome, failure] = orvcore::IsFile(target)
                                        ? PreviewCache::Extraction()
                                        : previews_.Extract(kind, package, state.facts.size, target);
    has = outcome != Outcome::None;
    if (outcome == Outcome::Failed) {
        state.isKnown = false;
        return {{}, std::make_shared<const Finding>(DescribeFailure(failure))};
    }
    return {outcome == Outcome::There && !stop_() ? orvcore::PathToUTF8(target) : orvcore::UTF8String(), nullptr};
}

Thumbnail LocalEntryMaker::GetThumbnail(const CapsuleEntry& entry) const
{
    ListedPackage package(orvcore::PathFromUTF8(entry.path));
    NotedFile state;
    state.hasStill = true; // until it is looked for
    // A package that is gone may still have its preview; one that was replaced needs a new one.
    std::error_code ignored;
    const orvcore::FileInfo facts = orvcore::InspectTarget(package.Path(), ignored);
    state.facts.size = facts.size;
    state.facts.modified = facts.kind == orvcore::FileKind::File ? facts.modified : ToFileTime(entry.modified);
    try {
        return Preview(PreviewKind::Still, entry, package, state);
    } catch (const fs::filesystem_error& error) {
        return {{}, std::make_shared<const Finding>(CannotOpen(error.code()))};
    }
}

} // namespace orvcapsule::detail
