#include <tools/stock/detail/Answers.h>

#include <orvcore/json/JSONTextWriter.h>

namespace orvtools::stock::detail {

namespace {

// The word for the status. A request that is no HTTP is a bad one; any other failure is the service's own.
std::string_view CodeOf(unsigned status)
{
    switch (status) {
    case 401:
        return "unauthorized";
    case 403:
        return "forbidden";
    case 404:
        return "not_found";
    case 405:
        return "method_not_allowed";
    case 414:
        return "uri_too_long";
    case 429:
        return "rate_limited";
    case 503:
        return "unavailable";
    default:
        return status < 500 ? "bad_request" : "internal";
    }
}

} // namespace

// Also for requests that the server refuses by itself (ServerOptions::refuse): a client reads one form of error.
http::Response ErrorAnswer(unsigned status, std::string_view message)
{
    orvcore::serialization::JSONTextWriter writer;
    writer.BeginObject();
    writer.Key("error");
    writer.BeginObject();
    writer.Key("code");
    writer.String(CodeOf(status));
    writer.Key("message");
    writer.String(message);
    writer.EndObject();
    writer.EndObject();
    return http::TextResponse(status, "application/json", orvcore::ToNarrow(writer.Take()));
}

} // namespace orvtools::stock::detail
