#pragma once

#include <manager/GraphicSourceManager.h>
#include <sources/shared/IndexSession.h>

#include <orvcore/tasks/AsyncThreadedSubExecutor.h>

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace orvcapsule::detail {

using TokenPtr = GraphicSourceManager::TokenPtr;
using SourcePtr = GraphicSourceManager::SourcePtr;

/// The host's callbacks. Searches and listings copy them when they are made: a callback that is set later gets none of
/// their results. A tag request takes its callback when it has the tags.
struct Callbacks {
    std::shared_ptr<GraphicSourceManager::EntriesFoundCallback> entriesFound;
    std::shared_ptr<GraphicSourceManager::PartialCompletionCallback> partialCompletion;
    std::shared_ptr<GraphicSourceManager::RequestCallback> localRequest;
    std::shared_ptr<GraphicSourceManager::DirectoryCallback> localDirectory;
    std::shared_ptr<GraphicSourceManager::RequestCallback> stockRequest;
    std::shared_ptr<GraphicSourceManager::StockFailureCallback> stockFailure;
    std::shared_ptr<GraphicSourceManager::TextSetCallback> databaseRequest;
    std::shared_ptr<GraphicSourceManager::TextSetCallback> databaseTagRequest;
};

/// The tokens of the newest request of each kind. Only the main thread looks at these fields; a task holds its token.
struct RequestTokens {
    TokenPtr graphics;
    TokenPtr defaultSet;
    TokenPtr indexSearch;
    TokenPtr similarTag;
    TokenPtr directoryChange;
    std::map<orvcore::UTF8String, TokenPtr> directories;
};

/// Aborts the token, where there is one.
void AbortToken(const TokenPtr& token);
/// Aborts the token of the request before and puts a new one in its place.
void RenewToken(TokenPtr& token);

/// What a `GraphicSourceManager` owns. Its requests are functions over this; they run one at a time, on a serial
/// executor.
class ManagerState {
public:
    /// Opens the search index at `databasePath` unless that is empty.
    ManagerState(GraphicSourceManager& owner, const orvcore::UTF16String& databasePath);

    void AddSource(const SourcePtr& source);
    /// Does nothing where the list does not hold `old`.
    void ReplaceSource(const SourcePtr& old, const SourcePtr& successor);
    /// Takes each source off the list and ends it, then closes the index.
    void EndSources();
    /// As `FindGraphicSource`.
    SourcePtr FindSource(const std::string& sourceID) const;
    std::vector<SourcePtr> CopySources() const;
    std::vector<std::shared_ptr<ILocalGraphicSource>> CopyLocalSources() const;

    void SetSort(std::shared_ptr<GraphicSourceManager::SortFunction> sort);
    /// Puts the entries into the order of the sort function; leaves them as they are when it throws.
    void Sort(GraphicSourceManager::EntryList& entries) const;

    Callbacks CopyCallbacks() const;
    template <class T>
    void SetCallback(std::shared_ptr<T> Callbacks::*field, const std::shared_ptr<T>& callback)
    {
        std::shared_ptr<T> exchanged = callback;
        const std::lock_guard lock(callbackLock_);
        (callbacks_.*field).swap(exchanged); // the old one goes after the lock: what it holds may call the manager
    }

    /// Whether the manager is in index mode, and not shut down. Any thread.
    bool HasIndex() const
    {
        return hasIndex_;
    }
    /// What tasks change the index through.
    const IndexSession& Index() const
    {
        return index_;
    }

    /// Queues a task that keeps the manager alive. When it cannot be queued the token is aborted: no task will ever end
    /// the request's progress.
    /// @throws std::bad_weak_ptr  when the manager is not owned by a shared pointer.
    void Post(const TokenPtr& token, std::function<void()> task);
    /// What keeps this state alive beyond the tasks.
    /// @throws std::bad_weak_ptr  as Post does.
    std::shared_ptr<GraphicSourceManager> ShareOwner() const;
    /// Starts no further task.
    void StopTasks();

    // For the main thread alone.
    RequestTokens tokens;

private:
    GraphicSourceManager& owner_;
    mutable std::recursive_mutex lock_; // guards the sources and the sort function
    std::vector<SourcePtr> sources_;
    const std::shared_ptr<orvcore::AsyncThreadedSubExecutor> executor_;
    mutable std::mutex callbackLock_;
    Callbacks callbacks_;
    orvcore::UTF16String databasePath_; // the main thread's; the tasks look at hasIndex_
    // Read by tasks, written by Shutdown on the main thread.
    std::atomic<bool> hasIndex_;
    // Taken once: a manager that is replaced must not get the session of its successor.
    const IndexSession index_;
    std::shared_ptr<GraphicSourceManager::SortFunction> sort_;
};

} // namespace orvcapsule::detail
