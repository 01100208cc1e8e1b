// listing_exit FOLDER return|shutdown: ends while a listing reads the packages in FOLDER/root, with 0 when it does so
// in good order.
#include <manager/GraphicSourceManager.h>
#include <orvappsupport/Progress.h>
#include <orvcore/MainThread.h>
#include <orvcore/Paths.h>
#include <sources/LocalGraphicsSource.h>

#include <string_view>

namespace {

// Until the first packages are read.
bool BeginListing(orvcapsule::GraphicSourceManager& manager)
{
    bool moved = false;
    orvappsupport::SetProgressObserver(
        [&moved](const orvappsupport::ProgressReport& report) { moved = moved || report.position > report.lower; });
    manager.RequestDefaultGraphicSet({}, true);
    while (!moved && orvcore::WaitForMainThreadCalls(std::chrono::minutes(1))) {
        orvcore::RunMainThreadCalls();
    }
    orvappsupport::SetProgressObserver({});
    return moved;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        return 2;
    }
    const std::filesystem::path folder = orvcore::PathFromUTF8(orvcore::AsUTF8(argv[1]));
    const std::vector<std::pair<orvcore::UTF8String, orvcore::UTF8String>> noFolders;
    const auto manager = std::make_shared<orvcapsule::GraphicSourceManager>(orvcore::PathToUTF16(folder / "index.db"));
    manager->AddGraphicSource(
        std::make_shared<orvcapsule::LocalGraphicsSource>(orvcore::PathToUTF16(folder / "root"), noFolders));
    if (!BeginListing(*manager)) {
        return 1;
    }
    if (std::string_view(argv[2]) == "shutdown") {
        manager->Shutdown();
        orvcore::StopMainThreadCalls();
    }
    return 0;
}
