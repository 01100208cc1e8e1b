#include <sources/detail/FolderListing.h>

#include <orvcore/files/Paths.h>
#include <orvcore/host/Localiser.h>
#include <sources/detail/EntryMaking.h>
#include <sources/shared/FreeElsewhere.h>

namespace orvcapsule::detail {

FolderListing::FolderListing(const std::string& sourceID, boost::shared_ptr<CheckCancel> cancel)
    : Listing(sourceID, std::move(cancel))
    , maker_(sourceID, [this] { return IsCancelled(); })
{
}

orvcore::UTF8String FolderListing::TitleFor(const orvcore::UTF8String& directory)
{
    return orvcore::Localiser::Resolve("$$$/LocalGraphicsSource/LoadingDirectoryWithSpace=Loading directory @0",
                                       {directory});
}

void FolderListing::List(const std::filesystem::path& folder, Depth depth, const std::string& directoryKey,
                         double weight, Entries& results)
{
    EntryMaking making(*this, orvcore::PathToUTF8(folder));
    // Called for each of maybe 100,000 packages: the folder's path is shared and only the name is kept until a worker
    // joins them.
    const auto onPackage = [&](const FolderPath& in, FileName package) {
        making.Add([this, in, &directoryKey, name = std::move(package)](const ListingNotes& known, NotedFile& noted) {
            return maker_.Make(*in / name, directoryKey, known, noted);
        });
    };
    // On the heap, to be handed to a worker for freeing at the end.
    auto found =
        std::make_unique<const FoundPackages>(FindPackages(folder, depth, onPackage, [this] { return IsCancelled(); }));
    const std::size_t counted = depth == Depth::OneFolder ? found->files : found->packages.size();
    const double step = counted == 0 ? 0.0 : weight / static_cast<double>(counted);
    Advance(weight - step * static_cast<double>(found->packages.size())); // all that takes no time
    making.SetStep(step);
    making.Finish(found->packages, results);
    // A walk that was stopped has not seen all folders, so its failures say nothing about the others.
    if (!IsCancelled()) {
        failures_.insert(failures_.end(), found->failures.begin(), found->failures.end());
    }
    FreeElsewhere(std::move(found));
}

} // namespace orvcapsule::detail
