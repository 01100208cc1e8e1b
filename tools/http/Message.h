#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace orvtools::http {

class Later;
class Stream;

/// Names and values in the order in which they came. Header names are compared without regard to case, names of a
/// query exactly.
using Fields = std::vector<std::pair<std::string, std::string>>;

/// A request that has arrived whole.
struct Request {
    std::string method; ///< as it was sent: "GET"
    std::string target; ///< as it was sent: path and query
    std::string path;   ///< decoded, well-formed UTF-8; begins with "/" and has no part that is empty, "." or "..",
                        ///< no control character and no back-slash. It ends with "/" only where the client wrote so.
    Fields query;       ///< decoded, well-formed UTF-8. A space comes as "%20" and "+" is a plus sign: a page uses
                        ///< encodeURIComponent, not URLSearchParams.
    Fields headers;
    std::string body;

    /// The first header of the name; null when there is none.
    const std::string* FindHeader(std::string_view name) const noexcept;
    /// The first value of the query under the name; null when there is none.
    const std::string* FindQuery(std::string_view name) const noexcept;
};

/// A file as the body of an answer, read in blocks while it is sent. The server answers `Range`, `If-Range` and
/// `If-None-Match` of GET and HEAD requests, and 404 when no regular file is there.
struct FileBody {
    std::filesystem::path path;
};

/// What a handler answers. The server adds Date, Content-Length or Transfer-Encoding, and Connection; to files also
/// Accept-Ranges and ETag.
struct Response {
    unsigned status = 200;
    Fields headers; ///< line feeds and other control characters are taken out
    std::variant<std::string, FileBody, std::shared_ptr<Stream>, std::shared_ptr<Later>> body;

    /// @name Wrong and slow answers, with which clients are tested
    /// @{
    std::optional<std::uint64_t>
        announcedLength;                ///< told in place of the body's own; the connection is closed after it
    std::chrono::milliseconds delay{0}; ///< before the first byte; costs no thread
    /// @}
};

/// An answer with a text as its body.
Response TextResponse(unsigned status, std::string_view contentType, std::string body);
/// The answer to what went wrong: the text and a line feed as text/plain.
Response ErrorResponse(unsigned status, std::string_view text);

} // namespace orvtools::http
