#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/Output.h>

#include <tools/stock/StockService.h>

#include <orvcore/files/FileSystem.h>

#include <limits>
#include <thread>

namespace zelt {

namespace {

using namespace std::chrono_literals;
using orvtools::stock::Faults;
using orvtools::stock::ServiceOptions;

constexpr auto kInterruptInterval = 50ms; // between looks whether the user has interrupted

void NeedBetween(std::size_t number, std::size_t least, std::size_t most, const std::string& option)
{
    if (number < least || number > most) {
        throw UsageError(option + " is not between " + std::to_string(least) + " and " + std::to_string(most));
    }
}

// One of two words, or nothing.
template <class Value>
Value Choose(const std::string& option, const std::string& given, Value none,
             const std::pair<std::string, Value>& first, const std::pair<std::string, Value>& second)
{
    if (given.empty() || given == first.first || given == second.first) {
        return given.empty() ? none : given == first.first ? first.second : second.second;
    }
    throw UsageError(option + " takes " + first.first + " or " + second.first);
}

Faults FaultsOf(const StockServeOptions& options)
{
    using Length = Faults::Length;
    using Where = Faults::Where;
    Faults faults;
    faults.delay = std::chrono::milliseconds(options.delay);
    if (options.status != 0) {
        NeedBetween(options.status, 400, 599, "--fail");
        faults.status = static_cast<unsigned>(options.status);
    }
    faults.retryAfter = options.retryAfter;
    faults.redirectsToItself = options.redirect == "loop";
    faults.redirectTo = faults.redirectsToItself ? std::nullopt : options.redirect;
    faults.announced =
        Choose<Length>("--lie", options.lie, Length::Right, {"longer", Length::Longer}, {"shorter", Length::Shorter});
    faults.secondHalf = options.stall ? Faults::SecondHalf::Withheld
                        : options.cut ? Faults::SecondHalf::Cut
                                      : Faults::SecondHalf::Sent;
    faults.maxRows = options.rows;
    faults.where = Choose<Where>("--only", options.only, Where::Everywhere, {"searches", Where::Searches},
                                 {"files", Where::Files});
    faults.times = static_cast<std::uint32_t>(options.times);
    return faults;
}

ServiceOptions ServiceOf(const StockServeOptions& options)
{
    NeedBetween(options.port, 0, std::numeric_limits<std::uint16_t>::max(), "--port");
    NeedBetween(options.copies, 1, 1'000'000, "--copies");
    NeedBetween(options.delay, 0, 3'600'000, "--slow");
    NeedBetween(options.times, 0, std::numeric_limits<std::uint32_t>::max(), "--times");
    ServiceOptions service;
    service.folder = ToFullPath(options.folder);
    service.copies = static_cast<std::uint32_t>(options.copies);
    service.address = options.address;
    service.port = static_cast<std::uint16_t>(options.port);
    service.token = options.token;
    service.faults = FaultsOf(options);
    return service;
}

} // namespace

ExitCode RunStockServe(const StockServeOptions& options)
{
    return OnFile(options.folder, [&] {
        // Scripts end a service by SIGTERM, and its temporary folders must go then as well.
        const InterruptWatch interrupt(InterruptWatch::Of::InterruptAndTermination);
        const orvtools::stock::StockService service(ServiceOf(options));
        // Alone on standard output and at once: a script reads the address from there, and the port may be one that was
        // free.
        PrintLine(service.Origin());
        if (!FlushOutput()) {
            throw std::runtime_error("standard output cannot be written");
        }
        for (const std::filesystem::path& package : service.Unreadable()) {
            ReportError(ToText(package), "it cannot be read, and is not served");
        }
        ReportError("serving " + Count(service.AssetCount(), "template") + "; Ctrl-C ends");
        while (!interrupt.IsRaised()) {
            std::this_thread::sleep_for(kInterruptInterval);
        }
    });
}

} // namespace zelt
