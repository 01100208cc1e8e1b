#pragma once

#include <tools/http/Message.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace orvtools::http {

/// What a client may take of the machine. Beyond a limit a request is refused with the status that HTTP has for it, or
/// its connection closed.
struct Limits {
    std::size_t connections = 256;                 ///< beyond, a new one is closed at once
    std::size_t handlers = 4;                      ///< threads on which handlers run
    std::size_t headerBytes = 16 << 10;            ///< request line and headers together
    std::uint64_t bodyBytes = 1 << 20;             ///< of a request
    std::chrono::milliseconds requestTime{10'000}; ///< from a request's first byte to its last
    std::chrono::milliseconds idleTime{60'000};    ///< without a request, or with a client that takes nothing
};

struct ServerOptions {
    std::string address = "127.0.0.1"; ///< of this machine, not a name
    std::uint16_t port = 0;            ///< 0: one that is free
    Limits limits;
    /// Makes the answer to a request that no handler sees, because it is no HTTP or beyond a limit. It must not block
    /// or throw.
    std::function<Response(unsigned status, std::string_view why)> refuse = &ErrorResponse;
};

/// A small HTTP/1.1 server for pages and services that a program of this machine gives its user: GET, HEAD and
/// requests with a body, connections that are kept, file bodies with ranges, and streams. It has threads of its own.
class Server {
public:
    /// Answers one request. Called on one of the server's threads, for several requests at a time; what it throws is
    /// answered with status 500 and no more. Long work belongs elsewhere (Later.h): Stop waits for handlers that run,
    /// and other requests for one that is free.
    using Handler = std::function<Response(const Request&)>;

    /// Listens from now on. A handler that uses the server's owner may be called before the owner is complete: make the
    /// server its last member.
    /// @throws std::system_error  when the address is none, is not this machine's, or the port is taken
    explicit Server(Handler handler, ServerOptions options = {});
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    /// Stops.
    ~Server();

    /// The port, also when a free one was asked for.
    std::uint16_t Port() const noexcept;
    /// "http://127.0.0.1:8080"
    std::string Origin() const;

    /// Closes all connections at once, in the middle of answers too, ends all streams, and returns when no handler runs
    /// any more. Any thread but a handler's may call, more than once.
    void Stop();

private:
    class Impl;
    const std::unique_ptr<Impl> impl_;
};

} // namespace orvtools::http
