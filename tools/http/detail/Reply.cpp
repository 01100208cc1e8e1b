#include <tools/http/detail/Reply.h>

#include <tools/http/Stream.h>
#include <tools/http/detail/FileRange.h>
#include <tools/http/detail/Text.h>

#include <orvcore/files/FileSystem.h>

#include <algorithm>
#include <array>

// How the client learns where the body ends: by its length where that is known, by chunks for a stream, by the closed
// connection for a stream to an HTTP/1.0 client. A length that was made wrong on purpose always closes the connection,
// since nobody could tell where the next answer begins.

namespace orvtools::http::detail {

namespace {

using orvcore::FileInfo;

// How the client learns where the body ends.
enum class Framing : std::uint8_t { Length, Chunks, Close, NoBody };

// A body whose length is known, or a stream.
struct Content {
    std::unique_ptr<Body> body;
    std::optional<std::uint64_t> length;
};

// Size and time in microseconds: a new preview has another tag, and a player that resumes (If-Range)
// starts from the beginning.
std::string TagOf(const FileInfo& info)
{
    return '"' + std::to_string(info.size) + '-' + std::to_string(info.modified.time_since_epoch().count()) + '"';
}

RangeAnswer RangeOf(const Request& request, std::string_view tag, std::uint64_t size)
{
    const std::string* const range = request.FindHeader("Range");
    const std::string* const only = request.FindHeader("If-Range");
    // If-Range with another tag: the client has parts of another file, so it gets the whole of this one.
    return range && (!only || *only == tag) ? SelectRange(*range, size) : RangeAnswer{};
}

Content SetText(Response& response, std::string text)
{
    const std::uint64_t length = text.size();
    response.body = std::string();
    return {std::make_unique<TextBody>(std::move(text)), length};
}

Content FileContent(const Request& request, Response& response, const std::filesystem::path& path, const FileInfo& info)
{
    const std::string tag = TagOf(info);
    response.headers.emplace_back("Accept-Ranges", "bytes");
    response.headers.emplace_back("ETag", tag);
    const std::string* const known = request.FindHeader("If-None-Match");
    if (known && NamesTag(*known, tag)) {
        response.status = 304;
        return SetText(response, "");
    }
    const RangeAnswer range = RangeOf(request, tag, info.size);
    if (range.kind == RangeAnswer::Kind::Whole) {
        return {std::make_unique<FilePart>(path, 0, info.size), info.size};
    }
    const std::string size = '/' + std::to_string(info.size);
    if (range.kind == RangeAnswer::Kind::Unsatisfiable) {
        response.status = 416;
        response.headers.emplace_back("Content-Range", "bytes *" + size);
        return SetText(response, "");
    }
    const auto [first, last] = range.part;
    response.status = 206;
    response.headers.emplace_back("Content-Range",
                                  "bytes " + std::to_string(first) + '-' + std::to_string(last) + size);
    return {std::make_unique<FilePart>(path, first, last - first + 1), last - first + 1};
}

Content ContentOf(const Request& request, Response& response, const Exchange& exchange)
{
    if (const auto* const stream = std::get_if<std::shared_ptr<Stream>>(&response.body)) {
        // A length that was announced on purpose takes the chunks' place.
        const bool chunked = exchange.isHTTP11 && !response.announcedLength;
        return {std::make_unique<StreamBody>(*stream, chunked), std::nullopt};
    }
    if (auto* const text = std::get_if<std::string>(&response.body)) {
        return SetText(response, std::move(*text));
    }
    const std::filesystem::path path = std::get<FileBody>(response.body).path;
    std::error_code error;
    const FileInfo info = orvcore::InspectTarget(path, error);
    if (error || info.kind != orvcore::FileKind::File) {
        // Asked now and not by the handler: the file may go between the two.
        response = ErrorResponse(404, "there is no such file");
        return SetText(response, std::get<std::string>(response.body));
    }
    return FileContent(request, response, path, info);
}

void AppendField(std::string& head, std::string_view name, std::string_view value)
{
    head.append(name).append(": ");
    // A value may be a text of a template or of the request; a line feed in it would begin a header of its own.
    std::remove_copy_if(value.begin(), value.end(), std::back_inserter(head), &IsControl);
    head += "\r\n";
}

// By hand, because the C library's forms follow the locale of the process.
std::string DateNow()
{
    const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    const auto day = std::chrono::floor<std::chrono::days>(now);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(now - day);
    constexpr std::array kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    constexpr std::array kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    char text[64];
    std::snprintf(text, sizeof text, "%s, %02u %s %04d %02d:%02d:%02d GMT",
                  kDays.at(std::chrono::weekday(day).c_encoding()), static_cast<unsigned>(date.day()),
                  kMonths.at(static_cast<unsigned>(date.month()) - 1), static_cast<int>(date.year()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text;
}

Framing FramingOf(const Response& response, const Content& content, const Exchange& exchange)
{
    if (response.status == 204 || response.status == 304) {
        return Framing::NoBody;
    }
    return content.length || response.announcedLength ? Framing::Length
           : exchange.isHTTP11                        ? Framing::Chunks
                                                      : Framing::Close;
}

} // namespace

std::string_view ReasonOf(unsigned status)
{
    struct Reason {
        unsigned status;
        std::string_view text;
    };
    static constexpr auto kReasons = std::to_array<Reason>({
        {200, "OK"},
        {204, "No Content"},
        {206, "Partial Content"},
        {301, "Moved Permanently"},
        {302, "Found"},
        {303, "See Other"},
        {304, "Not Modified"},
        {307, "Temporary Redirect"},
        {308, "Permanent Redirect"},
        {400, "Bad Request"},
        {401, "Unauthorized"},
        {403, "Forbidden"},
        {404, "Not Found"},
        {405, "Method Not Allowed"},
        {409, "Conflict"},
        {413, "Content Too Large"},
        {414, "URI Too Long"},
        {415, "Unsupported Media Type"},
        {416, "Range Not Satisfiable"},
        {421, "Misdirected Request"},
        {422, "Unprocessable Content"},
        {429, "Too Many Requests"},
        {431, "Request Header Fields Too Large"},
        {500, "Internal Server Error"},
        {502, "Bad Gateway"},
        {503, "Service Unavailable"},
        {504, "Gateway Timeout"},
    });
    const auto found = std::find_if(kReasons.begin(), kReasons.end(),
                                    [status](const Reason& reason) { return reason.status == status; });
    return found == kReasons.end() ? "Status" : found->text;
}

Reply MakeReply(const Request& request, Response response, Exchange exchange)
{
    Content content = ContentOf(request, response, exchange);
    const Framing framing = FramingOf(response, content, exchange);
    const std::uint64_t announced = response.announcedLength.value_or(content.length.value_or(0));
    const bool isStream = !content.length;
    const bool lies = response.announcedLength && (isStream || announced != *content.length);
    Reply reply;
    reply.close = !exchange.keepAlive || lies || isStream;
    reply.delay = response.delay;
    reply.head = "HTTP/1.1 " + std::to_string(response.status) + ' ' + std::string(ReasonOf(response.status)) + "\r\n";
    AppendField(reply.head, "Date", DateNow());
    for (const auto& [name, value] : response.headers) {
        AppendField(reply.head, name, value);
    }
    if (framing == Framing::Length) {
        AppendField(reply.head, "Content-Length", std::to_string(announced));
    } else if (framing == Framing::Chunks) {
        AppendField(reply.head, "Transfer-Encoding", "chunked");
    }
    AppendField(reply.head, "Connection", reply.close ? "close" : "keep-alive");
    reply.head += "\r\n";
    if (framing != Framing::NoBody && request.method != "HEAD") {
        reply.body = std::move(content.body);
        // Not for HEAD: its stream is destroyed here, which tells the writer that nobody reads.
        reply.isStream = isStream;
    }
    return reply;
}

} // namespace orvtools::http::detail
