#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/EntryOutput.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/support/Browser.h>
#include <tools/zelt/support/StockPlace.h>

#include <sources/SourceNames.h>

namespace zelt {

namespace {

const orvcore::UTF8String& FilterOf(const std::string& price)
{
    if (price == "all") {
        return orvcapsule::kStockFilterAll;
    }
    if (price != "premium" && price != "free") {
        throw UsageError("--filter takes all, premium or free");
    }
    return price == "premium" ? orvcapsule::kStockFilterPremium : orvcapsule::kStockFilterFree;
}

} // namespace

ExitCode RunStockSearch(const StockSearchOptions& options)
{
    return OnFile(options.url, [&] {
        Browser browser(ConnectStock(options.url), FilterOf(options.filter));
        const Browser::StockFound found = browser.SearchStock(options.terms);
        if (!options.json) {
            Print(StockEntriesAsTable(found.entries));
            return;
        }
        for (std::size_t index = 0; index < found.entries.size(); ++index) {
            PrintLine(StockEntryAsJSON(*found.entries[index], index, found.total));
        }
    });
}

} // namespace zelt
