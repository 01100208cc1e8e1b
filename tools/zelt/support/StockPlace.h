#pragma once

#include <orvappsupport/StockConnection.h>

#include <memory>
#include <string>

namespace zelt {

/// The connection to the stock service at the URL. Credentials come from the environment, because other users of the
/// machine can read command lines: ZELT_STOCK_TOKEN, ZELT_STOCK_KEY.
std::shared_ptr<orvappsupport::ClientStockConnection> ConnectStock(const std::string& url);

} // namespace zelt
