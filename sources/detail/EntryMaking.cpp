#include <sources/detail/EntryMaking.h>

#include <sources/shared/FreeElsewhere.h>

// One thread, the listing's, finds what entries are to be made of and calls Add; workers make them in
// pieces while it goes on. Entries are numbered as they are found. Their order is known only at the end (a walk sorts
// by name), so each worker puts its entry into the slot of its number and Finish reads the slots in the order it is
// given.
//
// The first entries are made by the finding thread, too: with all workers busy elsewhere a listing would otherwise show
// nothing until one is free.
//
// A slot is written by one worker and read after GrowingLoop::Finish, which orders the two. The mutex guards only the
// deque, whose elements stay where they are while it grows. An exception of a worker leaves Finish, or the destructor
// waits for the pieces that run; either way no worker is left in the listing when it goes.

namespace orvcapsule::detail {

namespace {

// Few enough that a worker soon comes to the next poll and no worker is left alone at the end.
constexpr std::size_t kEntriesAPiece = 4;

// What fills a screen, or what can be made in the time that a user does not notice: these are made as they are found,
// by this thread, too. Then it looks for all others at once, so that progress soon knows how many there are.
constexpr std::size_t kFirstEntries = 128;
constexpr std::chrono::milliseconds kFirstTime(30);

} // namespace

// Everything that entries are made with, by their number.
struct EntryMaking::Work {
    struct Slot {
        MakeEntry make;
        NotedEntry made;
    };

    Work(const std::string& sourceID, const orvcore::UTF8String& place, const std::function<bool()>& stop)
        : known(sourceID, place, stop)
    {
    }

    Slot& At(std::size_t number)
    {
        const std::lock_guard lock(mutex);
        return slots[number];
    }

    void SaveNotes(Listing& listing);

    ListingNotes known;
    std::mutex mutex; // guards the row of slots, which stay where they are
    std::deque<Slot> slots;
};

EntryMaking::EntryMaking(Listing& listing, const orvcore::UTF8String& place)
    : listing_(listing)
    , work_(std::make_unique<Work>(listing.GetSourceID(), place, [&listing] { return listing.IsCancelled(); }))
    , loop_(kEntriesAPiece, [this](std::size_t begin, std::size_t end) { MakePiece(begin, end); })
{
}

EntryMaking::~EntryMaking() = default;

void EntryMaking::Add(MakeEntry make)
{
    std::size_t count = 0;
    {
        const std::lock_guard lock(work_->mutex);
        work_->slots.push_back({std::move(make), {}});
        count = work_->slots.size();
    }
    loop_.Grow(1);
    if (count <= kFirstEntries && std::chrono::steady_clock::now() < begin_ + kFirstTime) {
        loop_.Help(2 * kEntriesAPiece);
    }
}

void EntryMaking::MakePiece(std::size_t begin, std::size_t end)
{
    for (std::size_t i = begin; i < end && !listing_.IsCancelled(); ++i) {
        Work::Slot& slot = work_->At(i);
        // The function goes with its call: what it holds (a path for each of 100,000 packages) is not kept until the
        // end.
        slot.made.entry = std::exchange(slot.make, {})(work_->known, slot.made.noted);
        // As soon as it is whole, on this worker, so that a host can show it while others are made.
        listing_.Announce(slot.made.entry);
        CountMade();
    }
}

void EntryMaking::CountMade()
{
    {
        const std::lock_guard lock(progress_);
        // How far one entry advances the line is unknown until the walk has counted them all.
        if (step_ < 0) {
            ++made_;
            return;
        }
    }
    listing_.Advance(step_);
}

void EntryMaking::SetStep(double step)
{
    {
        const std::lock_guard lock(progress_);
        step_ = step;
    }
    // Read without the lock: once step_ is set made_ is not counted any more.
    listing_.Advance(step * static_cast<double>(made_));
}

void EntryMaking::Finish(const std::vector<std::size_t>& order, Listing::Entries& results)
{
    loop_.Finish();
    work_->SaveNotes(listing_);
    if (!listing_.IsCancelled()) {
        results.reserve(results.size() + order.size());
        for (const std::size_t number : order) {
            if (const auto& entry = work_->slots[number].made.entry) {
                results.push_back(entry);
            }
        }
    }
    // The slots of a large folder take milliseconds to destroy, which the first screen would wait for.
    FreeElsewhere(std::move(work_));
}

// In the order in which they were found, and will be again: the next listing reads the file from front to back.
void EntryMaking::Work::SaveNotes(Listing& listing)
{
    std::vector<const NotedEntry*> entries;
    for (const Slot& slot : slots) {
        if (listing.IsCancelled()) {
            return;
        }
        if (slot.made.entry) {
            entries.push_back(&slot.made);
        }
    }
    known.Save(entries);
}

} // namespace orvcapsule::detail
