#pragma once

#include <tools/http/Later.h>
#include <tools/http/Server.h>
#include <tools/http/Workers.h>
#include <tools/http/detail/Reply.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <unordered_set>

namespace orvtools::http::detail {

class Connection;

/// What all connections of a server use. The set belongs to the thread that runs the input and output.
struct Shared {
    Shared(Server::Handler answer, ServerOptions given)
        : handler(std::move(answer))
        , options(std::move(given))
        , workers(options.limits.handlers)
    {
    }

    const Server::Handler handler;
    const ServerOptions options;
    Workers workers;
    std::unordered_set<Connection*> connections;
    boost::asio::io_context context{1}; // run by one thread; last: its end destroys connections, which use the others
};

/// One client's connection: reads a request, has it answered on a worker, writes the answer, and so on. Everything but
/// the handler runs on the one thread of the input and output, which is why nothing here is locked. It lives as long as
/// an operation or a handler of it is under way.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    using Tcp = boost::asio::ip::tcp;

    Connection(Tcp::socket socket, Shared& shared);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    void Start();
    /// Closes the socket; operations under way end, and with them the connection.
    void Drop();

private:
    using Parser = boost::beast::http::request_parser<boost::beast::http::string_body>;
    using Error = boost::beast::error_code;
    struct Awaited {
        Request request;
        Fields headers;
        std::shared_ptr<Later> answer;
    };

    void AwaitRequest();
    void ReadRequest();
    void OnRequest(const Error& error);
    void Answer(Server::Handler by, Request request);
    void Await(Request request, Response response);
    std::function<void()> Posting(void (Connection::*step)());
    void OnAnswer();
    void Abandon();
    void Refuse(unsigned status, std::string_view why);
    void Send(Reply reply);
    void Begin();
    void OnReady();
    void Pump();
    void OnWritten(const Error& error);
    void WatchForLeaving();
    void Finish();
    void Linger();

    Shared& shared_;
    boost::beast::tcp_stream stream_;
    boost::asio::steady_timer delay_;
    boost::beast::flat_buffer received_;
    std::array<char, 4096> ignored_{};
    std::optional<Parser> parser_; // a new one for each request
    Exchange exchange_;
    std::optional<Awaited> awaited_;
    Reply reply_;
    std::string out_; // what is being written
    bool atEnd_ = false;
    bool waits_ = false;     // for a stream
    bool isWatched_ = false; // for its client's leaving; it ends with this answer
    std::size_t lingered_ = 0;
};

} // namespace orvtools::http::detail
