#include <tools/zelt/panel/Routes.h>

#include <tools/zelt/output/Errors.h>
#include <tools/zelt/output/Output.h>
#include <tools/zelt/panel/EntryRow.h>
#include <tools/zelt/panel/PageFiles.h>
#include <tools/zelt/panel/Responses.h>
#include <tools/zelt/panel/Saving.h>
#include <tools/zelt/panel/TemplateJSON.h>

#include <orvcore/files/Paths.h>
#include <orvcore/json/JSON.h>
#include <orvcore/tasks/MainThread.h>
#include <sources/SearchIndex.h>
#include <sources/SourceNames.h>
#include <tools/http/Guard.h>
#include <tools/http/Later.h>
#include <tools/http/Stream.h>
#include <tools/support/ASCII.h>

#include <algorithm>
#include <charconv>

// Only the page may ask. The path begins with a secret that only the page that `zelt browse` opened knows; `Host` and
// `Origin` are checked before it, so that another page of the browser cannot even try secrets (http/Guard.h). A POST
// needs the type application/json besides, which a form of another page cannot send without the browser asking first.
//
// What a request names is a number of the catalogue or a file of the page, never a path: nothing that a client sends
// becomes a path of the disk but the name of a copy, which Saving judges. Requests that change something for the
// manager are queued for the main thread and answered at once; the page learns the outcome by its events.

namespace zelt {

namespace {

namespace http = orvtools::http;
namespace json = orvcore::serialization;
using orvcore::AsNarrow;

constexpr std::size_t kMostTerms = 50;

std::vector<orvcore::UTF16String> TermsOf(const http::Request& request)
{
    std::vector<orvcore::UTF16String> terms;
    for (const auto& [key, value] : request.query) {
        if (key == "q" && terms.size() < kMostTerms) {
            terms.push_back(orvcore::ToUTF16(value));
        }
    }
    return terms;
}

// A number in the query; 0 when it is none.
template <class Number>
Number NumberOf(const http::Request& request, std::string_view name)
{
    const std::string* text = request.FindQuery(name);
    Number number = 0;
    if (text != nullptr) {
        std::from_chars(text->data(), text->data() + text->size(), number);
    }
    return number;
}

bool IsLocale(const std::string& text)
{
    return !text.empty() && text.size() <= 32 && std::all_of(text.begin(), text.end(), [](char c) {
        return orvtools::IsLetter(c) || orvtools::IsDigit(c) || c == '_';
    });
}

} // namespace

Routes::Routes(Panel& panel, std::string secret)
    : panel_(panel)
    , secret_(std::move(secret))
{
}

http::Response Routes::Answer(const Request& request)
{
    Response response;
    if (!http::IsHostLoopback(request, port_) || !http::IsSameOrigin(request)) {
        response = http::ErrorResponse(403, "this page answers to itself alone");
    } else {
        response = Dispatch(request);
    }
    http::Protect(response);
    return response;
}

http::Response Routes::Dispatch(const Request& request)
{
    const std::string_view path = std::string_view(request.path).substr(1);
    const std::size_t slash = path.find('/');
    if (!http::IsSecret(path.substr(0, slash), secret_)) {
        return http::ErrorResponse(403, "this address is not, or no longer, that of a page; zelt browse prints it");
    }
    if (slash == path.npos) { // the page's own links need the slash
        Response response = http::ErrorResponse(308, "the page lies below");
        response.headers.emplace_back("Location", '/' + secret_ + '/');
        return response;
    }
    const std::string name(path.substr(slash + 1));
    return AnswerOrWhy([&] {
        if (request.method == "GET" || request.method == "HEAD") {
            return Get(name, request);
        }
        return request.method == "POST" ? Post(name, request) : Refusal(405, "only GET and POST are answered");
    });
}

// What asks the stock service waits for it on the shelf's threads, of which a client can only hold up its like.
http::Response Routes::FromStock(PostToShelf post, std::function<Response(StockShelf&)> make)
{
    Response response;
    const auto later = std::make_shared<http::Later>();
    response.body = later;
    (panel_.Stock()->*post)([&shelf = *panel_.Stock(), later, make = std::move(make)] {
        if (later->IsAwaited()) { // a page that scrolls on drops what it asked for
            later->Answer(AnswerOrWhy([&] { return make(shelf); }));
        }
    });
    return response;
}

http::Response Routes::Get(const std::string& name, const Request& request)
{
    if (name == "events") {
        Response response;
        response.headers = {{"Content-Type", "text/event-stream"}, {"Cache-Control", "no-store"}};
        response.body = panel_.Pages().Open();
        return response;
    }
    if (name == "entries") {
        return JSONResponse(panel_.Templates().ChangesAfter(NumberOf<std::uint64_t>(request, "after")));
    }
    if (name == "search" || name == "tags") {
        return name == "search" ? Search(request) : Tags(request);
    }
    if (name == "stock" && panel_.Stock() != nullptr) {
        return FromStock(&StockShelf::PostSearch,
                         [terms = TermsOf(request), first = std::max(0, NumberOf<int>(request, "first"))](
                             StockShelf& shelf) { return JSONResponse(shelf.PageAsJSON(terms, first)); });
    }
    if (name == "poster" || name == "video") {
        return Preview(request, name == "video");
    }
    if (name == "details") {
        return Details(request);
    }
    if (name == "check") {
        return JSONResponse(CheckAsJSON(*EntryOf(request)));
    }
    const std::string_view wanted = name.empty() ? std::string_view("index.html") : name;
    for (const PageFile& file : PageFiles()) {
        if (file.name == wanted) {
            return PageResponse(file);
        }
    }
    return Refusal(404, "there is no such file");
}

http::Response Routes::Post(const std::string& name, const Request& request)
{
    // Forms of other pages cannot send this type without being asked first.
    const std::string* type = request.FindHeader("Content-Type");
    if (type == nullptr || !type->starts_with("application/json")) {
        return Refusal(415, "application/json is needed");
    }
    if (name == "save") {
        return SaveTemplate(request);
    }
    const auto onMainThread = [](auto call) {
        orvcore::AsyncCallFromMainThread(std::move(call));
        return JSONResponse("{}", 202);
    };
    if (name == "cancel") {
        return onMainThread([&panel = panel_] { panel.Cancel(); });
    }
    if (name == "refresh") {
        return onMainThread([&panel = panel_] { panel.Refresh(); });
    }
    if (name == "language") {
        const json::Variant body = json::JSONParse(orvcore::AsUTF8(request.body));
        const auto* language = json::AsString(json::GetVariantInObject(body, u8"language"));
        if (language == nullptr || !IsLocale(std::string(AsNarrow(*language)))) {
            return Refusal(400, "that is no locale");
        }
        return onMainThread(
            [&panel = panel_, chosen = std::string(AsNarrow(*language))] { panel.SetLanguage(chosen); });
    }
    return Refusal(404, "there is no such request");
}

Catalogue::Entry Routes::EntryOf(const Request& request)
{
    const std::string* text = request.FindQuery("id");
    std::uint64_t id = 0;
    const bool isNumber =
        text != nullptr && std::from_chars(text->data(), text->data() + text->size(), id).ec == std::errc();
    Catalogue::Entry entry = isNumber ? panel_.Templates().Find(id) : nullptr;
    if (isNumber && panel_.Stock() != nullptr && id >= StockShelf::kFirstNumber) {
        entry = panel_.Stock()->Find(id);
    }
    if (!entry) {
        throw UsageError("this template is no longer there");
    }
    return entry;
}

http::Response Routes::Preview(const Request& request, bool isVideo)
{
    const auto entry = EntryOf(request);
    if (const auto stock = boost::dynamic_pointer_cast<orvcapsule::StockCapsuleEntry>(entry)) {
        return isVideo ? StockVideo(stock) : FromStock(&StockShelf::PostFetch, [stock](StockShelf& shelf) {
            return PreviewResponse(shelf.PosterOf(stock), false);
        });
    }
    // Made now where it is missing: the working folder may have been trimmed since the listing.
    return PreviewResponse(
        isVideo ? entry->videoPreviewPath : panel_.Host().GetManager().GetThumbnailPath(entry, nullptr), isVideo);
}

http::Response Routes::StockVideo(const StockShelf::Entry& entry)
{
    Response response;
    const auto later = std::make_shared<http::Later>();
    response.body = later;
    panel_.Stock()->FindVideo(entry,
                              [later](const orvcore::UTF8String& path) { later->Answer(PreviewResponse(path, true)); });
    return response;
}

http::Response Routes::Details(const Request& request)
{
    const auto entry = EntryOf(request);
    if (const auto stock = boost::dynamic_pointer_cast<orvcapsule::StockCapsuleEntry>(entry)) {
        return FromStock(&StockShelf::PostFetch, [stock](StockShelf& shelf) {
            return JSONResponse(StockDetailsAsJSON(*stock, shelf.CapsuleOf(stock).get()));
        });
    }
    const auto& folders = panel_.Host().GetPlaces().folders;
    const std::filesystem::path copies = CopyFolderOf(*entry, folders);
    DetailsFacts facts{.folder = FolderOf(*entry),
                       .editable = !copies.empty(),
                       .replaceable = entry->GetSourceID() == orvcapsule::kLocalSourceID};
    if (facts.editable) {
        facts.copyName = FreeCopyName(*entry, copies);
        facts.copyFolder = ToText(copies);
    }
    return JSONResponse(DetailsAsJSON(*entry, facts));
}

http::Response Routes::Search(const Request& request) const
{
    std::set<orvcore::UTF16String> paths;
    orvcapsule::QueryRapidFindDB(TermsOf(request), paths);
    std::string ids;
    for (const std::uint64_t id : panel_.Templates().NumbersOf(paths)) {
        ids.append(ids.empty() ? "{\"ids\":[" : ",").append(std::to_string(id));
    }
    return JSONResponse(ids.empty() ? "{\"ids\":[]}" : ids.append("]}"));
}

http::Response Routes::Tags(const Request& request) const
{
    constexpr std::size_t kMostTags = 8;
    const std::string* text = request.FindQuery("q");
    std::set<orvcore::UTF16String> tags;
    orvcapsule::GetTags(orvcore::ToUTF16(text != nullptr ? *text : ""), tags);
    std::vector<std::string> shortest;
    shortest.reserve(tags.size());
    for (const auto& tag : tags) {
        shortest.push_back(orvcore::ToNarrow(tag));
    }
    std::stable_sort(shortest.begin(), shortest.end(),
                     [](const std::string& a, const std::string& b) { return a.size() < b.size(); });
    shortest.resize(std::min(shortest.size(), kMostTags));
    json::JSONTextWriter writer;
    writer.BeginObject();
    WriteList(writer, "tags", shortest);
    writer.EndObject();
    return JSONResponse(orvcore::ToNarrow(writer.Take()));
}

http::Response Routes::SaveTemplate(const Request& request)
{
    const SaveRequest wanted = ReadSaveRequest(request.body);
    const auto entry = panel_.Templates().Find(wanted.id);
    if (!entry) {
        return Refusal(404, "this template is no longer there");
    }
    const Browser& host = panel_.Host();
    const std::filesystem::path stored = Save(*entry, wanted, host.GetPlaces().folders, host.GetInterrupt());
    const std::string path = ToText(stored);
    orvcore::AsyncCallFromMainThread(
        [&panel = panel_, path] { panel.RefreshFolder(ToText(ToPath(path).parent_path()), {path}); });
    json::JSONTextWriter writer;
    writer.BeginObject();
    writer.Key("id");
    writer.UInt(panel_.Templates().NumberOf(path));
    writer.Key("file");
    writer.String(std::string_view(ToText(stored.filename())));
    writer.EndObject();
    return JSONResponse(orvcore::ToNarrow(writer.Take()));
}

} // namespace zelt
