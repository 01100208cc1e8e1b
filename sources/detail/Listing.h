#pragma once

#include <sources/CapsuleEntry.h>
#include <sources/CheckCancel.h>

#include <boost/shared_ptr.hpp>

#include <atomic>
#include <string>
#include <vector>

namespace orvcapsule::detail {

/// One listing under one token: polls it, shows its progress and announces entries. It counts as cancelled, too, when
/// the process's executors end. Used by one thread, except where said otherwise.
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

    /// Tells those who follow the request of an entry that is whole. Any thread.
    void Announce(const boost::shared_ptr<CapsuleEntry>& entry);

    /// Polls the token, on any thread; stays true once it was.
    bool IsCancelled();

    const std::string& GetSourceID() const noexcept
    {
        return sourceID_;
    }

private:
    const std::string sourceID_;
    boost::shared_ptr<CheckCancel> cancel_;
    std::shared_ptr<orvappsupport::ProgressItem> item_;
    std::atomic<bool> cancelled_ = false;
};

} // namespace orvcapsule::detail
