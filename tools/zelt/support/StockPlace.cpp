#include <tools/zelt/support/StockPlace.h>

#include <orvcore/text/Strings.h>

#include <cstdlib>

namespace zelt {

namespace {

orvcore::UTF8String Variable(const char* name)
{
    const char* const value = std::getenv(name);
    return orvcore::ToUTF8(std::string_view(value == nullptr ? "" : value));
}

} // namespace

std::shared_ptr<orvappsupport::ClientStockConnection> ConnectStock(const std::string& url)
{
    orvappsupport::StockConnectionSettings settings;
    settings.baseURL = orvcore::ToUTF8(url);
    settings.apiKey = Variable("ZELT_STOCK_KEY");
    settings.bearerToken = Variable("ZELT_STOCK_TOKEN");
    settings.product = u8"zelt/" ZELT_VERSION;
    return std::make_shared<orvappsupport::ClientStockConnection>(std::move(settings));
}

} // namespace zelt
