#pragma once

#include <orvcore/text/Strings.h>

#include <chrono>
#include <memory>
#include <mutex>

namespace orvappsupport {

/// How long a request may take. A value of zero or less counts as one millisecond.
struct StockTimeouts {
    std::chrono::milliseconds connect{10'000}; ///< until the connection stands, TLS included
    std::chrono::milliseconds stalled{15'000}; ///< without a byte of the answer, from its request or the last byte on
    std::chrono::milliseconds total{60'000};   ///< for everything: redirects, waiting before a repetition, repetitions
};

/// Where a stock service is and who asks it.
struct StockConnectionSettings {
    /// "https://stock.example/api": everything in front of "/v1/search". `http:` or `https:`, without user name, query
    /// and fragment; a "/" at the end does no harm.
    orvcore::UTF8String baseURL;
    /// @name Credentials
    /// Sent with searches to the scheme, host and port of `baseURL` only, not to any other that the service redirects
    /// to, and never with downloads. Empty: none. A value with control characters is refused when a search is made.
    /// @{
    orvcore::UTF8String apiKey;
    orvcore::UTF8String bearerToken;
    /// @}
    /// The host application, "Corvid/25.1"; told to the service with every search. Empty: not told.
    orvcore::UTF8String product;
    StockTimeouts timeouts;
};

/// A connection to the stock service, shared by pointer. It holds no network connection of its own: all searches of the
/// process share those. All members may be called from any thread.
class ORVPLATFORM_API ClientStockConnection {
public:
    explicit ClientStockConnection(StockConnectionSettings settings);
    ClientStockConnection(const ClientStockConnection&) = delete;
    ClientStockConnection& operator=(const ClientStockConnection&) = delete;
    ~ClientStockConnection();

    StockConnectionSettings GetSettings() const;
    /// Replaces the bearer token, when it ran out or the user signed in. Searches made before keep the old one.
    void SetBearerToken(orvcore::UTF8String token);

private:
    mutable std::mutex mutex_;
    StockConnectionSettings settings_;
};

} // namespace orvappsupport
