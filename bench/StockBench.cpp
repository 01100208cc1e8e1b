// The stock client beside the bare libraries on the same loopback service in the same run: a thousand results in pages
// of a hundred through a manager, against libcurl asking for the same pages one after the other and simdjson parsing
// them; a hundred previews at once, against the program curl downloading them in parallel.
#include <manager/GraphicSourceManager.h>
#include <orvappsupport/StockTransfers.h>
#include <orvcore/files/Files.h>
#include <orvcore/files/Paths.h>
#include <orvcore/files/TemporaryFolder.h>
#include <orvcore/tasks/MainThread.h>
#include <stock/StockSource.h>
#include <tools/http/Server.h>
#include <tools/stock/StockService.h>

#include <curl/curl.h>
#include <simdjson.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <future>

namespace {

namespace fs = std::filesystem;
using orvcapsule::GraphicSourceManager;
using orvtools::http::Request;
using orvtools::http::Response;

constexpr int kResults = 1000;
constexpr int kPage = 100;
constexpr int kPreviews = 100;
constexpr std::size_t kPreviewBytes = std::size_t{512} << 10;
constexpr std::size_t kRounds = 21;
// What a manager asks for.
constexpr const char* kQuery =
    "/v1/search?gallery_premium=all&content_template=1&template_type=7&source=zelt&api_version=2.2&columns="
    "description,creator_name,keywords,width,height,thumbnail_url,thumbnail_240_url,thumbnail_html_tag,"
    "thumbnail_width,thumbnail_height,video_preview_url,size_bytes,zelt_metadata_url,template_categories"
    "&count=100&first=";

template <class Work>
double Milliseconds(const Work& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

std::size_t Append(char* data, std::size_t, std::size_t count, void* body)
{
    static_cast<std::string*>(body)->append(data, count);
    return count;
}

// The bare libraries: one connection, a page after the other, every row looked at.
int AskBare(const std::string& origin)
{
    int rows = 0;
    CURL* const handle = curl_easy_init();
    simdjson::dom::parser parser;
    std::string body;
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &Append);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &body);
    curl_easy_setopt(handle, CURLOPT_PROXY, "");
    for (int first = 0; first < kResults; first += kPage) {
        body.clear();
        curl_easy_setopt(handle, CURLOPT_URL, (origin + kQuery + std::to_string(first)).c_str());
        if (curl_easy_perform(handle) == CURLE_OK) {
            rows += static_cast<int>(parser.parse(body)["rows"].get_array().value().size());
        }
    }
    curl_easy_cleanup(handle);
    return rows;
}

int AskManager(const std::string& origin)
{
    int rows = 0;
    orvappsupport::StockConnectionSettings settings;
    settings.baseURL = orvcore::ToUTF8(origin);
    const auto manager = std::make_shared<GraphicSourceManager>(u"");
    manager->AddGraphicSource(std::make_shared<orvcapsule::StockSource>(
        std::make_shared<orvcapsule::ClientStockConnection>(settings), orvcapsule::TemplateType::MotionGraphics));
    manager->SetStockRequestCallback(std::make_shared<GraphicSourceManager::RequestCallback>(
        [&rows](GraphicSourceManager::ResultMap& page, int, int) { rows += static_cast<int>(page.size()); }));
    manager->RequestDefaultGraphicSet({}, false);
    while (rows < kResults && orvcore::WaitForMainThreadCalls(std::chrono::seconds(10))) {
        orvcore::RunMainThreadCalls();
    }
    manager->Shutdown();
    return rows;
}

bool DownloadAll(const std::string& origin, const fs::path& folder)
{
    std::promise<void> all;
    std::atomic<int> ended = 0;
    std::atomic<int> good = 0;
    for (int i = 0; i < kPreviews; ++i) {
        const std::string name = std::to_string(i);
        orvappsupport::DownloadMediaFromURL(orvcore::ToUTF8(origin + "/video/" + name),
                                            orvcore::PathToUTF8(folder / (name + ".mp4")), [&](bool ok, const auto&) {
                                                good += ok ? 1 : 0;
                                                if (++ended == kPreviews) {
                                                    all.set_value();
                                                }
                                            });
    }
    all.get_future().wait();
    return good == kPreviews;
}

void WriteList(const fs::path& list, const std::string& origin, const fs::path& folder)
{
    std::ofstream out(list);
    for (int i = 0; i < kPreviews; ++i) {
        const std::string name = std::to_string(i);
        out << "url = \"" << origin << "/video/" << name << "\"\noutput = \"" << (folder / name).string() << ".mp4\"\n";
    }
}

// Asks both in turn, and prints the best times and the middle one of the rounds' ratios: what else the machine does
// changes from round to round. False when one of them failed.
template <class Own, class Floor, class Prepare>
bool Compare(const char* what, const Own& own, const Floor& floor, const Prepare& prepare)
{
    prepare();
    double ownTime = 1e9;
    double floorTime = 1e9;
    bool good = own() && floor(); // not counted: connections, caches
    std::array<double, kRounds> ratios{};
    for (double& ratio : ratios) {
        prepare();
        const double floorNow = Milliseconds([&] { good = floor() && good; });
        const double ownNow = Milliseconds([&] { good = own() && good; });
        floorTime = std::min(floorTime, floorNow);
        ownTime = std::min(ownTime, ownNow);
        ratio = ownNow / floorNow;
    }
    const auto middle = ratios.begin() + kRounds / 2;
    std::nth_element(ratios.begin(), middle, ratios.end());
    std::printf("%s: at best %.1f ms, floor %.1f ms; middle ratio %.2f%s\n", what, ownTime, floorTime, *middle,
                good ? "" : " FAILED");
    return good;
}

} // namespace

int main()
{
    const orvcore::TemporaryFolder folder(u8"orvcapsule-bench");
    std::ofstream(folder.Path() / "video.mp4", std::ios::binary) << std::string(kPreviewBytes, 'v');
    const orvtools::http::Server server([&](const Request&) {
        Response video;
        video.headers = {{"Content-Type", "video/mp4"}};
        video.body = orvtools::http::FileBody{folder.Path() / "video.mp4"};
        return video;
    });
    const std::string origin = server.Origin();
    const orvtools::stock::StockService service({.folder = ORV_SAMPLES_DIR, .copies = kResults});
    bool good = Compare(
        "1,000 results in pages of 100", [&] { return AskManager(service.Origin()) == kResults; },
        [&] { return AskBare(service.Origin()) == kResults; }, [] {});

    const fs::path own = folder.Path() / "own";
    const fs::path floor = folder.Path() / "floor";
    const auto emptyFolders = [&] { // a preview is new
        for (const fs::path& each : {own, floor}) {
            orvcore::RemoveTree(each);
            orvcore::EnsureDirectory(each);
        }
    };
    WriteList(folder.Path() / "list", origin, floor);
    const std::string curl = "curl --silent --fail --parallel --noproxy '*' --config '" +
                             (folder.Path() / "list").string() + "' 2> /dev/null"; // which has progress, silent or not
    good = Compare(
               "100 previews of 512 KiB at once", [&] { return DownloadAll(origin, own); },
               [&] { return std::system(curl.c_str()) == 0; }, emptyFolders) &&
           good;
    return good ? 0 : 1;
}
