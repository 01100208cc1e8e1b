#include <sources/detail/Listing.h>

#include <orvcore/tasks/Executor.h>

// Two lines of progress may move: the request's own (the token's item), which all sources advance by their weights, and
// one of this listing, where the source opened it. Workers advance both.
//
// The token outlives the listing, because the caller holds it; its members are only read from the time it is shared.

namespace orvcapsule::detail {

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
    // Kept once it is true: the parts of one listing must agree on whether it was cancelled, or a half list would be
    // handed out.
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

} // namespace orvcapsule::detail
