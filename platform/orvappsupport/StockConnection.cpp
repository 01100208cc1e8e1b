#include <orvappsupport/StockConnection.h>

#include <utility>

namespace orvappsupport {

ClientStockConnection::ClientStockConnection(StockConnectionSettings settings)
    : settings_(std::move(settings))
{
}

ClientStockConnection::~ClientStockConnection() = default;

StockConnectionSettings ClientStockConnection::GetSettings() const
{
    const std::lock_guard lock(mutex_);
    return settings_;
}

void ClientStockConnection::SetBearerToken(orvcore::UTF8String token)
{
    const std::lock_guard lock(mutex_);
    settings_.bearerToken = std::move(token);
}

} // namespace orvappsupport
