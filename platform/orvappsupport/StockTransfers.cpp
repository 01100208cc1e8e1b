#include <orvappsupport/StockTransfers.h>

#include <orvappsupport/detail/TransferThread.h>

#include <orvcore/tasks/Future.h>
#include <orvcore/text/shared/ASCII.h>

#include <algorithm>

// Fetching blocks the caller until the client's thread has called the handler. It looks every 50 ms whether that thread
// is still there: when the process exits the thread tells nobody, and a caller that relied on its handler would wait
// for ever. On the client's thread itself it refuses: nobody would be left to do the work.

namespace orvappsupport {

using detail::Transfer;
using detail::TransferEnd;
using detail::TransferResult;
using detail::TransferThread;
using ResponsePtr = std::shared_ptr<NetworkResponse>;

std::string NetworkResponse::GetHeader(std::string_view name) const
{
    const auto isSame = [](char a, char b) { return orvcore::ToASCIILower(a) == orvcore::ToASCIILower(b); };
    for (const auto& [each, value] : headers) {
        if (std::equal(each.begin(), each.end(), name.begin(), name.end(), isSame)) {
            return value;
        }
    }
    return {};
}

std::string NetworkResponse::GetContentType() const
{
    std::string type = GetHeader("Content-Type");
    type.erase(std::min(type.find_first_of("; \t"), type.size()));
    std::transform(type.begin(), type.end(), type.begin(), orvcore::ToASCIILower<char>);
    return type;
}

TransferOptions MediaOptions()
{
    TransferOptions options;
    options.timeouts.total = std::chrono::minutes(10);
    options.maxBytes = std::uint64_t{256} << 20U;
    return options;
}

ResponsePtr FetchResponseForURL(const orvcore::UTF8String& url, const TransferOptions& options)
{
    if (TransferThread::IsCurrent()) {
        return nullptr;
    }
    const auto promise = std::make_shared<orvcore::Promise<ResponsePtr>>();
    const orvcore::Future<ResponsePtr> future = promise->GetFuture();
    TransferThread::The().Submit(std::make_unique<Transfer>(
        detail::TransferRequest{orvcore::ToNarrow(url), {}, {}, std::nullopt, options},
        [promise](TransferResult result) { promise->SetValue(std::move(result.response)); }));
    constexpr std::chrono::milliseconds kInterval{50};
    while (future.Wait(kInterval) == orvcore::FutureStatus::Pending && TransferThread::The().IsWorking()) {
        // at the exit of the process the thread ends and tells nobody
    }
    return future.GetStatus() == orvcore::FutureStatus::Ready ? future.Get() : nullptr;
}

void DownloadMediaFromURL(const orvcore::UTF8String& url, const orvcore::UTF8String& destination,
                          DownloadHandler handler, const TransferOptions& options)
{
    TransferThread::The().Submit(std::make_unique<Transfer>(
        detail::TransferRequest{orvcore::ToNarrow(url), {}, {}, orvcore::PathFromUTF8(destination), options},
        [destination, handler = std::move(handler)](const TransferResult& result) {
            if (handler) {
                handler(result.end == TransferEnd::Answered && result.response->IsSuccess(), destination);
            }
        }));
}

void FlushMediaDownloads()
{
    TransferThread::The().FlushDownloads();
}

} // namespace orvappsupport
