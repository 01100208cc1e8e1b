#include <manager/GraphicSourceManager.h>

#include <sources/SearchIndex.h>
#include <sources/shared/IndexSession.h>

#include <orvcore/tasks/AsyncThreadedSubExecutor.h>
#include <orvcore/tasks/Executor.h>

#include <boost/make_shared.hpp>

namespace orvcapsule {

namespace {

const char kAddressInside = 0; // of this library, whose code the executor's tasks are

bool NameIsLess(const GraphicSourceManager::EntryPtr& left, const GraphicSourceManager::EntryPtr& right)
{
    return *left < *right;
}

} // namespace

GraphicSourceManager::GraphicSourceManager(const orvcore::UTF16String& databasePath)
    : executor_(orvcore::CreateSubExecutor(orvcore::GetCPUBoundExecutor(), 1))
    , databasePath_(databasePath)
    , hasIndex_(!databasePath.empty())
{
    orvcore::KeepModuleLoaded(&kAddressInside);
    if (!databasePath_.empty()) {
        InitializeRapidFindDB(databasePath_);
    }
    index_ = std::make_unique<const detail::IndexSession>();
    sort_ = std::make_shared<SortFunction>(NameIsLess);
}

GraphicSourceManager::~GraphicSourceManager() = default;

void GraphicSourceManager::Shutdown()
{
    SetCapsuleSortFxn(nullptr);
    // The partial-completion and folder callbacks stay: hosts rely on finding them after a shutdown.
    SetLocalRequestCallback(nullptr);
    SetStockRequestCallback(nullptr);
    SetCallback(&Callbacks::databaseRequest, {});
    SetCallback(&Callbacks::databaseTagRequest, {});
    Abort();
    executor_->Stop();
    executor_->Release();

    const std::lock_guard lock(lock_);
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

void GraphicSourceManager::AddGraphicSource(const SourcePtr& source)
{
    if (!source) {
        return;
    }
    {
        const std::lock_guard lock(lock_);
        sources_.push_back(source);
    }
    source->Initialize();
}

GraphicSourceManager::SourcePtr GraphicSourceManager::FindGraphicSource(const std::string& sourceID) const
{
    for (const SourcePtr& source : CopySources()) {
        if (source->GetSourceID() == sourceID) {
            return source;
        }
    }
    return nullptr;
}

void GraphicSourceManager::GetFilterList(std::vector<IGraphicSource::GraphicFilterID>& out) const
{
    for (const SourcePtr& source : CopySources()) {
        IGraphicSource::GraphicFilterID filter;
        source->GetFilter(filter);
        out.push_back(std::move(filter));
    }
}

void GraphicSourceManager::SetSearchFilterType(const orvcore::UTF8String& filterType)
{
    for (const SourcePtr& source : CopySources()) {
        source->SetFilterType(filterType);
    }
}

void GraphicSourceManager::SetCapsuleSortFxn(std::shared_ptr<SortFunction> sort)
{
    const std::lock_guard lock(lock_);
    sort_.swap(sort); // the old one goes with the argument, after the lock
}

template <class T>
void GraphicSourceManager::SetCallback(std::shared_ptr<T> Callbacks::*field, const std::shared_ptr<T>& callback)
{
    std::shared_ptr<T> exchanged = callback;
    const std::lock_guard lock(callbackLock_);
    (callbacks_.*field).swap(exchanged); // the old one goes after the lock: what it holds may call the manager
}

void GraphicSourceManager::SetLocalRequestCallback(const std::shared_ptr<RequestCallback>& callback)
{
    SetCallback(&Callbacks::localRequest, callback);
}

void GraphicSourceManager::SetStockRequestCallback(const std::shared_ptr<RequestCallback>& callback)
{
    SetCallback(&Callbacks::stockRequest, callback);
}

void GraphicSourceManager::SetLocalRequestPartialCompletionCallback(
    const std::shared_ptr<PartialCompletionCallback>& callback)
{
    SetCallback(&Callbacks::partialCompletion, callback);
}

void GraphicSourceManager::SetLocalDirectoryRequestCallback(const std::shared_ptr<DirectoryCallback>& callback)
{
    SetCallback(&Callbacks::localDirectory, callback);
}

void GraphicSourceManager::SetDatabaseRequestCallback(const std::shared_ptr<TextSetCallback>& callback)
{
    if (HasIndex()) {
        SetCallback(&Callbacks::databaseRequest, callback);
    }
}

void GraphicSourceManager::SetDatabaseTagRequestCallback(const std::shared_ptr<TextSetCallback>& callback)
{
    if (HasIndex()) {
        SetCallback(&Callbacks::databaseTagRequest, callback);
    }
}

void GraphicSourceManager::CancelGraphicRequests()
{
    for (TokenPtr* token : {&graphicsToken_, &indexSearchToken_}) {
        AbortToken(*token);
        token->reset();
    }
}

void GraphicSourceManager::Abort()
{
    AbortToken(graphicsToken_);
    AbortToken(defaultSetToken_);
    AbortToken(directoryChangeToken_);
    for (const auto& [directory, token] : directoryTokens_) {
        AbortToken(token);
    }
    AbortToken(indexSearchToken_);
    AbortToken(similarTagToken_);
}

std::vector<GraphicSourceManager::SourcePtr> GraphicSourceManager::CopySources() const
{
    const std::lock_guard lock(lock_);
    return sources_;
}

std::vector<std::shared_ptr<ILocalGraphicSource>> GraphicSourceManager::CopyLocalSources() const
{
    std::vector<std::shared_ptr<ILocalGraphicSource>> locals;
    for (const SourcePtr& source : CopySources()) {
        if (auto local = std::dynamic_pointer_cast<ILocalGraphicSource>(source)) {
            locals.push_back(std::move(local));
        }
    }
    return locals;
}

bool GraphicSourceManager::HasIndex() const
{
    return hasIndex_;
}

GraphicSourceManager::Callbacks GraphicSourceManager::CopyCallbacks() const
{
    const std::lock_guard lock(callbackLock_);
    return callbacks_;
}

void GraphicSourceManager::Post(const TokenPtr& token, std::function<void(GraphicSourceManager&)> task)
{
    bool posted = false;
    try {
        posted = executor_->Post([self = shared_from_this(), task = std::move(task)] { task(*self); });
    } catch (...) {
        AbortToken(token); // nothing will ever end its progress
        throw;
    }
    if (!posted) {
        AbortToken(token);
    }
}

void GraphicSourceManager::AbortToken(const TokenPtr& token)
{
    if (token) {
        token->Abort();
    }
}

void GraphicSourceManager::Renew(TokenPtr& field)
{
    AbortToken(field);
    field = boost::make_shared<CheckCancel>();
}

} // namespace orvcapsule
