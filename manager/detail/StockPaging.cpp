#include <manager/detail/StockPaging.h>

#include <manager/detail/Delivery.h>
#include <stock/StockSource.h>

#include <algorithm>

// A search is a chain: a task asks for one page and ends; the page arrives on the client's thread, which queues the
// delivery and posts the task for the next page. No thread waits for the service. The chain ends with the last page, an
// empty one, an error, an aborted token, or when Shutdown makes Post refuse the next task. Each link holds the request,
// and the request the manager, so the state is there whenever a page arrives.

namespace orvcapsule::detail {

namespace {

constexpr int kPageSize = 100;
constexpr int kMostResults = 1000;

// What all pages of one request have in common.
struct StockRequest {
    std::shared_ptr<GraphicSourceManager> owner; // with the state: pages arrive on the client's thread
    ManagerState& state;
    std::vector<orvcore::UTF16String> terms;
    TokenPtr token;
    std::shared_ptr<GraphicSourceManager::RequestCallback> callback;
    std::shared_ptr<GraphicSourceManager::StockFailureCallback> failureCallback;
};
using RequestPtr = std::shared_ptr<const StockRequest>;

void PostPage(const RequestPtr& request, int first, int count);

void DeliverPage(const StockRequest& request, const StockSource::Entries& entries, int first, int total)
{
    GraphicSourceManager::ResultMap results;
    int position = first;
    for (const auto& entry : entries) {
        results.emplace_hint(results.end(), position++, entry);
    }
    Deliver(request.token, request.callback,
            [results = std::move(results), first, total](GraphicSourceManager::RequestCallback& call) mutable {
                call(results, first, total);
            });
}

void PostNextPage(const RequestPtr& request, int first, int arrived, int total)
{
    const int next = first + arrived;
    const int count = std::min(kPageSize, std::min(total, kMostResults) - next);
    if (arrived > 0 && count > 0) { // an empty page would be followed by itself
        PostPage(request, next, count);
    }
}

void RequestPage(const RequestPtr& request, int first, int count)
{
    const std::vector<SourcePtr> sources = request->state.CopySources();
    const auto source = sources.size() == 1 ? std::dynamic_pointer_cast<StockSource>(sources.front()) : nullptr;
    if (!source) {
        return;
    }
    const auto onResults = std::make_shared<StockSource::OnResults>(
        [request](const StockSource::Entries& entries, int from, int total, const TokenPtr&) {
            DeliverPage(*request, entries, from, total);
        });
    // The service works on the next page while this one is made ready. Pages are told one after the other on the
    // client's thread, so the deliveries keep their order.
    const auto onArrival = std::make_shared<StockSource::OnArrival>(
        [request, first](int arrived, int total) { PostNextPage(request, first, arrived, total); });
    const auto onFailure = std::make_shared<StockSource::OnFailure>([request](const StockSearchFailure& failure) {
        Deliver(request->token, request->failureCallback,
                [failure](GraphicSourceManager::StockFailureCallback& call) { call(failure); });
    });
    source->Search(request->terms, {}, first, count, request->token, onResults, onFailure, onArrival);
}

void PostPage(const RequestPtr& request, int first, int count)
{
    request->state.Post(request->token, [request, first, count] { RequestPage(request, first, count); });
}

} // namespace

void PostStockSearch(ManagerState& state, const std::vector<orvcore::UTF16String>& terms, const TokenPtr& token)
{
    const Callbacks callbacks = state.CopyCallbacks();
    PostPage(std::make_shared<const StockRequest>(
                 StockRequest{state.ShareOwner(), state, terms, token, callbacks.stockRequest, callbacks.stockFailure}),
             0, kPageSize);
}

} // namespace orvcapsule::detail
