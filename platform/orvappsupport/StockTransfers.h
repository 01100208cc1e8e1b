#pragma once

#include <orvappsupport/StockConnection.h>
#include <orvcore/text/Strings.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvappsupport {

/// @file
/// Files of stock assets: fetched into memory or downloaded to disk. Only `http:` and `https:` URLs are followed, at
/// most five redirects and none from https to http. No credentials are sent. A service that is busy (429, 503) is asked
/// up to three times, as a search does.

/// An answer of a server.
struct NetworkResponse {
    int statusCode = 0;                                       ///< of the last answer, after redirects and repetitions
    std::vector<std::pair<std::string, std::string>> headers; ///< names as they were sent, values without space around
    std::string body;                                         ///< unpacked

    /// The value of the first header with this name, whatever its letter case; empty without one.
    ORVPLATFORM_API std::string GetHeader(std::string_view name) const;
    /// The "Content-Type" without its parameters, in lower case; empty without one.
    ORVPLATFORM_API std::string GetContentType() const;
    /// 200 to 299.
    bool IsSuccess() const noexcept
    {
        return statusCode >= 200 && statusCode <= 299;
    }
};

/// Told how many bytes of the body are there and how many were announced (0: unknown), on the client's thread, some ten
/// times a second, and as often without news. Must not block or throw. Its false ends the transfer.
using TransferProgress = std::function<bool(std::uint64_t received, std::uint64_t announced)>;

/// What a caller may set for one transfer.
struct TransferOptions {
    TransferProgress progress;   ///< may be empty
    StockTimeouts timeouts = {}; ///< for a download `total` is not counted while it waits its turn
    std::uint64_t maxBytes = std::uint64_t{64} << 20U; ///< a longer body fails the transfer
};

/// A media file may be larger and take longer than what is fetched into memory.
ORVPLATFORM_API TransferOptions MediaOptions();

/// Fetches a URL and returns when the answer is there: blocks, so not for the main thread. Any other thread.
/// @return empty without an answer that is whole: not reached, timed out, cut short, too large, a bad URL or redirect,
///         the process's executors end, or called from a handler on the client's thread, which would wait for itself.
ORVPLATFORM_API std::shared_ptr<NetworkResponse> FetchResponseForURL(const orvcore::UTF8String& url,
                                                                     const TransferOptions& options = {});

/// Told how a download ended, and the destination as it was given.
using DownloadHandler = std::function<void(bool ok, orvcore::UTF8String destination)>;

/// Downloads a URL to a file and returns at once. Any thread; sixteen downloads run at a time, the others wait in
/// order.
///
/// The file appears at its path whole or not at all: content goes to a private ".part" file in the same folder, is
/// checked against the announced length, and then takes the place of what stood there. An answer that tells neither its
/// length nor its end counts as cut short, a status outside 200 to 299 as a failure. The folder must exist; what killed
/// downloads left in it more than a day ago is removed.
///
/// `handler` is called exactly once, on the client's thread, where it must not block; after the executors have ended,
/// before this returns. Only a process that exits calls it no more. What it throws goes to
/// `orvcore::SetTaskExceptionHandler`.
/// @param destination path in UTF-8
ORVPLATFORM_API void DownloadMediaFromURL(const orvcore::UTF8String& url, const orvcore::UTF8String& destination,
                                          DownloadHandler handler, const TransferOptions& options = MediaOptions());

/// Ends all downloads that were begun before, as failed, and returns when their handlers have returned; a handler must
/// therefore not wait for the caller. From a handler on the client's thread it returns at once; the handlers follow.
/// Must not be called under the system's loader lock.
ORVPLATFORM_API void FlushMediaDownloads();

} // namespace orvappsupport
