#include <manager/detail/FoundEntries.h>

#include <manager/detail/Delivery.h>

#include <orvcore/tasks/Executor.h>

#include <algorithm>
#include <chrono>
#include <system_error>

// The path of an entry: a worker of a source announces it (Add, through the token's onEntryFound), it waits in
// `pending_`, and a batch of what waits is queued for the main thread by whichever comes first: the worker whose entry
// makes the batch large enough, the thread that wakes every 25 ms, or the task when its source is listed.
//
// Locks. `mutex_` guards the lists and is held for a few instructions. FoundDelivery's `order_` is held from taking a
// batch until it is queued, so that batches reach the main thread in the order in which they were taken, and a source's
// partial completion, which the task queues after its own batch, comes after all of them. `order_` is taken first,
// always.
//
// Each entry is delivered once: an entry that was announced is kept in `announced_` until its source ends, because the
// task offers all entries of the source again for sources that announce nothing.

namespace orvcapsule::detail {

namespace {

// A screen fills at once, and a hundred thousand entries do not cost as many calls: batches grow with what came before.
std::size_t BatchAfter(std::size_t taken)
{
    constexpr std::size_t kSmallest = 16;
    constexpr std::size_t kLargest = 1024;
    return std::clamp(taken / 4, kSmallest, kLargest);
}

} // namespace

void FoundEntries::Add(const EntryList::value_type& entry)
{
    {
        const std::lock_guard lock(mutex_);
        if (!entry || !announced_.insert(entry).second) {
            return;
        }
        pending_.push_back(entry);
        if (pending_.size() < BatchAfter(taken_)) {
            return;
        }
    }
    // Outside the lock: it takes the batch, and with it the lock.
    if (onEnough_) {
        onEnough_();
    }
}

void FoundEntries::SetOnEnough(std::function<void()> onEnough)
{
    onEnough_ = std::move(onEnough);
}

EntryList FoundEntries::TakeBatch()
{
    const std::lock_guard lock(mutex_);
    taken_ += pending_.size();
    return std::exchange(pending_, {});
}

bool FoundEntries::Pause()
{
    // The header promises the first entries after 50 ms at most: two turns.
    constexpr std::chrono::milliseconds kInterval(25);
    std::unique_lock lock(mutex_);
    return !changed_.wait_for(lock, kInterval, [this] { return ended_; });
}

void FoundEntries::EndSource()
{
    std::unique_lock lock(mutex_);
    auto announced = std::exchange(announced_, {});
    lock.unlock();
    FreeElsewhere(std::move(announced));
}

void FoundEntries::End()
{
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
    }
    changed_.notify_one();
}

FoundDelivery::FoundDelivery(std::shared_ptr<FoundEntries> found, const TokenPtr& token,
                             std::shared_ptr<Callback> callback)
    : found_(std::move(found))
    , token_(token)
    , callback_(std::move(callback))
{
    if (!found_) {
        return;
    }
    found_->SetOnEnough([this] { DeliverPending(); });
    try {
        thread_ = std::thread([this] { DeliverNowAndThen(); });
    } catch (const std::system_error&) { // no thread to be had: large batches come in time
    }
}

FoundDelivery::~FoundDelivery()
{
    if (!found_) {
        return;
    }
    // In this order: the thread is joined before anything that it uses goes, and then the function that points to this
    // object is taken away. That needs no lock, because a source announces nothing after its listing has ended
    // (CheckCancel.h).
    found_->End();
    if (thread_.joinable()) {
        thread_.join();
    }
    found_->SetOnEnough({});
    found_->EndSource();
    FreeElsewhere(found_->TakeBatch());
}

// What leaves it goes to the host's handler, as from any task.
void FoundDelivery::DeliverNowAndThen()
{
    orvcore::OneTimeInvocation deliver([this] {
        while (found_->Pause()) {
            DeliverPending();
        }
    });
    orvcore::RunTask(deliver);
}

void FoundDelivery::EndSource(const EntryList& entries)
{
    if (!found_) {
        return;
    }
    std::for_each(entries.begin(), entries.end(), [this](const auto& entry) { found_->Add(entry); });
    found_->EndSource();
    DeliverPending();
}

void FoundDelivery::DeliverPending()
{
    const std::lock_guard inOrder(order_);
    EntryList batch = found_->TakeBatch();
    if (!batch.empty()) {
        Deliver(token_, callback_, [batch = std::move(batch)](Callback& call) { call(batch); });
    }
}

} // namespace orvcapsule::detail
