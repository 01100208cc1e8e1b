#pragma once

#include <sources/detail/Listing.h>
#include <sources/detail/ListingNotes.h>
#include <sources/detail/NotedFile.h>

#include <orvcore/tasks/shared/GrowingLoop.h>

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace orvcapsule::detail {

/// Makes the entries of one place on all processors, the first ones while others are still being looked for, and
/// announces each. Used by one thread.
class EntryMaking {
public:
    /// Makes one entry on a worker, after asking `known` for what it says, and tells what is to be noted. Empty: there
    /// is none.
    using MakeEntry = std::function<boost::shared_ptr<CapsuleEntry>(const ListingNotes& known, NotedFile& noted)>;

    /// @param place what tells its notes from those of the source's other places
    EntryMaking(Listing& listing, const orvcore::UTF8String& place);
    EntryMaking(const EntryMaking&) = delete;
    EntryMaking& operator=(const EntryMaking&) = delete;
    ~EntryMaking();

    /// One more entry is to be made; the first one has number 0. The first entries of a place are made before many
    /// more are looked for: they are what a user waits for.
    void Add(MakeEntry make);
    /// How far each entry advances the listing, those that were made before included.
    void SetStep(double step);
    /// Makes the rest, appends all entries in the order of these numbers, and notes them for the next listing. Nothing
    /// is appended when it throws or was cancelled.
    void Finish(const std::vector<std::size_t>& order, Listing::Entries& results);

private:
    struct Work;
    void MakePiece(std::size_t begin, std::size_t end);
    void CountMade();

    Listing& listing_;
    const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
    std::unique_ptr<Work> work_;
    std::mutex progress_;       // guards the two below
    std::size_t made_ = 0;      // and not counted for progress
    double step_ = -1.0;        // unknown
    orvcore::GrowingLoop loop_; // ends before what it works on
};

} // namespace orvcapsule::detail
