#include <manager/detail/FoundEntries.h>

#include <manager/detail/Delivery.h>

#include <orvcore/tasks/Executor.h>

#include <algorithm>
#include <chrono>
#include <system_error>

namespace orvcapsule::detail {

void FoundEntries::Add(const EntryList::value_type& entry)
{
    {
        const std::lock_guard lock(mutex_);
        if (!entry || !announced_.insert(entry).second) {
            return;
        }
        pending_.push_back(entry);
        if (pending_.size() != enough_) {
            return;
        }
    }
    changed_.notify_one();
}

bool FoundEntries::Await()
{
    constexpr std::chrono::milliseconds kInterval(25);
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, kInterval, [this] { return ended_ || pending_.size() >= enough_; });
    return !ended_;
}

EntryList FoundEntries::TakeBatch()
{
    constexpr std::size_t kLargestBatch = 1024;
    const std::lock_guard lock(mutex_);
    enough_ = pending_.empty() ? enough_ : std::min(2 * enough_, kLargestBatch);
    return std::exchange(pending_, {});
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
    try {
        thread_ = std::thread([this] {
            orvcore::OneTimeInvocation deliver([this] {
                while (found_->Await()) {
                    DeliverPending();
                }
            });
            orvcore::RunTask(deliver);
        });
    } catch (const std::system_error&) { // no thread to be had: a source's entries come when it has ended
    }
}

FoundDelivery::~FoundDelivery()
{
    if (!found_) {
        return;
    }
    found_->End();
    if (thread_.joinable()) {
        thread_.join();
    }
    found_->EndSource();
    FreeElsewhere(found_->TakeBatch());
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
