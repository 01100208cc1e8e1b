// The smallest host that browses templates: lists a folder, searches in it, and shuts down. It has no event loop, so it
// runs the library's main-thread calls itself. docs/hosting.md tells what a larger host adds.

#include <manager/GraphicSourceManager.h>
#include <orvcore/files/Paths.h>
#include <orvcore/files/TemporaryFolder.h>
#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/MainThread.h>
#include <sources/LocalGraphicsSource.h>
#include <tools/support/Arguments.h>
#include <tools/support/Console.h>

#include <iostream>
#include <string>

namespace {

using orvcapsule::GraphicSourceManager;

// Runs main-thread calls until `done`; a host with an event loop has this work done there instead.
void RunUntil(const bool& done)
{
    while (!done) {
        orvcore::WaitForMainThreadCalls(std::chrono::seconds(1));
        orvcore::RunMainThreadCalls();
    }
}

// Lists everything. A browse panel would show the entries as they are found (the entries-found callback).
void List(GraphicSourceManager& manager)
{
    bool done = false;
    manager.SetLocalRequestCallback(std::make_shared<GraphicSourceManager::RequestCallback>(
        [&done](GraphicSourceManager::ResultMap& results, int /*first*/, int total) {
            std::cout << total << " templates\n";
            for (const auto& [position, entry] : results) {
                std::cout << "  " << orvcore::ToNarrow(entry->name) << "  " << entry->frameWidth << " x "
                          << entry->frameHeight << "  " << entry->durationMs << " ms\n";
            }
            done = true;
        }));
    manager.RequestDefaultGraphicSet({}, false);
    RunUntil(done);
    manager.SetLocalRequestCallback(nullptr); // it refers to this function's variable
}

// Searches the index that the listing has filled.
void Search(GraphicSourceManager& manager, const std::vector<orvcore::UTF16String>& terms)
{
    bool done = false;
    manager.SetDatabaseRequestCallback(
        std::make_shared<GraphicSourceManager::TextSetCallback>([&done](const std::set<orvcore::UTF8String>& paths) {
            std::cout << "found:\n";
            for (const orvcore::UTF8String& path : paths) {
                std::cout << "  " << orvcore::ToNarrow(path) << '\n';
            }
            done = true;
        }));
    manager.RequestGraphics(terms);
    RunUntil(done);
    manager.SetDatabaseRequestCallback(nullptr);
}

} // namespace

int main(int argc, char** argv)
{
    orvtools::SetConsoleUTF8(); // this line and the next are a program's; a host has its own
    const std::vector<std::string> arguments = orvtools::UTF8Arguments(argc, argv);
    if (arguments.size() < 2) {
        std::cerr << "usage: browse FOLDER [TERM...]\n";
        return 2;
    }
    const orvcore::UTF16String folder = orvcore::ToUTF16(std::string_view(arguments[1]));
    std::vector<orvcore::UTF16String> terms;
    for (std::size_t i = 2; i < arguments.size(); ++i) {
        terms.push_back(orvcore::ToUTF16(std::string_view(arguments[i])));
    }

    // A real host keeps its index from one start to the next, in its own data folder.
    const orvcore::TemporaryFolder data(u8"orvcapsule-browse");
    const auto manager = std::make_shared<GraphicSourceManager>(orvcore::PathToUTF16(data.Path() / "index.db"));
    manager->AddGraphicSource(std::make_shared<orvcapsule::LocalGraphicsSource>(folder));
    List(*manager);
    if (!terms.empty()) {
        Search(*manager, terms);
    }
    manager->Shutdown();
    orvcore::StopMainThreadCalls(); // nothing that was queued refers to this host any more
    orvcore::ShutdownExecutors();   // and no task uses the index, whose folder goes now
    return 0;
}
