#pragma once

#include <sources/GraphicSource.h>

#include <boost/shared_ptr.hpp>

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace orvcapsule {

struct StockSearchFailure; // stock/StockSource.h

namespace detail {
class ManagerState;
}

/// What a request is to list of one source.
struct GraphicSourceState {
    std::string sourceID;                         ///< one of the source identifiers (SourceNames.h)
    std::vector<orvcore::UTF8String> directories; ///< full paths
};

/// A host's single entry point for browsing templates: it owns the sources of one browse panel, runs listings, searches
/// and tag requests one at a time on an executor of its own, and delivers results on the host's main thread.
///
/// With a database path the manager is in index mode: it browses local and library templates and searches through the
/// process's search index. Without one it is in stock mode, which fronts a single stock source.
///
/// Always owned by a `std::shared_ptr`; a queued request keeps it alive, so the host calls `Shutdown` before it drops
/// its last reference. All operations are for the host's main thread and return at once unless said otherwise. Every
/// callback runs on the main thread (`orvcore::RunMainThreadCalls` or the host's dispatcher); it is dropped when its
/// request was cancelled, or replaced by a newer one of its kind, before it ran. Set callbacks before making requests.
/// Exceptions of a source or of the sort function in the background go to `orvcore::SetTaskExceptionHandler`.
class ORVCAPSULE_API GraphicSourceManager : public std::enable_shared_from_this<GraphicSourceManager> {
public:
    using EntryPtr = boost::shared_ptr<CapsuleEntry>;
    using EntryList = std::vector<EntryPtr>;
    /// Entries by their absolute position in the request's whole result.
    using ResultMap = std::map<int, EntryPtr>;
    using TokenPtr = boost::shared_ptr<CheckCancel>;
    using SourcePtr = std::shared_ptr<IGraphicSource>;

    /// A strict less-than over entries; called on a worker thread. One that throws leaves the order as found.
    using SortFunction = std::function<bool(const EntryPtr&, const EntryPtr&)>;
    /// The results, the position of the first one, and the number of all results of the request. The callback may take
    /// the map's contents.
    using RequestCallback = std::function<void(ResultMap&, int first, int total)>;
    /// Entries that a listing in progress has found since the last such call, at least one, all of one source.
    using EntriesFoundCallback = std::function<void(const EntryList&)>;
    /// Why a page of a stock search did not arrive, and with it all that would have followed.
    using StockFailureCallback = std::function<void(const StockSearchFailure&)>;
    /// One source's entries, the number of entries delivered so far with these, the number expected in all (-1 while
    /// that is unknown), and the source's identifier.
    using PartialCompletionCallback =
        std::function<void(const EntryList&, int delivered, int expected, const std::string& sourceID)>;
    /// A folder's entries, the folder, and whether no further entries of this relisting follow.
    using DirectoryCallback = std::function<void(const EntryList&, const orvcore::UTF8String& directory, bool last)>;
    /// Package paths that a search found, or tags, in byte order.
    using TextSetCallback = std::function<void(std::set<orvcore::UTF8String>)>;

    /// Opens the search index at `databasePath` unless that is empty. An index that cannot be opened leaves a manager
    /// that lists but finds nothing. Entries are sorted by name, code unit by code unit.
    explicit GraphicSourceManager(const orvcore::UTF16String& databasePath);
    GraphicSourceManager(const GraphicSourceManager&) = delete;
    GraphicSourceManager& operator=(const GraphicSourceManager&) = delete;
    virtual ~GraphicSourceManager();

    /// Ends the manager: cancels all requests, starts no further task, terminates the sources in the order in which
    /// they were added and closes the search index. It does not wait for a running task, which finds its request
    /// cancelled at its next check. A second call is harmless. An exception from a source's `Terminate` leaves this
    /// call; another call then goes on with the next source.
    void Shutdown();

    /// @name Sources and filters
    /// @{
    /// Adds a source and initialises it on this thread; for local sources that prepares the working folder of their
    /// previews (Workspace.h). Duplicates are not detected. An empty pointer is ignored. What the source throws passes.
    void AddGraphicSource(const SourcePtr& source);
    /// The first source with this identifier, or an empty pointer. Any thread.
    SourcePtr FindGraphicSource(const std::string& sourceID) const;
    /// Appends each source's filter to `out`, in the order of the sources. What a source throws passes.
    void GetFilterList(std::vector<IGraphicSource::GraphicFilterID>& out) const;
    /// Hands a filter type to every source; only a stock source knows them.
    void SetSearchFilterType(const orvcore::UTF8String& filterType);
    /// Replaces the order of results; with an empty pointer they stay in the order in which the sources found them.
    void SetCapsuleSortFxn(std::shared_ptr<SortFunction> sort);
    /// @}

    /// @name Callbacks
    /// Each replaces the one before; an empty pointer means none. The two database callbacks are ignored in stock mode.
    /// @{
    void SetLocalRequestCallback(const std::shared_ptr<RequestCallback>& callback);
    void SetStockRequestCallback(const std::shared_ptr<RequestCallback>& callback);
    /// Shows a listing while it runs: the callback receives the entries in small batches as they are found. Each comes
    /// exactly once and whole, in no certain order; the first ones at most 50 ms after the listing's task has begun or,
    /// where nothing was found by then, at most 100 ms after it was found, as all later ones. The last batch of a
    /// source comes before its partial completion, which has the same entries again. So a host that shows these needs
    /// nothing else until the local-request callback has the sorted map; only what a source that failed halfway had
    /// found may be missing from that. Relistings of one folder have no such calls.
    void SetLocalRequestEntriesFoundCallback(const std::shared_ptr<EntriesFoundCallback>& callback);
    void SetStockFailureCallback(const std::shared_ptr<StockFailureCallback>& callback);
    void SetLocalRequestPartialCompletionCallback(const std::shared_ptr<PartialCompletionCallback>& callback);
    void SetLocalDirectoryRequestCallback(const std::shared_ptr<DirectoryCallback>& callback);
    void SetDatabaseRequestCallback(const std::shared_ptr<TextSetCallback>& callback);
    void SetDatabaseTagRequestCallback(const std::shared_ptr<TextSetCallback>& callback);
    /// @}

    /// @name Requests
    /// A newer request of the same kind cancels the older one.
    /// @throws std::bad_weak_ptr  when the manager is not owned by a shared pointer.
    /// @{
    /// Searches. Index mode: the database callback receives the paths of the templates that every term finds; a term
    /// may lie inside a word, white space in it counts, and no terms find nothing (docs/search-index.md). Stock mode:
    /// the stock callback receives one page after the other, up to a hundred results each and a thousand in all, as the
    /// stock source gets them, and an empty one when there is no result; an error, which the stock-failure callback is
    /// told of, ends that. A manager whose only source is not a `StockSource` finds nothing.
    void RequestGraphics(const std::vector<orvcore::UTF16String>& terms);
    /// Lists everything. Stock mode: as a search without terms; the arguments do not matter. Index mode: the search
    /// index is emptied and filled again. The entries-found callback receives entries while sources are being listed,
    /// the partial-completion callback those of each source when it is; at the end, when all are indexed, the
    /// local-request callback receives all entries, sorted. When a source fails, the entries that it handed out before
    /// are delivered and indexed, too. With `showProgress` the host's progress display shows the listing, and each
    /// source receives the folders that `states` names for it; the local folder source ignores them and lists all its
    /// folders.
    void RequestDefaultGraphicSet(const std::vector<GraphicSourceState>& states, bool showProgress);
    /// Suggests tags (index mode only): the tag callback receives those that hold a word beginning with `text`.
    void RequestSimilarTags(const orvcore::UTF16String& text);

    /// Cancels the searches in flight; listings, tag requests and folder relistings go on.
    void CancelGraphicRequests();
    /// Cancels the tag request in flight.
    void CancelSimilarTagRequests();
    /// Cancels everything in flight.
    void Abort();
    /// @}

    /// @name Local folders
    /// Index mode only, but for the first and the last.
    /// @{
    /// Replaces the custom folders (display name, path) of the local source, after the requests made before: the
    /// source that `LocalGraphicsSource::MakeSuccessor` makes takes its place. If it makes none, the folders stay as
    /// they are and the handler of `orvcore::SetTaskExceptionHandler` is told. No callback follows; the next listing
    /// shows the change.
    void UpdateCustomDirectoryList(const std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>>& directories);
    /// Lists everything again, as `RequestDefaultGraphicSet` does but independently of it. Cancels folder relistings.
    void LocalDirectoryChanged(const std::vector<GraphicSourceState>& states, bool showProgress);
    /// Lists one folder again; the directory callback receives its entries, none when no source is called `sourceID`.
    /// Of several sources with that identifier the first that has the folder (`ILocalGraphicSource::HasDirectory`) is
    /// asked, or the first of all where none has.
    /// `files` are the paths that changed, deleted ones included. Deleted files are removed from the index, the listed
    /// entries are indexed again, and the rows of all other files stay. Relistings of several folders may be queued; a
    /// newer one of the same folder cancels the older one. The host's progress display shows the relisting, and tells
    /// why it stopped when it was cancelled.
    void LocalDirectoryChanged(const std::string& sourceID, const orvcore::UTF8String& directory,
                               const std::vector<orvcore::UTF8String>& files);
    /// The folders that the first source called `sourceID` could not read when it listed them last, and why. Any
    /// thread, also in a result callback.
    std::vector<FolderFailure> GetFolderFailures(const std::string& sourceID) const;
    /// The folders of that source as they are now: there, missing or not readable. Any thread; may block.
    std::vector<FolderState> GetFolderStates(const std::string& sourceID) const;
    /// The folders that the local sources look into. Walks them on this thread, which may be any. What a source throws
    /// passes.
    std::set<orvcore::UTF8String> GetLocalDirectories() const;
    /// The path of an entry's still preview, made now by the entry's source if need be; may block. Empty when there is
    /// none, no source made the entry, or `token` (which may be empty) was aborted. Any thread. What the source throws
    /// passes.
    orvcore::UTF8String GetThumbnailPath(const EntryPtr& entry, const TokenPtr& token) const;
    /// The same with the reason for an empty path, as far as the entry's source tells one: the library's sources do.
    Thumbnail GetThumbnail(const EntryPtr& entry, const TokenPtr& token) const;
    /// @}

private:
    const std::unique_ptr<detail::ManagerState> state_;
};

} // namespace orvcapsule
