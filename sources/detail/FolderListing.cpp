#include <sources/detail/FolderListing.h>

#include <orvcore/host/Localiser.h>
#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/ParallelFor.h>
#include <sources/shared/FreeElsewhere.h>

#include <algorithm>

namespace orvcapsule::detail {

namespace {

// Few enough that a worker soon comes to the next poll and no worker is left alone at the end.
constexpr std::size_t kPackagesAPiece = 4;

orvcore::UTF8String TitleFor(const orvcore::UTF8String& directory)
{
    return orvcore::Localiser::Resolve("$$$/LocalGraphicsSource/LoadingDirectoryWithSpace=Loading directory @0",
                                       {directory});
}

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
    : sourceID_(sourceID)
    , cancel_(std::move(cancel))
    , maker_(sourceID, [this] { return IsCancelled(); })
{
}

FolderListing::~FolderListing()
{
    if (item_) {
        cancel_->progressCategory->RemoveItem(item_);
    }
}

void FolderListing::BeginProgress(const orvcore::UTF8String& directory, double weight)
{
    if (cancel_ && cancel_->progressCategory) {
        item_ = cancel_->progressCategory->AddItem(TitleFor(directory), 0.0, weight);
    }
}

void FolderListing::ShowDirectory(const orvcore::UTF8String& directory)
{
    if (item_) {
        item_->SetTitle(TitleFor(directory));
    }
}

void FolderListing::Advance(double step)
{
    if (item_) {
        item_->Advance(step);
    }
    if (cancel_ && cancel_->progressItem) {
        cancel_->progressItem->Advance(step);
    }
}

bool FolderListing::IsCancelled()
{
    if (!cancelled_ && ((cancel_ && cancel_->GetAbort()) || orvcore::IsTerminating())) {
        cancelled_ = true;
    }
    return cancelled_;
}

// Everything that one folder's listing needs by the number of its packages.
struct FolderListing::Work {
    Work(const std::string& sourceID, const std::filesystem::path& folder, Depth depth,
         const std::function<bool()>& stop)
        : found(FindPackages(folder, depth, stop))
        , known(sourceID, folder, stop)
        , states(found.packages)
        , entries(found.packages)
    {
    }

    const FoundPackages found;
    const ListingNotes known;
    std::vector<NotedFile> states;
    Entries entries;
};

void FolderListing::List(const std::filesystem::path& folder, Depth depth, const std::string& directoryKey,
                         double weight, Entries& results)
{
    auto work = std::make_unique<Work>(sourceID_, folder, depth, [this] { return IsCancelled(); });
    const FoundPackages& found = work->found;
    const std::size_t counted = depth == Depth::OneFolder ? found.files : found.packages;
    const double step = counted == 0 ? 0.0 : weight / static_cast<double>(counted);
    Advance(weight - step * static_cast<double>(found.packages)); // all that takes no time
    MakeEntries(*work, directoryKey, step);
    if (!IsCancelled()) {
        work->known.Save(work->entries, work->states);
    }
    if (!cancelled_) {
        results.reserve(results.size() + found.packages);
        std::copy_if(std::make_move_iterator(work->entries.begin()), std::make_move_iterator(work->entries.end()),
                     std::back_inserter(results), [](const auto& entry) { return entry != nullptr; });
        failures_.insert(failures_.end(), found.failures.begin(), found.failures.end());
    }
    FreeElsewhere(std::move(work));
}

void FolderListing::MakeEntries(Work& work, const std::string& directoryKey, double step)
{
    const std::vector<PackageName> names = InOrder(work.found);
    orvcore::ParallelFor(names.size(), kPackagesAPiece, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end && !IsCancelled(); ++i) {
            const FolderOfPackages& folder = *names[i].folder;
            const std::filesystem::path package = folder.folder / folder.packages[names[i].number];
            work.entries[i] = maker_.Make(package, directoryKey, work.known, work.states[i]);
            Advance(step);
        }
    });
}

} // namespace orvcapsule::detail
