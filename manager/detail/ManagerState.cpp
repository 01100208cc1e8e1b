#include <manager/detail/ManagerState.h>

#include <manager/detail/TaskEnd.h>
#include <sources/SearchIndex.h>

#include <boost/make_shared.hpp>

#include <algorithm>

// What lives how long. The host owns the manager, the manager owns this state, and each queued task owns the manager:
// so the state outlives its tasks without any task being waited for, and the last reference may go on a worker. A host
// that drops its own reference without Shutdown therefore gets callbacks for some time yet.
//
// Locks. `lock_` guards the list of sources and the sort function; `callbackLock_` the callbacks. Neither is held while
// a source or a host's function runs, except for a source's Terminate (see EndSources), so what those call in turn
// cannot wait for this thread. The tokens have no lock: only the main thread looks at the fields, and each task holds
// its own.

namespace orvcapsule::detail {

namespace {

// The session is taken after the index was opened: it is the one whose rows this manager's tasks may change.
IndexSession OpenIndex(const orvcore::UTF16String& databasePath)
{
    if (!databasePath.empty()) {
        InitializeRapidFindDB(databasePath);
    }
    return {};
}

bool NameIsLess(const GraphicSourceManager::EntryPtr& left, const GraphicSourceManager::EntryPtr& right)
{
    return *left < *right;
}

} // namespace

void AbortToken(const TokenPtr& token)
{
    if (token) {
        token->Abort();
    }
}

void RenewToken(TokenPtr& token)
{
    AbortToken(token);
    token = boost::make_shared<CheckCancel>();
}

ManagerState::ManagerState(GraphicSourceManager& owner, const orvcore::UTF16String& databasePath)
    : owner_(owner)
    // One task at a time: a search sees the index that the listing before it has made, and two listings never fill it
    // at once. A task waits for workers of the same pool, which a parallel loop may do
    // (docs/decisions/executor-shutdown.md).
    , executor_(orvcore::CreateSubExecutor(orvcore::GetCPUBoundExecutor(), 1))
    , databasePath_(databasePath)
    , hasIndex_(!databasePath.empty())
    , index_(OpenIndex(databasePath))
    , sort_(std::make_shared<GraphicSourceManager::SortFunction>(NameIsLess))
{
}

void ManagerState::AddSource(const SourcePtr& source)
{
    const std::lock_guard lock(lock_);
    sources_.push_back(source);
}

void ManagerState::ReplaceSource(const SourcePtr& old, const SourcePtr& successor)
{
    const std::lock_guard lock(lock_);
    std::replace(sources_.begin(), sources_.end(), old, successor);
}

void ManagerState::EndSources()
{
    const std::lock_guard lock(lock_); // recursive: a source's Terminate may ask the manager on this thread
    // A source leaves the list before it is asked to end: one whose end fails every time does not keep a further call
    // from ending the others and closing the index.
    while (!sources_.empty()) {
        // Held over its end: a task that still uses it holds it as well, and the last of them destroys it.
        const SourcePtr source = sources_.front();
        sources_.erase(sources_.begin());
        source->Terminate();
    }
    if (!databasePath_.empty()) {
        TerminateRapidFindDB();
        databasePath_.clear();
        // Requests after a shutdown are those of stock mode, which the stopped executor refuses.
        hasIndex_ = false;
    }
}

SourcePtr ManagerState::FindSource(const std::string& sourceID) const
{
    for (const SourcePtr& source : CopySources()) {
        if (source->GetSourceID() == sourceID) {
            return source;
        }
    }
    return nullptr;
}

// Requests work on a copy: a source's own code, which may take long or call the manager, never runs under the lock, and
// a source that is replaced meanwhile lives until the request is done with it.
std::vector<SourcePtr> ManagerState::CopySources() const
{
    const std::lock_guard lock(lock_);
    return sources_;
}

std::vector<std::shared_ptr<ILocalGraphicSource>> ManagerState::CopyLocalSources() const
{
    std::vector<std::shared_ptr<ILocalGraphicSource>> locals;
    for (const SourcePtr& source : CopySources()) {
        if (auto local = std::dynamic_pointer_cast<ILocalGraphicSource>(source)) {
            locals.push_back(std::move(local));
        }
    }
    return locals;
}

void ManagerState::SetSort(std::shared_ptr<GraphicSourceManager::SortFunction> sort)
{
    const std::lock_guard lock(lock_);
    sort_.swap(sort); // the old one goes with the argument, after the lock
}

void ManagerState::Sort(GraphicSourceManager::EntryList& entries) const
{
    std::shared_ptr<GraphicSourceManager::SortFunction> sort;
    {
        const std::lock_guard lock(lock_);
        sort = sort_;
    }
    if (!sort || !*sort) {
        return;
    }
    // A copy, because a sort that is interrupted by an exception may leave an entry twice and lose another.
    GraphicSourceManager::EntryList sorted = entries;
    try {
        std::stable_sort(sorted.begin(), sorted.end(), *sort);
    } catch (...) {
        ReportCurrentException();
        return; // the entries are still worth having
    }
    entries.swap(sorted);
}

Callbacks ManagerState::CopyCallbacks() const
{
    const std::lock_guard lock(callbackLock_);
    return callbacks_;
}

void ManagerState::Post(const TokenPtr& token, std::function<void()> task)
{
    bool posted = false;
    try {
        // The task may use this state for as long as it exists: it owns the manager, and the manager owns the state.
        posted = executor_->Post([owner = owner_.shared_from_this(), task = std::move(task)] { task(); });
    } catch (...) {
        AbortToken(token);
        throw;
    }
    if (!posted) {
        AbortToken(token);
    }
}

std::shared_ptr<GraphicSourceManager> ManagerState::ShareOwner() const
{
    return owner_.shared_from_this();
}

void ManagerState::StopTasks()
{
    // Queued tasks are destroyed here, each with its reference to the manager. The task in progress and a stock page on
    // its way keep theirs.
    executor_->Stop();
    executor_->Release();
}

} // namespace orvcapsule::detail
