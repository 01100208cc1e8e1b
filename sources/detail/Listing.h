#pragma once

#include <sources/CheckCancel.h>
#include <sources/detail/ListingNotes.h>
#include <sources/detail/NotedFile.h>

#include <boost/shared_ptr.hpp>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

namespace orvcapsule::detail {

/// One listing under one token: polls it, shows its progress and has entries made on all processors. It counts as
/// cancelled, too, when the process's executors end. Used by one thread, except where said otherwise.
class Listing {
public:
    using Entries = std::vector<boost::shared_ptr<CapsuleEntry>>;

    Listing(const std::string& sourceID, boost::shared_ptr<CheckCancel> cancel);
    Listing(const Listing&) = delete;
    Listing& operator=(const Listing&) = delete;
    /// Ends the listing's own line of progress.
    ~Listing();

    /// Gives the listing a line of its own in the token's progress category, if it has one.
    void BeginProgress(const orvcore::UTF8String& title, double weight);
    void ShowTitle(const orvcore::UTF8String& title);
    /// Advances the listing's line, and that of the whole request. Any thread.
    void Advance(double step);

    /// Polls the token, on any thread; stays true once it was.
    bool IsCancelled();

protected:
    /// Makes one entry on a worker, after asking `known` for what it says, and tells what is to be noted. Empty: there
    /// is none.
    using MakeEntry =
        std::function<boost::shared_ptr<CapsuleEntry>(std::size_t number, const ListingNotes& known, NotedFile& noted)>;

    /// Appends entries 0 to `count` in order, advances by `step` after each and notes them for the next listing of
    /// `place`. Nothing is appended when it throws or was cancelled.
    void MakeEntries(const orvcore::UTF8String& place, std::size_t count, double step, const MakeEntry& make,
                     Entries& results);

    const std::string& GetSourceID() const noexcept
    {
        return sourceID_;
    }

private:
    void Announce(const boost::shared_ptr<CapsuleEntry>& entry);

    const std::string sourceID_;
    boost::shared_ptr<CheckCancel> cancel_;
    std::shared_ptr<orvappsupport::ProgressItem> item_;
    std::atomic<bool> cancelled_ = false;
};

} // namespace orvcapsule::detail
