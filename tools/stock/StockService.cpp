#include <tools/stock/StockService.h>

#include <tools/http/Guard.h>
#include <tools/http/Server.h>
#include <tools/stock/detail/Answers.h>
#include <tools/stock/detail/Catalogue.h>
#include <tools/stock/detail/Page.h>
#include <tools/stock/detail/Previews.h>
#include <tools/stock/detail/Spoil.h>

#include <orvcore/text/Strings.h>
#include <package/CapsuleZip.h>

// The service answers well first and is spoilt afterwards (detail/Spoil): so what a client is tried with is a right
// answer in all but what the faults say. Only a status and a redirect take the answer's place.
//
// A browser may run on the same machine, so a loopback service refuses foreign names (http/Guard.h). One that was told
// to listen elsewhere is asked by names that it cannot know.

namespace orvtools::stock {

namespace {

using detail::Asset;
using detail::ErrorAnswer;
using detail::Preview;
using http::Request;
using http::Response;

// The contract's limit; the client has the same (kMaxURLBytes).
constexpr std::size_t kMaxURL = 8192;
constexpr std::size_t kMaxHeader = 64 << 10; // a URL that is too long is to be answered with its own status

Response FileAnswer(const Preview& preview)
{
    if (preview.file.empty()) {
        return ErrorAnswer(404, "The asset has no such file");
    }
    Response response;
    response.headers = {{"Content-Type", std::string(preview.type)}};
    response.body = http::FileBody{preview.file};
    return response;
}

http::ServerOptions OptionsOf(const ServiceOptions& options)
{
    http::ServerOptions server;
    server.address = options.address;
    server.port = options.port;
    server.limits.headerBytes = kMaxHeader;
    server.refuse = [](unsigned status, std::string_view why) { return ErrorAnswer(status, why); };
    return server;
}

} // namespace

class StockService::Impl {
public:
    explicit Impl(ServiceOptions options)
        : options_(std::move(options))
        , catalogue_(options_.folder, options_.copies)
        , faults_(options_.faults)
        , server_([this](const Request& request) { return Answer(request); }, OptionsOf(options_))
    {
    }

    const detail::Catalogue& Catalogue() const
    {
        return catalogue_;
    }
    const http::Server& Server() const
    {
        return server_;
    }
    void SetFaults(Faults faults)
    {
        faults_.Set(std::move(faults));
    }

private:
    Response Answer(const Request& request);
    Response GoodAnswer(const Request& request, std::size_t maxRows);
    Response Search(const Request& request, std::size_t maxRows);
    Response File(const Request& request);
    std::string BaseOf(const Request& request) const;
    bool IsAllowed(const Request& request) const;

    const ServiceOptions options_;
    detail::Catalogue catalogue_;
    detail::Previews previews_;
    detail::FaultyTimes faults_;
    http::Server server_; // last: it uses the others
};

Response StockService::Impl::Answer(const Request& request)
{
    if (options_.observe) {
        options_.observe(request);
    }
    const bool isLoopback = options_.address == "127.0.0.1" || options_.address == "::1";
    if (isLoopback && !http::IsHostLoopback(request, server_.Port())) { // another page's name for this machine
        return ErrorAnswer(403, "The service is asked by a name that is not its own");
    }
    const auto faults = faults_.Take(request);
    auto instead = faults ? detail::AnswerInstead(*faults, request, BaseOf(request)) : std::nullopt;
    if (instead) {
        return std::move(*instead);
    }
    Response response = GoodAnswer(request, faults ? faults->maxRows : Faults().maxRows);
    if (faults) {
        detail::Spoil(*faults, response);
    }
    return response;
}

Response StockService::Impl::GoodAnswer(const Request& request, std::size_t maxRows)
{
    if (request.method != "GET" && request.method != "HEAD") {
        Response response = ErrorAnswer(405, "The service is read only");
        response.headers.emplace_back("Allow", "GET, HEAD");
        return response;
    }
    if (request.target.size() > kMaxURL) {
        return ErrorAnswer(414, "The URL has more than 8192 bytes");
    }
    if (request.path == detail::kSearch) {
        return Search(request, maxRows);
    }
    return request.path.starts_with(detail::kAssets) ? File(request) : ErrorAnswer(404, "There is no such route");
}

Response StockService::Impl::Search(const Request& request, std::size_t maxRows)
{
    if (!IsAllowed(request)) {
        return ErrorAnswer(401, "The bearer token is missing or wrong");
    }
    try {
        const detail::Query query = detail::ParseQuery(request);
        const detail::PageContext context{previews_, BaseOf(request), !options_.token.empty(), maxRows};
        return http::TextResponse(200, "application/json", MakePage(catalogue_.Find(query), query, context));
    } catch (const detail::BadRequest& error) {
        return ErrorAnswer(400, error.what());
    }
}

Response StockService::Impl::File(const Request& request)
{
    const std::string rest = request.path.substr(detail::kAssets.size());
    const auto slash = rest.find('/');
    const Asset* const asset = catalogue_.FindID(rest.substr(0, slash));
    if (!asset) {
        return ErrorAnswer(404, "There is no such asset");
    }
    const std::string file = slash == rest.npos ? "" : rest.substr(slash + 1);
    if (file == "thumbnail") {
        return FileAnswer(previews_.Poster(*asset->content));
    }
    if (file == "video") {
        return FileAnswer(previews_.Video(*asset->content));
    }
    if (file != "metadata") {
        return ErrorAnswer(404, "There is no such route");
    }
    // Opened for each request: an object is used by one thread at a time, and requests come on several.
    const orvcapsule::CapsuleZip package(asset->content->package);
    return http::TextResponse(200, "application/json", orvcore::ToNarrow(package.GetZELTDescriptionJSON()));
}

// The service under the name by which the client knows it.
std::string StockService::Impl::BaseOf(const Request& request) const
{
    const std::string* const host = request.FindHeader("Host");
    return host ? "http://" + *host : server_.Origin();
}

bool StockService::Impl::IsAllowed(const Request& request) const
{
    const std::string* const given = request.FindHeader("Authorization");
    return options_.token.empty() || (given && http::IsSecret(*given, "Bearer " + options_.token));
}

StockService::StockService(ServiceOptions options)
    : impl_(std::make_unique<Impl>(std::move(options)))
{
}

StockService::~StockService() = default;

std::string StockService::Origin() const
{
    return impl_->Server().Origin();
}

std::size_t StockService::AssetCount() const
{
    return impl_->Catalogue().Assets().size();
}

const std::vector<std::filesystem::path>& StockService::Unreadable() const
{
    return impl_->Catalogue().Unreadable();
}

void StockService::SetFaults(Faults faults)
{
    impl_->SetFaults(std::move(faults));
}

} // namespace orvtools::stock
