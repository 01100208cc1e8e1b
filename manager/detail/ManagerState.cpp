#include <manager/detail/ManagerState.h>

#include <manager/detail/TaskEnd.h>
#include <sources/SearchIndex.h>

#include <boost/make_shared.hpp>

#include <algorithm>

namespace orvcapsule::detail {

namespace {

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
        const SourcePtr source = sources_.front();
        sources_.erase(sources_.begin());
        source->Terminate();
    }
    if (!databasePath_.empty()) {
        TerminateRapidFindDB();
        databasePath_.clear();
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
    executor_->Stop();
    executor_->Release();
}

} // namespace orvcapsule::detail
