#pragma once

#include <manager/detail/IndexEntries.h>
#include <manager/detail/ManagerState.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_set>

namespace orvcapsule::detail {

/// The entries that sources announce while they list and that no batch has taken yet.
class FoundEntries {
public:
    /// Takes an entry, unless this source has announced it before. Any thread.
    void Add(const EntryList::value_type& entry);
    /// Waits for a batch that is large enough, or some time. False at the end.
    bool Await();
    /// Takes what there is; the next batch is to be larger.
    EntryList TakeBatch();
    /// Forgets what the source has announced.
    void EndSource();
    /// Ends Await.
    void End();

private:
    std::mutex mutex_; // guards all
    std::condition_variable changed_;
    std::unordered_set<EntryList::value_type> announced_;
    EntryList pending_;
    std::size_t enough_ = 16; // a screen fills at once
    bool ended_ = false;
};

/// Hands found entries to the host for a scope, the listing of all sources. It does so on a thread of its own: all
/// those that find entries may be held up by slow packages.
class FoundDelivery {
public:
    using Callback = GraphicSourceManager::EntriesFoundCallback;

    /// @param found empty when nobody wants them
    FoundDelivery(std::shared_ptr<FoundEntries> found, const TokenPtr& token, std::shared_ptr<Callback> callback);
    FoundDelivery(const FoundDelivery&) = delete;
    FoundDelivery& operator=(const FoundDelivery&) = delete;
    /// Ends the thread; what was not delivered is dropped.
    ~FoundDelivery();

    /// Delivers those of a source's entries that were not delivered yet, announced or not.
    void EndSource(const EntryList& entries);

private:
    void DeliverPending();

    const std::shared_ptr<FoundEntries> found_;
    const TokenPtr token_;
    const std::shared_ptr<Callback> callback_;
    std::mutex order_; // held from taking a batch until it is queued
    std::thread thread_;
};

} // namespace orvcapsule::detail
