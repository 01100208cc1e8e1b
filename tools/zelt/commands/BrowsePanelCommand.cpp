#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/panel/Panel.h>
#include <tools/zelt/panel/Routes.h>
#include <tools/zelt/support/Places.h>

#include <orvcore/text/Guid.h>
#include <tools/http/Server.h>
#include <tools/support/OpenInBrowser.h>

#include <limits>

namespace zelt {

namespace {

constexpr std::chrono::milliseconds kTellInterval(50);

std::uint16_t PortOf(std::size_t number)
{
    if (number > std::numeric_limits<std::uint16_t>::max()) {
        throw UsageError("--port is a number up to 65535");
    }
    return static_cast<std::uint16_t>(number);
}

// 122 random bits, fit for an address.
std::string NewSecret()
{
    return orvcore::Guid::Create().ToString();
}

// The order of the objects is that of their use: routes use the panel, the panel the browser, and the server's threads
// all three. So the server ends first, in words as well, because its threads may wait in the panel for the stock
// service.
void Serve(const Places& places, const BrowseOptions& options)
{
    Browser browser(places);
    Panel panel(browser, NewSecret(), options.stock);
    const std::string secret = NewSecret();
    Routes routes(panel, secret);
    orvtools::http::ServerOptions where;
    where.port = PortOf(options.port);
    where.limits.connections = 64;
    where.limits.handlers = 6; // some read whole packages, meanwhile others serve pictures
    orvtools::http::Server server([&routes](const orvtools::http::Request& request) { return routes.Answer(request); },
                                  where);
    routes.SetPort(server.Port());
    const std::string address = server.Origin() + '/' + secret + '/';
    PrintLine(address);
    FlushOutput();
    if (!options.noOpen) {
        orvtools::OpenInBrowser(address);
    }
    panel.Refresh();
    // The main thread of this host: it runs the manager's callbacks, and tells the pages of what has changed meanwhile,
    // at most twenty times a second.
    while (!browser.GetInterrupt().IsRaised()) {
        browser.RunCalls(kTellInterval);
        panel.Tell();
    }
    if (panel.Stock() != nullptr) {
        panel.Stock()->Stop();
    }
    server.Stop(); // its threads use the panel
}

} // namespace

ExitCode RunBrowse(const BrowseOptions& options)
{
    if (!NamePlaces(options.places)) {
        return ExitCode::kBadUsage;
    }
    ExitCode exit = ExitCode::kDone;
    const Places places = FullPlaces(options.places, exit);
    const ExitCode served = OnFile("browse", [&] { Serve(places, options); });
    return std::max(exit, served);
}

} // namespace zelt
