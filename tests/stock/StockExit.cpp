// stock_exit URL FOLDER return|shutdown|terminate|handler: ends in the middle of searches, fetches and downloads that
// the service at URL does not finish; with 0 when it does so in good order.
#include <manager/GraphicSourceManager.h>
#include <orvappsupport/StockTransfers.h>
#include <orvcore/files/Paths.h>
#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/MainThread.h>
#include <stock/StockCapsuleEntry.h>
#include <stock/StockPreviewDownloadManager.h>
#include <stock/StockSource.h>

#include <boost/make_shared.hpp>

#include <atomic>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace orvcapsule;
using orvcore::UTF8String;

constexpr int kEach = 20;
std::atomic<int> told = 0; // of 2 * kEach handlers

void BeginSearches(const std::shared_ptr<ClientStockConnection>& connection, bool exitsInHandler)
{
    for (int i = 0; i < kEach; ++i) {
        orvappsupport::search::Search({}, {}, {}, connection, 0, 1, [](auto, const auto&) { ++told; });
    }
    if (exitsInHandler) {
        orvappsupport::search::Search({}, {}, {}, connection, -1, 1, [](auto, const auto&) { std::exit(0); });
    }
}

void BeginDownloads(const UTF8String& url, const UTF8String& folder)
{
    for (int i = 0; i < kEach; ++i) {
        orvappsupport::DownloadMediaFromURL(url + u8"/video", folder + u8"/" + orvcore::ToUTF8(std::to_string(i)),
                                            [](bool ok, const UTF8String&) { told += ok ? 1000 : 1; });
    }
}

// Workers that wait for the client.
bool BeginFetches(const UTF8String& url)
{
    bool posted = true;
    for (int i = 0; i < 2; ++i) {
        posted = orvcore::GetCPUBoundExecutor()->Post([url] {
            orvappsupport::FetchResponseForURL(url + u8"/fetch");
        }) && posted;
    }
    return posted;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        return 2;
    }
    const UTF8String url = orvcore::ToUTF8(argv[1]);
    const UTF8String folder = orvcore::ToUTF8(argv[2]);
    const std::string_view how = argv[3];
    orvappsupport::StockConnectionSettings settings;
    settings.baseURL = url;
    const auto connection = std::make_shared<ClientStockConnection>(settings);
    const auto manager = std::make_shared<GraphicSourceManager>(u"");
    manager->AddGraphicSource(std::make_shared<StockSource>(connection, TemplateType::MotionGraphics));
    manager->RequestGraphics({u"a"});
    StockPreviewDownloadManager::Initialize();
    if (!BeginFetches(url)) {
        return 3;
    }
    BeginSearches(connection, how == "handler");
    BeginDownloads(url, folder);
    if (how == "handler") {
        while (orvcore::WaitForMainThreadCalls(std::chrono::minutes(1))) { // until the handler has ended the process
        }
        return 4;
    }
    // One search that the service answers: the others are under way.
    if (!orvappsupport::FetchResponseForURL(url + u8"/answered")) {
        return 5;
    }
    if (how == "terminate") {
        StockPreviewDownloadManager::Terminate();
        if (told != kEach) {
            return 6;
        }
        manager->Shutdown();
    }
    if (how == "shutdown" || how == "terminate") {
        orvcore::ShutdownExecutors();
        const int before = told;
        BeginSearches(connection, false); // refused, and told so
        orvappsupport::FlushMediaDownloads();
        return before == 2 * kEach && told == 3 * kEach && !orvappsupport::FetchResponseForURL(url) ? 0 : 7;
    }
    return 0;
}
