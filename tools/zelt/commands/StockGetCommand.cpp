#include <tools/zelt/commands/Commands.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/output/Progress.h>
#include <tools/zelt/support/OutputFile.h>
#include <tools/zelt/support/StockPlace.h>
#include <tools/zelt/support/TempFolder.h>

#include <orvappsupport/StockSearch.h>
#include <orvappsupport/StockTransfers.h>
#include <orvcore/files/FileSystem.h>
#include <orvcore/json/JSON.h>
#include <package/PackageNames.h>
#include <validation/TemplateReading.h>

#include <future>

namespace zelt {

namespace {

namespace fs = std::filesystem;
namespace search = orvappsupport::search;
using orvcore::UTF8String;

// Where an asset's files are; empty: it has none.
struct AssetURLs {
    UTF8String description;
    UTF8String picture;
    UTF8String video;
};

AssetURLs FindAsset(const StockGetOptions& options, const InterruptWatch& interrupt)
{
    const UTF8String id = orvcore::ToUTF8(options.id);
    // The handler refers to it, and is called exactly once, also after an interruption; so it is waited for without a
    // limit of its own. The client's time-outs end a service that is silent.
    std::promise<std::pair<search::Error, search::Results>> promise;
    search::Search(
        {}, {{search::kSearchParameter_ID, id}},
        {search::kResultColumn_ZeltMetadataURL, search::kResultColumn_ThumbnailURL,
         search::kResultColumn_VideoPreviewURL},
        ConnectStock(options.url), 0, 1,
        [&](search::Error error, const search::Results& results) {
            promise.set_value({error, results});
        },
        [&] { return !interrupt.IsRaised(); });
    const auto answer = promise.get_future().get();
    const search::Results& results = answer.second;
    interrupt.Check();
    if (answer.first != search::Error::None) {
        throw FileError(options.url, orvcore::ToNarrow(results.message));
    }
    if (results.rows.empty() || results.rows.front().id != id) { // a service that does not know the parameter
        throw FileError(options.id, "the service has no such template");
    }
    const auto url = [&](const char8_t* column) { return results.GetText(results.rows.front(), column); };
    return {url(search::kResultColumn_ZeltMetadataURL), url(search::kResultColumn_ThumbnailURL),
            url(search::kResultColumn_VideoPreviewURL)};
}

// Gets one file after the other into a folder, with one bar for all.
class Fetcher {
public:
    Fetcher(const fs::path& folder, const InterruptWatch& interrupt, std::size_t files)
        : folder_(folder)
        , interrupt_(interrupt)
        , files_(files)
    {
    }

    /// Each puts the file's name into Names.
    void Description(const UTF8String& url);
    void Picture(const UTF8String& url);
    void Video(const UTF8String& url);

    const std::vector<fs::path>& Names() const noexcept
    {
        return names_;
    }

private:
    orvappsupport::TransferProgress Report();
    orvappsupport::NetworkResponse Fetch(const UTF8String& url, orvappsupport::TransferOptions options);
    void Add(fs::path name, std::string_view content);

    const fs::path& folder_;
    const InterruptWatch& interrupt_;
    const std::size_t files_;
    std::vector<fs::path> names_;
    Progress progress_{"getting"};
};

orvappsupport::TransferProgress Fetcher::Report()
{
    return [this, done = static_cast<double>(names_.size())](std::uint64_t received, std::uint64_t announced) {
        const double part = announced == 0 ? 0 : static_cast<double>(received) / static_cast<double>(announced);
        progress_.Set((done + part) / static_cast<double>(files_));
        return !interrupt_.IsRaised();
    };
}

orvappsupport::NetworkResponse Fetcher::Fetch(const UTF8String& url, orvappsupport::TransferOptions options)
{
    options.progress = Report();
    const auto response = orvappsupport::FetchResponseForURL(url, options);
    interrupt_.Check();
    if (!response) {
        throw FileError(orvcore::ToNarrow(url), "it cannot be fetched, or not to its end");
    }
    if (!response->IsSuccess()) {
        throw FileError(orvcore::ToNarrow(url),
                        "the service answered with status " + std::to_string(response->statusCode));
    }
    return std::move(*response);
}

void Fetcher::Add(fs::path name, std::string_view content)
{
    WriteText(folder_ / name, content);
    names_.push_back(std::move(name));
}

void Fetcher::Description(const UTF8String& url)
{
    orvappsupport::TransferOptions options;
    options.maxBytes = orvcore::serialization::kMaxJSONSize;
    const std::string text = Fetch(url, options).body;
    const auto definition = orvcapsule::ReadDefinition(orvcore::ToUTF8(text));
    if (!definition.capsule) {
        throw FileError(orvcore::ToNarrow(url), definition.refusals.front().text);
    }
    Add(orvcapsule::kJSONFileName, text);
}

void Fetcher::Picture(const UTF8String& url)
{
    const auto response = Fetch(url, {});
    const std::string type = response.GetContentType();
    if (type != "image/png" && type != "image/jpeg") {
        throw FileError(orvcore::ToNarrow(url), "it is neither a PNG nor a JPEG picture");
    }
    Add(type == "image/png" ? fs::path(orvcapsule::kThumbFileName) : fs::path("thumb.jpg"), response.body);
}

void Fetcher::Video(const UTF8String& url)
{
    const fs::path name = orvcapsule::kVideoThumbFileName;
    orvappsupport::TransferOptions options = orvappsupport::MediaOptions();
    options.progress = Report();
    std::promise<bool> promise;
    orvappsupport::DownloadMediaFromURL(
        url, orvcore::PathToUTF8(folder_ / name), [&](bool ok, const UTF8String&) { promise.set_value(ok); }, options);
    const bool ok = promise.get_future().get();
    interrupt_.Check();
    if (!ok) {
        throw FileError(orvcore::ToNarrow(url), "it cannot be downloaded, or not to its end");
    }
    names_.push_back(name);
}

std::vector<fs::path> FetchAll(const AssetURLs& places, const fs::path& folder, const InterruptWatch& interrupt)
{
    const auto isThere = [](const UTF8String& url) { return url.empty() ? std::size_t{0} : std::size_t{1}; };
    Fetcher fetcher(folder, interrupt, isThere(places.description) + isThere(places.picture) + isThere(places.video));
    if (!places.description.empty()) {
        fetcher.Description(places.description);
    }
    if (!places.picture.empty()) {
        fetcher.Picture(places.picture);
    }
    if (!places.video.empty()) {
        fetcher.Video(places.video);
    }
    return fetcher.Names();
}

} // namespace

ExitCode RunStockGet(const StockGetOptions& options)
{
    return OnFile(options.output, [&] {
        const InterruptWatch interrupt;
        const fs::path output = ToPath(options.output);
        const TempFolder folder;
        const std::vector<fs::path> names = FetchAll(FindAsset(options, interrupt), folder.Path(), interrupt);
        if (names.empty()) {
            throw FileError(options.id, "the service has no file of this template");
        }
        orvcore::EnsureDirectory(output);
        for (const fs::path& name : names) {
            Deliver(folder.Path() / name, output / name, {}, &interrupt);
        }
    });
}

} // namespace zelt
