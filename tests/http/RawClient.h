#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/write.hpp>

#include <string>
#include <string_view>

namespace test {

/// A client that sends bytes as they are given and shows what comes back.
class RawClient {
public:
    explicit RawClient(std::uint16_t port)
        : socket_(context_)
    {
        socket_.connect({boost::asio::ip::address_v4::loopback(), port});
    }

    void Send(std::string_view bytes)
    {
        boost::system::error_code left; // a server may close before it has read all
        boost::asio::write(socket_, boost::asio::buffer(bytes), left);
    }
    /// Says that nothing more will be sent.
    void EndSending()
    {
        socket_.shutdown(boost::asio::ip::tcp::socket::shutdown_send);
    }
    /// All that has come once it holds `end`, or once the server has closed.
    const std::string& ReadUntil(std::string_view end)
    {
        boost::system::error_code error;
        while (!error && all_.find(end) == all_.npos) {
            char block[4096];
            all_.append(block, socket_.read_some(boost::asio::buffer(block), error));
        }
        return all_;
    }
    /// All that comes before the server closes.
    const std::string& ReadAll()
    {
        return ReadUntil("\1 never sent \1");
    }

private:
    boost::asio::io_context context_;
    boost::asio::ip::tcp::socket socket_;
    std::string all_;
};

/// All that a server answers to the bytes before it closes the connection.
inline std::string Exchange(std::uint16_t port, std::string_view bytes)
{
    RawClient client(port);
    client.Send(bytes);
    return client.ReadAll();
}

} // namespace test
