// The smallest host that browses a stock service: searches it page by page, gets the preview of the first result, and
// shuts down. Try it on `zelt stock serve FOLDER`, which prints its URL. docs/hosting.md tells what a larger host adds.

#include <manager/GraphicSourceManager.h>
#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/MainThread.h>
#include <stock/StockCapsuleEntry.h>
#include <stock/StockPreviewDownloadManager.h>
#include <stock/StockSource.h>
#include <tools/support/Arguments.h>
#include <tools/support/Console.h>

#include <iostream>
#include <string>

namespace {

using orvcapsule::GraphicSourceManager;
using orvcapsule::StockPreviewDownloadManager;

// Runs main-thread calls until `done`; a host with an event loop has this work done there instead.
void RunUntil(const bool& done)
{
    while (!done) {
        orvcore::WaitForMainThreadCalls(std::chrono::seconds(1));
        orvcore::RunMainThreadCalls();
    }
}

// Prints each page as it comes. The first result, or none after an error.
GraphicSourceManager::EntryPtr Search(GraphicSourceManager& manager, const std::vector<orvcore::UTF16String>& terms)
{
    bool done = false;
    GraphicSourceManager::EntryPtr firstResult;
    manager.SetStockRequestCallback(std::make_shared<GraphicSourceManager::RequestCallback>(
        [&](GraphicSourceManager::ResultMap& page, int first, int total) {
            for (const auto& [position, entry] : page) {
                std::cout << position << "  " << orvcore::ToNarrow(entry->name) << '\n';
                firstResult = firstResult ? firstResult : entry;
            }
            const int next = first + static_cast<int>(page.size());
            if (page.empty() || next >= total || next >= 1000) { // a request brings no more than a thousand
                std::cout << total << " results\n";
                done = true;
            }
        }));
    manager.SetStockFailureCallback(std::make_shared<GraphicSourceManager::StockFailureCallback>(
        [&done](const orvcapsule::StockSearchFailure& failure) {
            std::cerr << "stock: " << orvcore::AsNarrow(failure.message) << '\n';
            done = true;
        }));
    manager.RequestGraphics(terms);
    RunUntil(done);
    manager.SetStockRequestCallback(nullptr); // they refer to this function's variables
    manager.SetStockFailureCallback(nullptr);
    return firstResult;
}

// Waits for one preview; a panel asks for those that come into view and goes on.
void ShowPreview(const GraphicSourceManager::EntryPtr& entry)
{
    const auto done = std::make_shared<bool>(false); // a download may end after this function
    const auto tell = [done](const GraphicSourceManager::EntryPtr&) {
        orvcore::AsyncCallFromMainThread([done] { *done = true; }); // this is the client's thread
    };
    StockPreviewDownloadManager::GetInstance()->DownloadPreview(
        std::make_shared<StockPreviewDownloadManager::OnReady>(tell), entry);
    for (int second = 0; entry->GetVideoPreviewPath().empty() && !*done && second < 10; ++second) {
        orvcore::WaitForMainThreadCalls(std::chrono::seconds(1)); // a download that fails is not told
        orvcore::RunMainThreadCalls();
    }
    std::cout << "preview: " << orvcore::AsNarrow(entry->GetVideoPreviewPath()) << '\n';
}

} // namespace

int main(int argc, char** argv)
{
    orvtools::SetConsoleUTF8(); // this line and the next are a program's; a host has its own
    const std::vector<std::string> arguments = orvtools::UTF8Arguments(argc, argv);
    if (arguments.size() < 2) {
        std::cerr << "usage: stock URL [TERM...]\n";
        return 2;
    }
    std::vector<orvcore::UTF16String> terms;
    for (std::size_t i = 2; i < arguments.size(); ++i) {
        terms.push_back(orvcore::ToUTF16(std::string_view(arguments[i])));
    }

    orvappsupport::StockConnectionSettings settings; // with the user's token, where the service needs one
    settings.baseURL = orvcore::ToUTF8(arguments[1]);
    settings.product = u8"stock-example/1";
    const auto manager = std::make_shared<GraphicSourceManager>(u""); // no index: stock mode
    manager->AddGraphicSource(std::make_shared<orvcapsule::StockSource>(
        std::make_shared<orvcapsule::ClientStockConnection>(settings), orvcapsule::TemplateType::MotionGraphics));
    StockPreviewDownloadManager::Initialize();
    const GraphicSourceManager::EntryPtr first = Search(*manager, terms);
    if (first) {
        ShowPreview(first);
    }
    manager->Shutdown();
    StockPreviewDownloadManager::Terminate();
    orvcore::StopMainThreadCalls(); // nothing that was queued refers to this host any more
    orvcore::ShutdownExecutors();   // and no thread of the library is left
    return first ? 0 : 1;
}
