#include <tools/http/Server.h>

#include <tools/http/detail/Connection.h>
#include <tools/http/detail/PortSharing.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/steady_timer.hpp>

#include <mutex>
#include <thread>

// Two kinds of threads. One runs the context: it accepts, reads, writes and owns every connection, so nothing there is
// locked. A few run handlers (Workers), which may wait; their answer is posted back to the first.
//
// The order of an end. First the context's thread is stopped and joined: from then on its objects belong to the thread
// that stops. Then the sockets are closed, then handlers that run are waited for, since their answers would be posted
// into the context. Last the context is polled once more here, so that the operations that were under way end (with
// errors) and let go of their connections.

namespace orvtools::http {

namespace asio = boost::asio;
using asio::ip::tcp;
using namespace std::chrono_literals;

class Server::Impl {
public:
    Impl(Handler handler, ServerOptions options);
    ~Impl();

    void Start();
    void Stop();
    const tcp::endpoint& Endpoint() const noexcept
    {
        return endpoint_;
    }

private:
    void Accept();
    void OnAccepted(const boost::system::error_code& error, tcp::socket socket);

    detail::Shared shared_;
    tcp::acceptor acceptor_;
    asio::steady_timer pause_;
    tcp::endpoint endpoint_;
    std::mutex stopping_;
    std::thread thread_;
};

namespace {

tcp::acceptor Listen(asio::io_context& context, const ServerOptions& options)
try {
    const tcp::endpoint endpoint(asio::ip::make_address(options.address), options.port);
    tcp::acceptor acceptor(context, endpoint.protocol());
    acceptor.set_option(tcp::acceptor::reuse_address(detail::kReuseAddress));
    acceptor.bind(endpoint);
    acceptor.listen();
    return acceptor;
} catch (const boost::system::system_error& error) {
    throw std::system_error(error.code(), options.address + ':' + std::to_string(options.port));
}

} // namespace

Server::Impl::Impl(Handler handler, ServerOptions options)
    : shared_(std::move(handler), std::move(options))
    , acceptor_(Listen(shared_.context, shared_.options))
    , pause_(shared_.context)
    , endpoint_(acceptor_.local_endpoint())
{
}

Server::Impl::~Impl()
{
    Stop();
}

void Server::Impl::Start()
{
    Accept();
    thread_ = std::thread([this] { shared_.context.run(); });
}

void Server::Impl::Accept()
{
    acceptor_.async_accept(
        [this](const boost::system::error_code& error, tcp::socket socket) { OnAccepted(error, std::move(socket)); });
}

void Server::Impl::OnAccepted(const boost::system::error_code& error, tcp::socket socket)
{
    if (!acceptor_.is_open()) {
        return;
    }
    if (error) { // out of handles, say: they come back when connections end
        pause_.expires_after(50ms);
        pause_.async_wait([this](const boost::system::error_code&) { Accept(); });
        return;
    }
    // One more is closed by its socket's destructor: refused in words it would already cost what the limit is to save.
    if (shared_.connections.size() < shared_.options.limits.connections) {
        std::make_shared<detail::Connection>(std::move(socket), shared_)->Start();
    }
    Accept();
}

void Server::Impl::Stop()
{
    const std::lock_guard lock(stopping_);
    if (!thread_.joinable()) {
        return;
    }
    shared_.context.stop();
    thread_.join();
    // Its thread has ended: what belonged to it is this one's.
    boost::system::error_code ignored;
    acceptor_.close(ignored);
    for (detail::Connection* const connection : shared_.connections) {
        connection->Drop();
    }
    shared_.workers.Stop();
    shared_.context.restart();
    shared_.context.poll(); // what was under way ends with errors, and with it the connections
}

Server::Server(Handler handler, ServerOptions options)
    : impl_(std::make_unique<Impl>(std::move(handler), std::move(options)))
{
    impl_->Start(); // a handler may ask for the port: from here on it is there
}

Server::~Server() = default;

std::uint16_t Server::Port() const noexcept
{
    return impl_->Endpoint().port();
}

std::string Server::Origin() const
{
    const asio::ip::address address = impl_->Endpoint().address();
    const std::string host = address.is_v6() ? '[' + address.to_string() + ']' : address.to_string();
    return "http://" + host + ':' + std::to_string(Port());
}

void Server::Stop()
{
    impl_->Stop();
}

} // namespace orvtools::http
