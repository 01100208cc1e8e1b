#pragma once

#include <tools/http/Message.h>
#include <tools/http/detail/Body.h>

#include <memory>
#include <string>

namespace orvtools::http::detail {

/// A response as it goes over the wire.
struct Reply {
    std::string head; ///< status line and headers, with the empty line
    std::unique_ptr<Body> body;
    std::chrono::milliseconds delay{0};
    bool isStream = false;
    bool close = false; ///< the connection ends with it
};

/// What the connection knows of a request beside its content.
struct Exchange {
    bool keepAlive = false; ///< the client would send another request
    bool isHTTP11 = true;   ///< understands chunks
};

/// Answers conditions and ranges of files, and decides how the client learns where the body ends.
Reply MakeReply(const Request& request, Response response, Exchange exchange);

/// "Not Found" for 404.
std::string_view ReasonOf(unsigned status);

} // namespace orvtools::http::detail
