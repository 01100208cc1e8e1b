#include <manager/GraphicSourceManager.h>

#include <manager/detail/ManagerState.h>

namespace orvcapsule {

namespace {

// A host may unload this library while such a task still runs; the module is therefore kept until the process ends.
const char kAddressInside = 0; // of this library, whose code the executor's tasks are

} // namespace

GraphicSourceManager::GraphicSourceManager(const orvcore::UTF16String& databasePath)
    : state_(std::make_unique<detail::ManagerState>(*this, databasePath))
{
    orvcore::KeepModuleLoaded(&kAddressInside);
}

GraphicSourceManager::~GraphicSourceManager() = default;

// The order matters: after the tokens a running task ends at its next check, after the executor no other one starts,
// and only then do the sources end and the index closes. Nothing here waits for the running task: it holds the manager
// and the sources that it uses, and its later changes of the index have no effect.
void GraphicSourceManager::Shutdown()
{
    SetCapsuleSortFxn(nullptr);
    // The partial-completion and folder callbacks stay: hosts rely on finding them after a shutdown.
    // The others are dropped here: one may hold the host's panel, which then goes on this thread and now, while a
    // running task may keep the manager for some time.
    SetLocalRequestCallback(nullptr);
    SetStockRequestCallback(nullptr);
    SetLocalRequestEntriesFoundCallback(nullptr);
    SetStockFailureCallback(nullptr);
    // By the state itself: the public setters do nothing in stock mode.
    state_->SetCallback(&detail::Callbacks::databaseRequest, {});
    state_->SetCallback(&detail::Callbacks::databaseTagRequest, {});
    Abort();
    state_->StopTasks();
    state_->EndSources();
}

void GraphicSourceManager::AddGraphicSource(const SourcePtr& source)
{
    if (!source) {
        return;
    }
    // Added first: a source whose Initialize throws stays in the list, and Shutdown ends it.
    state_->AddSource(source);
    source->Initialize();
}

GraphicSourceManager::SourcePtr GraphicSourceManager::FindGraphicSource(const std::string& sourceID) const
{
    return state_->FindSource(sourceID);
}

void GraphicSourceManager::GetFilterList(std::vector<IGraphicSource::GraphicFilterID>& out) const
{
    for (const SourcePtr& source : state_->CopySources()) {
        IGraphicSource::GraphicFilterID filter;
        source->GetFilter(filter);
        out.push_back(std::move(filter));
    }
}

void GraphicSourceManager::SetSearchFilterType(const orvcore::UTF8String& filterType)
{
    for (const SourcePtr& source : state_->CopySources()) {
        source->SetFilterType(filterType);
    }
}

void GraphicSourceManager::SetCapsuleSortFxn(std::shared_ptr<SortFunction> sort)
{
    state_->SetSort(std::move(sort));
}

void GraphicSourceManager::SetLocalRequestCallback(const std::shared_ptr<RequestCallback>& callback)
{
    state_->SetCallback(&detail::Callbacks::localRequest, callback);
}

void GraphicSourceManager::SetStockRequestCallback(const std::shared_ptr<RequestCallback>& callback)
{
    state_->SetCallback(&detail::Callbacks::stockRequest, callback);
}

void GraphicSourceManager::SetLocalRequestEntriesFoundCallback(const std::shared_ptr<EntriesFoundCallback>& callback)
{
    state_->SetCallback(&detail::Callbacks::entriesFound, callback);
}

void GraphicSourceManager::SetStockFailureCallback(const std::shared_ptr<StockFailureCallback>& callback)
{
    state_->SetCallback(&detail::Callbacks::stockFailure, callback);
}

void GraphicSourceManager::SetLocalRequestPartialCompletionCallback(
    const std::shared_ptr<PartialCompletionCallback>& callback)
{
    state_->SetCallback(&detail::Callbacks::partialCompletion, callback);
}

void GraphicSourceManager::SetLocalDirectoryRequestCallback(const std::shared_ptr<DirectoryCallback>& callback)
{
    state_->SetCallback(&detail::Callbacks::localDirectory, callback);
}

void GraphicSourceManager::SetDatabaseRequestCallback(const std::shared_ptr<TextSetCallback>& callback)
{
    if (state_->HasIndex()) {
        state_->SetCallback(&detail::Callbacks::databaseRequest, callback);
    }
}

void GraphicSourceManager::SetDatabaseTagRequestCallback(const std::shared_ptr<TextSetCallback>& callback)
{
    if (state_->HasIndex()) {
        state_->SetCallback(&detail::Callbacks::databaseTagRequest, callback);
    }
}

void GraphicSourceManager::Abort()
{
    // The tokens stay in their places: a newer request of a kind replaces its own.
    const detail::RequestTokens& tokens = state_->tokens;
    detail::AbortToken(tokens.graphics);
    detail::AbortToken(tokens.defaultSet);
    detail::AbortToken(tokens.directoryChange);
    for (const auto& [directory, token] : tokens.directories) {
        detail::AbortToken(token);
    }
    detail::AbortToken(tokens.indexSearch);
    detail::AbortToken(tokens.similarTag);
}

} // namespace orvcapsule
