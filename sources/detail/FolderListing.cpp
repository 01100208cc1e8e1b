#include <sources/detail/FolderListing.h>

#include <orvcore/files/Paths.h>
#include <orvcore/host/Localiser.h>
#include <sources/shared/FreeElsewhere.h>

namespace orvcapsule::detail {

namespace {

struct PackageName {
    const FolderOfPackages* folder;
    std::size_t number;
};

std::vector<PackageName> InOrder(const FoundPackages& found)
{
    std::vector<PackageName> names;
    names.reserve(found.packages);
    for (const FolderOfPackages& folder : found.folders) {
        for (std::size_t i = 0; i < folder.packages.size(); ++i) {
            names.push_back({&folder, i});
        }
    }
    return names;
}

} // namespace

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
    auto found = std::make_unique<const FoundPackages>(FindPackages(folder, depth, [this] { return IsCancelled(); }));
    const std::vector<PackageName> names = InOrder(*found);
    const std::size_t counted = depth == Depth::OneFolder ? found->files : found->packages;
    const double step = counted == 0 ? 0.0 : weight / static_cast<double>(counted);
    Advance(weight - step * static_cast<double>(found->packages)); // all that takes no time
    const auto make = [&](std::size_t number, const ListingNotes& known, NotedFile& noted) {
        const FolderOfPackages& in = *names[number].folder;
        return maker_.Make(in.folder / in.packages[names[number].number], directoryKey, known, noted);
    };
    MakeEntries(orvcore::PathToUTF8(folder), names.size(), step, make, results);
    if (!IsCancelled()) {
        failures_.insert(failures_.end(), found->failures.begin(), found->failures.end());
    }
    FreeElsewhere(std::move(found));
}

} // namespace orvcapsule::detail
