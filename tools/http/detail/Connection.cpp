#include <tools/http/detail/Connection.h>

#include <tools/http/Target.h>
#include <tools/http/detail/Text.h>

#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http/error.hpp>
#include <boost/beast/http/read.hpp>

// A connection's life, each step started by the end of the one before: await a request's first byte (idle time), read
// it whole (request time), have a worker answer it, wait for the answer's delay, write head and body block by block,
// then the next request or the end. Exactly one step is under way at a time, except for a stream, whose client is also
// watched for leaving.
//
// What keeps it alive: the operation under way holds a shared pointer. When the last one has ended and started no
// other, the connection is destroyed, and its place in the server's set with it. Drop only closes the socket; the
// operations then end with errors and do the rest.
//
// Limits are enforced here: header and body bytes by the parser, time by the stream's timer, which each step sets
// again.

namespace orvtools::http::detail {

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace wire = boost::beast::http;
using namespace std::chrono_literals;

// After the last byte of an answer, for the client to take it: a socket that is closed with bytes of the client unread
// takes back what is still under way.
constexpr auto kLingerTime = 1s;
// More than a request that was refused for its size still has under way, and not without end.
constexpr std::size_t kLingerBytes = std::size_t{16} << 20;

using Message = wire::request<wire::string_body>;

// False for what HTTP/1.1 does not allow or this server does not answer.
bool ToRequest(Message message, Request& request)
{
    const auto hosts = message.count(wire::field::host);
    if (hosts > 1 || (hosts == 0 && message.version() > 10) || !ParseTarget(message.target(), request)) {
        return false;
    }
    request.method = message.method_string();
    for (const auto& header : message) {
        request.headers.emplace_back(header.name_string(), header.value());
    }
    request.body = std::move(message.body());
    return true;
}

// What a handler has answered: something to send, or something to wait for.
struct Answered {
    Reply reply;
    Response later;
};

Answered AnswerOf(const Server::Handler& handler, const Request& request, const Exchange& exchange)
{
    try {
        Response response = handler(request);
        if (std::holds_alternative<std::shared_ptr<Later>>(response.body)) {
            return {{}, std::move(response)};
        }
        return {MakeReply(request, std::move(response), exchange), {}};
    } catch (...) { // what went wrong may name files; it is the handler's to tell
        return {MakeReply(request, ErrorResponse(500, "the request could not be answered"), exchange), {}};
    }
}

// The status for a request that could not be read; none where the client is gone.
std::optional<unsigned> StatusOf(const beast::error_code& error)
{
    if (error == wire::error::header_limit || error == wire::error::buffer_overflow) {
        return 431;
    }
    if (error == wire::error::body_limit) {
        return 413;
    }
    const bool isBroken = error.category() == wire::make_error_code(wire::error::bad_target).category() &&
                          error != wire::error::end_of_stream && error != wire::error::partial_message;
    return isBroken ? std::optional(400U) : std::nullopt;
}

} // namespace

Connection::Connection(Tcp::socket socket, Shared& shared)
    : shared_(shared)
    , stream_(std::move(socket))
    , delay_(shared.context)
    // The buffer has a limit of its own: a client that sends headers without end would fill the memory before the
    // parser saw them.
    , received_(shared.options.limits.headerBytes + Body::kBlock)
{
    shared_.connections.insert(this);
}

Connection::~Connection()
{
    Abandon();
    shared_.connections.erase(this);
}

void Connection::Start()
{
    Error ignored; // without it a last short packet would wait for the acknowledgement of the one before
    stream_.socket().set_option(Tcp::no_delay(true), ignored);
    AwaitRequest();
}

void Connection::Drop()
{
    delay_.cancel();
    stream_.close();
    Abandon();
    reply_ = {};
    waits_ = false;
}

// A connection may be idle for longer than a request may take, so its first bytes are read alone.
void Connection::AwaitRequest()
{
    if (received_.size() > 0) {
        ReadRequest();
        return;
    }
    stream_.expires_after(shared_.options.limits.idleTime);
    stream_.async_read_some(received_.prepare(4096), [self = shared_from_this()](const Error& error, std::size_t size) {
        self->received_.commit(size);
        if (!error) {
            self->ReadRequest();
        }
    });
}

void Connection::ReadRequest()
{
    parser_.emplace();
    parser_->header_limit(static_cast<std::uint32_t>(shared_.options.limits.headerBytes));
    parser_->body_limit(shared_.options.limits.bodyBytes);
    stream_.expires_after(shared_.options.limits.requestTime);
    wire::async_read(stream_, received_, *parser_,
                     [self = shared_from_this()](const Error& error, std::size_t /*size*/) { self->OnRequest(error); });
}

void Connection::OnRequest(const Error& error)
{
    if (error) {
        if (const auto status = StatusOf(error)) {
            Refuse(*status, ReasonOf(*status));
        }
        return;
    }
    exchange_ = {parser_->keep_alive(), parser_->get().version() >= 11};
    Request request;
    if (ToRequest(parser_->release(), request)) {
        Answer(shared_.handler, std::move(request));
    } else {
        Refuse(400, "the request's address or Host is not valid");
    }
}

void Connection::Answer(Server::Handler by, Request request)
{
    shared_.workers.Post([self = shared_from_this(), by = std::move(by), request = std::move(request)]() mutable {
        Answered answered = AnswerOf(by, request, self->exchange_);
        asio::io_context& context = self->shared_.context;
        // The connection goes on and ends on its own thread: this one keeps no pointer to it.
        asio::post(context,
                   [self = std::move(self), request = std::move(request), answered = std::move(answered)]() mutable {
                       if (answered.reply.head.empty()) {
                           self->Await(std::move(request), std::move(answered.later));
                       } else {
                           self->Send(std::move(answered.reply));
                       }
                   });
    });
}

void Connection::Await(Request request, Response response)
{
    awaited_ = Awaited{std::move(request), std::move(response.headers),
                       std::get<std::shared_ptr<Later>>(std::move(response.body))};
    if (!stream_.socket().is_open()) { // the server has stopped meanwhile
        Abandon();
        return;
    }
    exchange_.keepAlive = false;
    awaited_->answer->OnAnswer(Posting(&Connection::OnAnswer));
    WatchForLeaving();
}

// For a stream or a Later to call, on any thread and under its lock. The step is posted: it belongs to the connection's
// thread, and it takes that lock itself. The connection may have ended before the step's turn.
std::function<void()> Connection::Posting(void (Connection::*step)())
{
    return [weak = weak_from_this(), &context = shared_.context, step] {
        asio::post(context, [weak, step] {
            if (const auto self = weak.lock()) {
                (*self.*step)();
            }
        });
    };
}

void Connection::OnAnswer()
{
    if (!awaited_) { // dropped meanwhile
        return;
    }
    auto [request, headers, answer] = std::move(*awaited_);
    awaited_.reset();
    Response response = answer->Take();
    response.headers.insert(response.headers.end(), headers.begin(), headers.end());
    Answer([response = std::move(response)](const Request&) mutable { return std::move(response); },
           std::move(request));
}

void Connection::Abandon()
{
    if (awaited_) {
        awaited_->answer->Abandon();
        awaited_.reset();
    }
}

void Connection::Refuse(unsigned status, std::string_view why)
{
    Send(MakeReply({}, shared_.options.refuse(status, why), {}));
}

void Connection::Send(Reply reply)
{
    if (!stream_.socket().is_open()) { // the server has stopped meanwhile
        return;
    }
    reply_ = std::move(reply);
    if (reply_.delay <= 0ms) {
        Begin();
        return;
    }
    delay_.expires_after(reply_.delay);
    delay_.async_wait([self = shared_from_this()](const Error& error) {
        if (!error) {
            self->Begin();
        }
    });
}

void Connection::Begin()
{
    out_ = std::move(reply_.head);
    if (reply_.isStream) {
        reply_.body->OnReady(Posting(&Connection::OnReady));
        WatchForLeaving();
        if (!stream_.socket().is_open()) {
            return;
        }
    }
    Pump();
}

void Connection::OnReady()
{
    if (std::exchange(waits_, false)) {
        Pump();
    }
}

// Writes the next block, behind the head at first.
void Connection::Pump()
{
    const Next next = reply_.body ? reply_.body->Read(out_) : Next::End;
    atEnd_ = next == Next::End;
    if (next == Next::Broken) {
        Drop();
    } else if (!out_.empty()) {
        stream_.expires_after(shared_.options.limits.idleTime);
        asio::async_write(
            stream_, asio::buffer(out_),
            [self = shared_from_this()](const Error& error, std::size_t /*size*/) { self->OnWritten(error); });
    } else if (atEnd_) {
        Finish();
    } else {
        // On the connection's thread, as is the posted wake that asks for it: a wake that comes between the last Read
        // and this line is posted behind it and finds the flag.
        waits_ = true;
    }
}

void Connection::OnWritten(const Error& error)
{
    out_.clear();
    // A write may have ended well just before the connection was dropped; the read of a stream's client is then still
    // to end, and another one must not begin.
    if (error || !stream_.socket().is_open()) {
        Drop();
    } else if (atEnd_) {
        Finish();
    } else {
        Pump();
    }
}

// Nothing else tells that a client has left while there is nothing to write. One that sends something meanwhile has
// misunderstood the answer.
void Connection::WatchForLeaving()
{
    if (std::exchange(isWatched_, true)) {
        return;
    }
    if (received_.size() > 0) {
        Drop();
        return;
    }
    stream_.expires_never();
    stream_.async_read_some(asio::buffer(ignored_),
                            [self = shared_from_this()](const Error&, std::size_t) { self->Drop(); });
}

void Connection::Finish()
{
    const bool close = reply_.close;
    reply_ = {};
    if (isWatched_) { // no other read may begin
        Drop();
    } else if (close) {
        Error ignored;
        stream_.socket().shutdown(Tcp::socket::shutdown_send, ignored);
        stream_.expires_after(kLingerTime);
        Linger();
    } else {
        AwaitRequest();
    }
}

void Connection::Linger()
{
    stream_.async_read_some(asio::buffer(ignored_), [self = shared_from_this()](const Error& error, std::size_t size) {
        self->lingered_ += size;
        if (!error && self->lingered_ < kLingerBytes) {
            self->Linger();
        } else {
            self->Drop();
        }
    });
}

} // namespace orvtools::http::detail
