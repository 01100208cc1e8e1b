#pragma once

#include <manager/detail/IndexEntries.h>
#include <manager/detail/ManagerState.h>

#include <condition_variable>
#include <functional>
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
    /// What Add calls when there are enough for a batch. To be set while no source lists.
    void SetOnEnough(std::function<void()> onEnough);
    /// Takes what there is.
    EntryList TakeBatch();
    /// Waits for some time. False at the end.
    bool Pause();
    /// Forgets what the source has announced.
    void EndSource();
    /// Ends Pause.
    void End();

private:
    std::function<void()> onEnough_;
    std::mutex mutex_; // guards all below
    std::condition_variable changed_;
    // Holds the entries, too: an address that was freed and used again would pass for one that is known.
    std::unordered_set<EntryList::value_type> announced_;
    EntryList pending_;
    std::size_t taken_ = 0;
    bool ended_ = false;
};

/// Hands found entries to the host for a scope, the listing of all sources: when there are enough, or, on a thread of
/// its own, after some time, for all threads that find entries may be held up by slow packages.
class FoundDelivery {
public:
    using Callback = GraphicSourceManager::EntriesFoundCallback;

    /// @param found empty when the host has no callback for them
    FoundDelivery(std::shared_ptr<FoundEntries> found, const TokenPtr& token, std::shared_ptr<Callback> callback);
    FoundDelivery(const FoundDelivery&) = delete;
    FoundDelivery& operator=(const FoundDelivery&) = delete;
    /// Ends the thread; what was not delivered is dropped.
    ~FoundDelivery();

    /// Delivers those of a source's entries that were not delivered yet, announced or not.
    void EndSource(const EntryList& entries);

private:
    void DeliverPending();
    void DeliverNowAndThen();

    const std::shared_ptr<FoundEntries> found_;
    const TokenPtr token_;
    const std::shared_ptr<Callback> callback_;
    std::mutex order_; // held from taking a batch until it is queued
    std::thread thread_;
};

} // namespace orvcapsule::detail
