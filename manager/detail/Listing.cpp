#include <manager/detail/Listing.h>

#include <manager/detail/Delivery.h>
#include <manager/detail/FoundEntries.h>
#include <manager/detail/IndexEntries.h>
#include <manager/detail/RequestProgress.h>
#include <manager/detail/TaskEnd.h>

#include <orvcore/files/Paths.h>

#include <algorithm>
#include <optional>

// One full listing is one task. Its order: look at the token, empty the index, then for each local source list it,
// queue its entries, index them; last sort all, end the progress, queue the whole. A manager empties the index here and
// nowhere else, after the look at the token: a listing that was replaced while it waited must leave alone what the
// newer one has filled.
//
// Entries are queued for the host before they are indexed, which takes as long again for packages that have not
// changed. The whole result comes after the index is complete, so that a host that cancels when it has everything
// leaves no gap.

namespace orvcapsule::detail {

namespace {

using ListFunction = std::function<void(ILocalGraphicSource&, EntryList&)>;

// What a listing was asked for.
struct Request {
    TokenPtr token;
    Callbacks callbacks;
    std::shared_ptr<FoundEntries> found; // what the token's holders announce; empty without a callback
};

bool IsLocal(const SourcePtr& source)
{
    return dynamic_cast<const ILocalGraphicSource*>(source.get()) != nullptr;
}

// A source that does not tell its weight counts as one that is not there.
// Asked for the sum before the listing and again while it runs; the sources are a host's own code, and any of their
// calls may throw.
double WeightOf(const IGraphicSource& source)
{
    try {
        return static_cast<double>(source.GetProgressWeight());
    } catch (...) {
        ReportCurrentException();
        return 1.0;
    }
}

// Sources that cannot be listed count as well, and are done when their turn comes: the bar ends full
// (docs/decisions/manager-progress-range.md).
double SumOfWeights(const ManagerState& state)
{
    double sum = 0;
    for (const SourcePtr& source : state.CopySources()) {
        sum += WeightOf(*source);
    }
    return sum;
}

// What a source hands out before it fails stands.
EntryList ListSource(ILocalGraphicSource& source, const ListFunction& list)
{
    EntryList entries;
    try {
        list(source, entries);
    } catch (...) {
        ReportCurrentException();
    }
    std::erase(entries, nullptr);
    return entries;
}

// Lists every local source by `list`, delivers each one's entries, then indexes them: a panel need not wait for the
// index, and a search waits for this task anyway. False when it had to end.
bool ListEachSource(const ManagerState& state, const Request& request, const ListFunction& list, EntryList& all)
{
    const TokenPtr& token = request.token;
    FoundDelivery found(request.found, token, request.callbacks.entriesFound);
    const auto sources = state.CopySources();
    auto left = std::count_if(sources.begin(), sources.end(), &IsLocal);
    double progress = 0;
    for (const SourcePtr& source : sources) {
        progress += WeightOf(*source);
        if (!IsLocal(source)) {
            MoveProgress(*token, progress);
            continue;
        }
        EntryList entries = ListSource(dynamic_cast<ILocalGraphicSource&>(*source), list);
        // Pointers are copied: each delivery has a list of its own, which the host may keep.
        all.insert(all.end(), entries.begin(), entries.end());
        // A source that was cancelled hands out nothing whole, so nothing of it is shown or indexed.
        if (MustEnd(*token)) {
            return false;
        }
        MoveProgress(*token, progress);
        found.EndSource(entries);
        const int delivered = static_cast<int>(all.size());
        const int expected = --left == 0 ? delivered : -1; // what the sources after this one will find is unknown
        Deliver(token, request.callbacks.partialCompletion,
                [entries, delivered, expected, id = source->GetSourceID()](
                    GraphicSourceManager::PartialCompletionCallback& call) { call(entries, delivered, expected, id); });
        IndexEntries(state.Index(), entries, *token);
    }
    return !MustEnd(*token);
}

void DeliverAll(const ManagerState& state, EntryList all, const TokenPtr& token,
                const std::shared_ptr<GraphicSourceManager::RequestCallback>& callback)
{
    if (!callback) {
        return;
    }
    state.Sort(all);
    // The map is built here: on the main thread a large one would cost a frame.
    GraphicSourceManager::ResultMap results;
    for (GraphicSourceManager::EntryPtr& entry : all) {
        results.emplace_hint(results.end(), static_cast<int>(results.size()), std::move(entry));
    }
    Deliver(token, callback, [results = std::move(results)](GraphicSourceManager::RequestCallback& call) mutable {
        const int total = static_cast<int>(results.size());
        call(results, 0, total);
    });
}

// The order of the callbacks: for each source, in the order of the sources, what is found and then one partial
// completion; at last the whole result. The main thread runs deliveries in the order in which they were queued.
void ListSources(const ManagerState& state, const Request& request, const ListFunction& list)
{
    if (MustEnd(*request.token)) {
        return; // an older listing must not empty what a newer one is about to fill
    }
    std::optional<ProgressEnd> end(std::in_place, *request.token);
    state.Index().Clear({}); // no paths mean all rows
    EntryList all;
    if (!ListEachSource(state, request, list, all)) {
        FreeElsewhere(std::move(all));
        return;
    }
    end.reset(); // before the last delivery: a host that has everything has no progress any more
    DeliverAll(state, std::move(all), request.token, request.callbacks.localRequest);
}

void GetLocalGraphics(const ManagerState& state, const Request& request)
{
    ListSources(state, request, [&](ILocalGraphicSource& source, EntryList& entries) {
        int total = 0;
        // No terms and no limit: everything. `total` is the source's count, which the entries themselves tell here.
        source.Search({}, entries, 0, -1, total, request.token);
    });
}

void GetLocalGraphicsReturningPartialResults(const ManagerState& state, const std::vector<GraphicSourceState>& folders,
                                             const Request& request)
{
    ListSources(state, request, [&](ILocalGraphicSource& source, EntryList& entries) {
        std::vector<orvcore::UTF16String> directories;
        const auto own = std::find_if(
            folders.begin(), folders.end(),
            [id = source.GetSourceID()](const GraphicSourceState& candidate) { return candidate.sourceID == id; });
        if (own != folders.end()) {
            for (const orvcore::UTF8String& directory : own->directories) {
                directories.push_back(orvcore::PathTextToUTF16(directory));
            }
        }
        source.SearchByDirectory([&entries](const EntryList& found, const orvcore::UTF16String&,
                                            bool) { entries.insert(entries.end(), found.begin(), found.end()); },
                                 directories, request.token);
    });
}

} // namespace

void PostListing(ManagerState& state, const std::vector<GraphicSourceState>& folders, bool showProgress,
                 const TokenPtr& token)
{
    Request request{token, state.CopyCallbacks(), nullptr};
    if (request.callbacks.entriesFound) {
        request.found = std::make_shared<FoundEntries>();
        // Set before the task is posted: from then on the token is only read. The token may outlive the task, so it
        // holds the list as well.
        token->onEntryFound = [found = request.found](const auto& entry) { found->Add(entry); };
    }
    // With progress a source is handed its folders and tells of one after the other; without it only the whole counts.
    if (showProgress) {
        OpenProgress(*token, SumOfWeights(state), kProgressAllItemTitle);
        state.Post(token, [&state, folders, request = std::move(request)] {
            GetLocalGraphicsReturningPartialResults(state, folders, request);
        });
    } else {
        state.Post(token, [&state, request = std::move(request)] { GetLocalGraphics(state, request); });
    }
}

} // namespace orvcapsule::detail
