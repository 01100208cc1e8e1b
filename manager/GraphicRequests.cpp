#include <manager/GraphicSourceManager.h>

#include <manager/detail/Delivery.h>
#include <manager/detail/IndexEntries.h>
#include <manager/detail/RequestProgress.h>
#include <manager/detail/TaskEnd.h>

#include <orvcore/files/Paths.h>

#include <algorithm>
#include <optional>

namespace orvcapsule {

namespace {

bool IsLocal(const GraphicSourceManager::SourcePtr& source)
{
    return dynamic_cast<const ILocalGraphicSource*>(source.get()) != nullptr;
}

// A source that does not tell its weight counts as one that is not there.
double WeightOf(const IGraphicSource& source)
{
    try {
        return static_cast<double>(source.GetProgressWeight());
    } catch (...) {
        detail::ReportCurrentException();
        return 1.0;
    }
}

// What a source hands out before it fails stands.
GraphicSourceManager::EntryList
ListSource(ILocalGraphicSource& source,
           const std::function<void(ILocalGraphicSource&, GraphicSourceManager::EntryList&)>& list)
{
    GraphicSourceManager::EntryList entries;
    try {
        list(source, entries);
    } catch (...) {
        detail::ReportCurrentException();
    }
    std::erase(entries, nullptr);
    return entries;
}

} // namespace

void GraphicSourceManager::RequestGraphics(const std::vector<orvcore::UTF16String>& terms)
{
    if (!HasIndex()) {
        Renew(graphicsToken_);
        Post(graphicsToken_,
             [terms, token = graphicsToken_](GraphicSourceManager& manager) { manager.SearchStock(terms, token); });
        return;
    }
    Renew(indexSearchToken_);
    Post(indexSearchToken_, [terms, token = indexSearchToken_, callback = CopyCallbacks().databaseRequest](
                                GraphicSourceManager& manager) { manager.SearchIndex(terms, token, callback); });
}

void GraphicSourceManager::RequestDefaultGraphicSet(const std::vector<GraphicSourceState>& states, bool showProgress)
{
    if (!HasIndex()) {
        Renew(graphicsToken_);
        Post(graphicsToken_,
             [token = graphicsToken_](GraphicSourceManager& manager) { manager.SearchStock({}, token); });
        return;
    }
    Renew(defaultSetToken_);
    PostListing(states, showProgress, defaultSetToken_);
}

double GraphicSourceManager::SumOfProgressWeights() const
{
    double sum = 0;
    for (const SourcePtr& source : CopySources()) {
        sum += WeightOf(*source);
    }
    return sum;
}

void GraphicSourceManager::PostListing(const std::vector<GraphicSourceState>& states, bool showProgress,
                                       const TokenPtr& token)
{
    if (showProgress) {
        detail::OpenProgress(*token, SumOfProgressWeights(), detail::kProgressAllItemTitle);
        Post(token, [states, token, callbacks = CopyCallbacks()](GraphicSourceManager& manager) {
            manager.GetLocalGraphicsReturningPartialResults(states, token, callbacks);
        });
    } else {
        Post(token, [token, callbacks = CopyCallbacks()](GraphicSourceManager& manager) {
            manager.GetLocalGraphics(token, callbacks);
        });
    }
}

void GraphicSourceManager::SearchStock(const std::vector<orvcore::UTF16String>& /*terms*/, const TokenPtr& /*token*/)
{
    // A stock search needs exactly one source, the stock source; the library has none yet, so there is no result.
}

void GraphicSourceManager::SearchIndex(const std::vector<orvcore::UTF16String>& terms, const TokenPtr& token,
                                       const std::shared_ptr<TextSetCallback>& callback) const
{
    if (token->GetAbort()) {
        return;
    }
    std::set<orvcore::UTF8String> names;
    for (const auto& source : CopyLocalSources()) {
        std::set<orvcore::UTF16String> matches;
        try {
            source->SearchDB(terms, matches);
        } catch (...) {
            detail::ReportCurrentException();
            continue; // a source that fails contributes nothing
        }
        for (const orvcore::UTF16String& match : matches) {
            names.insert(names.end(), orvcore::PathTextToUTF8(match));
        }
    }
    detail::Deliver(token, callback,
                    [names = std::move(names)](TextSetCallback& call) mutable { call(std::move(names)); });
}

void GraphicSourceManager::GetLocalGraphics(const TokenPtr& token, const Callbacks& callbacks) const
{
    ListSources(token, callbacks, [&](ILocalGraphicSource& source, EntryList& entries) {
        int total = 0;
        source.Search({}, entries, 0, -1, total, token);
    });
}

void GraphicSourceManager::GetLocalGraphicsReturningPartialResults(const std::vector<GraphicSourceState>& states,
                                                                   const TokenPtr& token,
                                                                   const Callbacks& callbacks) const
{
    ListSources(token, callbacks, [&](ILocalGraphicSource& source, EntryList& entries) {
        std::vector<orvcore::UTF16String> directories;
        const auto state = std::find_if(
            states.begin(), states.end(),
            [id = source.GetSourceID()](const GraphicSourceState& candidate) { return candidate.sourceID == id; });
        if (state != states.end()) {
            for (const orvcore::UTF8String& directory : state->directories) {
                directories.push_back(orvcore::PathTextToUTF16(directory));
            }
        }
        source.SearchByDirectory([&entries](const EntryList& found, const orvcore::UTF16String&,
                                            bool) { entries.insert(entries.end(), found.begin(), found.end()); },
                                 directories, token);
    });
}

void GraphicSourceManager::ListSources(const TokenPtr& token, const Callbacks& callbacks,
                                       const ListFunction& list) const
{
    if (detail::MustEnd(*token)) {
        return; // an older listing must not empty what a newer one is about to fill
    }
    std::optional<detail::ProgressEnd> end(std::in_place, *token);
    index_->Clear({});
    EntryList all;
    if (!ListEachSource(token, callbacks, list, all)) {
        detail::FreeElsewhere(std::move(all));
        return;
    }
    end.reset(); // before the last delivery: a host that has everything has no progress any more
    DeliverAll(std::move(all), token, callbacks.localRequest);
}

// Lists every local source by `list`, delivers each one's entries, then indexes them: a panel need not wait for the
// index, and a search waits for this task anyway. False when it had to end.
bool GraphicSourceManager::ListEachSource(const TokenPtr& token, const Callbacks& callbacks, const ListFunction& list,
                                          EntryList& all) const
{
    const auto sources = CopySources();
    auto left = std::count_if(sources.begin(), sources.end(), &IsLocal);
    double progress = 0;
    for (const SourcePtr& source : sources) {
        progress += WeightOf(*source);
        if (!IsLocal(source)) {
            detail::MoveProgress(*token, progress);
            continue;
        }
        EntryList entries = ListSource(dynamic_cast<ILocalGraphicSource&>(*source), list);
        all.insert(all.end(), entries.begin(), entries.end());
        if (detail::MustEnd(*token)) {
            return false;
        }
        detail::MoveProgress(*token, progress);
        const int delivered = static_cast<int>(all.size());
        const int expected = --left == 0 ? delivered : -1;
        detail::Deliver(token, callbacks.partialCompletion,
                        [entries, delivered, expected, id = source->GetSourceID()](PartialCompletionCallback& call) {
                            call(entries, delivered, expected, id);
                        });
        detail::IndexEntries(*index_, entries, *token);
    }
    return !detail::MustEnd(*token);
}

void GraphicSourceManager::Sort(EntryList& entries) const
{
    std::shared_ptr<SortFunction> sort;
    {
        const std::lock_guard lock(lock_);
        sort = sort_;
    }
    if (!sort || !*sort) {
        return;
    }
    EntryList sorted = entries;
    try {
        std::stable_sort(sorted.begin(), sorted.end(), *sort);
    } catch (...) {
        detail::ReportCurrentException();
        return; // the entries are still worth having
    }
    entries.swap(sorted);
}

void GraphicSourceManager::DeliverAll(EntryList all, const TokenPtr& token,
                                      const std::shared_ptr<RequestCallback>& callback) const
{
    if (!callback) {
        return;
    }
    Sort(all);
    // The map is built here: on the main thread a large one would cost a frame.
    ResultMap results;
    for (EntryPtr& entry : all) {
        results.emplace_hint(results.end(), static_cast<int>(results.size()), std::move(entry));
    }
    detail::Deliver(token, callback, [results = std::move(results)](RequestCallback& call) mutable {
        const int total = static_cast<int>(results.size());
        call(results, 0, total);
    });
}

} // namespace orvcapsule
