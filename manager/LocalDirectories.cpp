#include <manager/detail/Delivery.h>
#include <manager/detail/IndexEntries.h>
#include <manager/detail/Listing.h>
#include <manager/detail/ManagerState.h>
#include <manager/detail/RequestProgress.h>
#include <manager/detail/TaskEnd.h>
#include <sources/LocalGraphicsSource.h>
#include <sources/SourceNames.h>
#include <stock/StockSource.h>

#include <orvcore/files/FileSystem.h>
#include <orvcore/tasks/MainThread.h>

#include <stdexcept>

// A relisting of one folder, step by step: list the folder, take the rows of changed files that are gone out of the
// index, put the listed entries' rows in the place of their old ones, end the progress, deliver. Each step leaves every
// existing template findable, by what it was or by what it is, so that a cancel or the process's end may come between
// any two.

namespace orvcapsule {

namespace {

// The source that made the entry; none once the request was aborted.
GraphicSourceManager::SourcePtr SourceToAsk(const GraphicSourceManager& manager,
                                            const GraphicSourceManager::EntryPtr& entry, const detail::TokenPtr& token)
{
    const bool isAborted = token && token->GetAbort();
    return entry && !isAborted ? manager.FindGraphicSource(entry->GetSourceID()) : nullptr;
}

bool IsGone(const orvcore::UTF8String& file)
{
    std::error_code error; // without the right to look, the file may well be there
    return orvcore::InspectTarget(orvcore::PathFromUTF8(file), error).kind == orvcore::FileKind::Nothing && !error;
}

// Of the changed files those that are gone leave the index, even when the relisting was cancelled: whatever replaced it
// may not name them again. A file that exists keeps its rows, whatever the listing says of it, until it is listed: the
// listing may have failed, or looked elsewhere.
void ReplaceIndexed(const detail::IndexSession& index, const std::vector<orvcore::UTF8String>& files,
                    const detail::EntryList& entries, CheckCancel& token)
{
    std::vector<orvcore::UTF8String> gone;
    for (const orvcore::UTF8String& file : files) {
        // The host's file watcher reports from another moment: only the file system knows what is there now.
        if (!IsGone(file)) {
            continue;
        }
        gone.push_back(file);
        orvcore::UTF8String plain = orvcore::PathToUTF8(orvcore::PathFromUTF8(file).lexically_normal());
        if (plain != file) { // a host may spell it otherwise than a listing
            gone.push_back(std::move(plain));
        }
    }
    if (!gone.empty()) { // no paths would mean all
        index.Clear(gone);
    }
    detail::ReindexEntries(index, entries, token);
}

// What `LocalDirectoryChanged` was asked for one folder.
struct FolderRequest {
    std::string sourceID;
    orvcore::UTF8String directory;
    std::vector<orvcore::UTF8String> files;
    detail::TokenPtr token;
    std::shared_ptr<GraphicSourceManager::DirectoryCallback> callback;
};

// Several sources may have one identifier, one for each root folder: the first that has the directory lists it, or the
// first of all where none has.
std::shared_ptr<ILocalGraphicSource> FindSourceOf(const detail::ManagerState& state, const std::string& sourceID,
                                                  const orvcore::UTF16String& directory)
{
    std::shared_ptr<ILocalGraphicSource> first;
    for (const auto& source : state.CopyLocalSources()) {
        if (source->GetSourceID() == sourceID) {
            if (source->HasDirectory(directory)) {
                return source;
            }
            first = first ? first : source;
        }
    }
    return first;
}

// What the source tells last of whether more follows. What it hands out before it fails stands.
bool ListFolder(const detail::ManagerState& state, const FolderRequest& request, detail::EntryList& entries)
{
    bool last = true;
    try {
        const orvcore::UTF16String directory = orvcore::PathTextToUTF16(request.directory);
        if (const auto source = FindSourceOf(state, request.sourceID, directory)) {
            source->SearchDirectory(
                [&](const detail::EntryList& found, const orvcore::UTF16String&, bool isLast) {
                    entries.insert(entries.end(), found.begin(), found.end());
                    last = isLast;
                },
                directory, request.token);
        }
    } catch (...) {
        detail::ReportCurrentException();
        last = true;
    }
    std::erase(entries, nullptr);
    return last;
}

using DirectoryList = std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>>;

// A local source never changes; a new one takes the old one's place in the list, and a task that still uses the old one
// holds it. The working folder is one for all of them and was prepared with the first.
void ReplaceCustomDirectories(detail::ManagerState& state, const DirectoryList& directories)
{
    // On the executor and not at the call: requests made before still list the folders of their time.
    const detail::SourcePtr old = state.FindSource(kLocalSourceID);
    const auto* local = dynamic_cast<const LocalGraphicsSource*>(old.get());
    if (local == nullptr) {
        return;
    }
    const detail::SourcePtr successor = local->MakeSuccessor(directories);
    if (!successor) {
        // From a task it goes to the host's exception handler; there is no callback for it.
        throw std::logic_error("the custom folders stay: the local source makes no successor");
    }
    state.ReplaceSource(old, successor);
}

void DeliverFolder(FolderRequest request, detail::EntryList entries, bool last)
{
    // The listing may have been cut short by the end of the executors, and is then not whole.
    if (orvcore::IsTerminating()) {
        return;
    }
    orvcore::AsyncCallFromMainThread([request = std::move(request), entries = std::move(entries), last]() mutable {
        if (request.token->GetAbort()) {
            // On the main thread, where the host's display may still show the line.
            detail::TellCanceled(*request.token);
            detail::FreeElsewhere(std::move(entries));
        } else if (request.callback && *request.callback) {
            (*request.callback)(entries, request.directory, last);
        }
    });
}

void GetLocalGraphicsFromDirectory(const detail::ManagerState& state, const FolderRequest& request)
{
    detail::EntryList entries;
    bool last = true;
    {
        // Ends before the delivery is queued: a host that has the folder's entries has no line of progress any more.
        const detail::ProgressEnd end(*request.token);
        last = ListFolder(state, request, entries);
        ReplaceIndexed(state.Index(), request.files, entries, *request.token);
    }
    DeliverFolder(request, std::move(entries), last);
}

} // namespace

void GraphicSourceManager::UpdateCustomDirectoryList(
    const std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>>& directories)
{
    state_->Post(nullptr, [&state = *state_, directories] { ReplaceCustomDirectories(state, directories); });
}

void GraphicSourceManager::LocalDirectoryChanged(const std::vector<GraphicSourceState>& states, bool showProgress)
{
    if (!state_->HasIndex()) {
        return;
    }
    // The full listing covers these folders, too. Their tokens stay in the map until a newer relisting replaces them.
    for (const auto& [directory, older] : state_->tokens.directories) {
        detail::AbortToken(older);
    }
    TokenPtr& token = state_->tokens.directoryChange;
    detail::RenewToken(token);
    detail::PostListing(*state_, states, showProgress, token);
}

void GraphicSourceManager::LocalDirectoryChanged(const std::string& sourceID, const orvcore::UTF8String& directory,
                                                 const std::vector<orvcore::UTF8String>& files)
{
    if (!state_->HasIndex()) {
        return;
    }
    // One token a folder, by the name that the host uses; the map holds as many as the host watches folders.
    TokenPtr& token = state_->tokens.directories[directory];
    detail::RenewToken(token);
    const SourcePtr source = FindGraphicSource(sourceID);
    const double weight = source ? static_cast<double>(source->GetProgressWeight()) : 1.0;
    detail::OpenProgress(*token, weight, detail::kProgressItemTitle);
    FolderRequest request{sourceID, directory, files, token, state_->CopyCallbacks().localDirectory};
    state_->Post(token,
                 [&state = *state_, request = std::move(request)] { GetLocalGraphicsFromDirectory(state, request); });
}

std::set<orvcore::UTF8String> GraphicSourceManager::GetLocalDirectories() const
{
    std::set<orvcore::UTF8String> directories;
    if (!state_->HasIndex()) {
        return directories;
    }
    for (const auto& source : state_->CopyLocalSources()) {
        directories.merge(source->GetDirectories());
    }
    return directories;
}

std::vector<FolderFailure> GraphicSourceManager::GetFolderFailures(const std::string& sourceID) const
{
    const SourcePtr source = FindGraphicSource(sourceID);
    const auto* local = dynamic_cast<const ILocalGraphicSource*>(source.get());
    return local != nullptr ? local->GetFolderFailures() : std::vector<FolderFailure>();
}

std::vector<FolderState> GraphicSourceManager::GetFolderStates(const std::string& sourceID) const
{
    const SourcePtr source = FindGraphicSource(sourceID);
    const auto* local = dynamic_cast<const ILocalGraphicSource*>(source.get());
    return local != nullptr ? local->GetFolderStates() : std::vector<FolderState>();
}

orvcore::UTF8String GraphicSourceManager::GetThumbnailPath(const EntryPtr& entry, const TokenPtr& token) const
{
    const SourcePtr source = SourceToAsk(*this, entry, token);
    return source ? source->GetThumbnailPath(entry, token) : orvcore::UTF8String();
}

Thumbnail GraphicSourceManager::GetThumbnail(const EntryPtr& entry, const TokenPtr& token) const
{
    const SourcePtr source = SourceToAsk(*this, entry, token);
    if (const auto* local = dynamic_cast<const ILocalGraphicSource*>(source.get())) {
        return local->GetThumbnail(entry, token);
    }
    if (const auto* stock = dynamic_cast<const StockSource*>(source.get())) {
        return stock->GetThumbnail(entry, token);
    }
    return {source ? source->GetThumbnailPath(entry, token) : orvcore::UTF8String(), nullptr};
}

} // namespace orvcapsule
