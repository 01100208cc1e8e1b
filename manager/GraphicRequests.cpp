#include <manager/GraphicSourceManager.h>

#include <manager/detail/Delivery.h>
#include <manager/detail/IndexEntries.h>
#include <manager/detail/RequestProgress.h>

#include <algorithm>
#include <optional>

namespace orvcapsule {

namespace {

// A source that fails contributes nothing. `progress` grows by the source's weight.
GraphicSourceManager::EntryList
ListSource(ILocalGraphicSource& source,
           const std::function<void(ILocalGraphicSource&, GraphicSourceManager::EntryList&)>& list, double& progress)
{
    GraphicSourceManager::EntryList entries;
    try {
        progress += static_cast<double>(source.GetProgressWeight());
        list(source, entries);
    } catch (...) {
        return {};
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
        sum += static_cast<double>(source->GetProgressWeight());
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
            continue; // a source that fails contributes nothing
        }
        for (const orvcore::UTF16String& match : matches) {
            names.insert(names.end(), orvcore::ToUTF8(match));
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
                directories.push_back(orvcore::ToUTF16(directory));
            }
        }
        source.SearchByDirectory([&entries](const EntryList& found, const orvcore::UTF16String&,
                                            bool) { entries.insert(entries.end(), found.begin(), found.end()); },
                                 directories, token);
    });
}

// Lists every local source by `list` and delivers each one's entries, then all of them.
void GraphicSourceManager::ListSources(const TokenPtr& token, const Callbacks& callbacks,
                                       const std::function<void(ILocalGraphicSource&, EntryList&)>& list) const
{
    const auto sources = CopyLocalSources();
    if (token->GetAbort()) {
        return; // an older listing must not empty what a newer one is about to fill
    }
    std::optional<detail::ProgressEnd> end(std::in_place, *token);
    index_->Clear({});
    EntryList all;
    double progress = 0;
    for (const auto& source : sources) {
        EntryList entries = ListSource(*source, list, progress);
        if (token->GetAbort()) {
            return;
        }
        detail::MoveProgress(*token, progress);
        detail::IndexEntries(*index_, entries, *token);
        all.insert(all.end(), entries.begin(), entries.end());
        const int delivered = static_cast<int>(all.size());
        const int expected = source == sources.back() ? delivered : -1;
        detail::Deliver(token, callbacks.partialCompletion,
                        [entries = std::move(entries), delivered, expected, id = source->GetSourceID()](
                            PartialCompletionCallback& call) { call(entries, delivered, expected, id); });
    }
    end.reset(); // before the last delivery: a host that has everything has no progress any more
    DeliverAll(std::move(all), token, callbacks.localRequest);
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
        return; // the host's function failed; the entries are still worth having
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
