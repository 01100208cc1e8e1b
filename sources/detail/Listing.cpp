#include <sources/detail/Listing.h>

#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/ParallelFor.h>
#include <sources/shared/FreeElsewhere.h>

#include <algorithm>

namespace orvcapsule::detail {

namespace {

// Few enough that a worker soon comes to the next poll and no worker is left alone at the end.
constexpr std::size_t kEntriesAPiece = 4;

// Everything that entries are made with, by their number.
struct Work {
    Work(const std::string& sourceID, const orvcore::UTF8String& place, std::size_t count,
         const std::function<bool()>& stop)
        : known(sourceID, place, stop)
        , noted(count)
        , entries(count)
    {
    }

    const ListingNotes known;
    std::vector<NotedFile> noted;
    Listing::Entries entries;
};

} // namespace

Listing::Listing(const std::string& sourceID, boost::shared_ptr<CheckCancel> cancel)
    : sourceID_(sourceID)
    , cancel_(std::move(cancel))
{
}

Listing::~Listing()
{
    if (item_) {
        cancel_->progressCategory->RemoveItem(item_);
    }
}

void Listing::BeginProgress(const orvcore::UTF8String& title, double weight)
{
    if (cancel_ && cancel_->progressCategory) {
        item_ = cancel_->progressCategory->AddItem(title, 0.0, weight);
    }
}

void Listing::ShowTitle(const orvcore::UTF8String& title)
{
    if (item_) {
        item_->SetTitle(title);
    }
}

void Listing::Advance(double step)
{
    if (item_) {
        item_->Advance(step);
    }
    if (cancel_ && cancel_->progressItem) {
        cancel_->progressItem->Advance(step);
    }
}

bool Listing::IsCancelled()
{
    if (!cancelled_ && ((cancel_ && cancel_->GetAbort()) || orvcore::IsTerminating())) {
        cancelled_ = true;
    }
    return cancelled_;
}

void Listing::Announce(const boost::shared_ptr<CapsuleEntry>& entry)
{
    if (entry && cancel_ && cancel_->onEntryFound && !IsCancelled()) { // cancelled, the entry may not be whole
        cancel_->onEntryFound(entry);
    }
}

void Listing::MakeEntries(const orvcore::UTF8String& place, std::size_t count, double step, const MakeEntry& make,
                          Entries& results)
{
    auto work = std::make_unique<Work>(sourceID_, place, count, [this] { return IsCancelled(); });
    orvcore::ParallelFor(count, kEntriesAPiece, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end && !IsCancelled(); ++i) {
            work->entries[i] = make(i, work->known, work->noted[i]);
            Announce(work->entries[i]);
            Advance(step);
        }
    });
    if (!IsCancelled()) {
        work->known.Save(work->entries, work->noted);
    }
    if (!cancelled_) {
        results.reserve(results.size() + count);
        std::copy_if(std::make_move_iterator(work->entries.begin()), std::make_move_iterator(work->entries.end()),
                     std::back_inserter(results), [](const auto& entry) { return entry != nullptr; });
    }
    FreeElsewhere(std::move(work));
}

} // namespace orvcapsule::detail
