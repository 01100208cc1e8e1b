#pragma once

#include <tools/zelt/panel/Panel.h>

#include <tools/http/Message.h>

#include <cstdint>
#include <functional>
#include <string>

namespace zelt {

/// Answers the page: its files, the templates, their previews, and what the user asks for. Everything lies below a path
/// that is secret, so that no other program of this machine's users and no other page can ask; the page that reads the
/// templates may change them. The threads of the server call.
class Routes {
public:
    Routes(Panel& panel, std::string secret);

    /// The port is known once the server listens; nothing is answered before.
    void SetPort(std::uint16_t port) noexcept
    {
        port_ = port;
    }
    orvtools::http::Response Answer(const orvtools::http::Request& request);

private:
    using Response = orvtools::http::Response;
    using Request = orvtools::http::Request;

    Response Dispatch(const Request& request);
    Response Get(const std::string& name, const Request& request);
    Response Post(const std::string& name, const Request& request);
    Response Preview(const Request& request, bool isVideo);
    Response StockVideo(const StockShelf::Entry& entry);
    using PostToShelf = void (StockShelf::*)(std::function<void()>);
    Response FromStock(PostToShelf post, std::function<Response(StockShelf&)> make);
    Response Details(const Request& request);
    Response Search(const Request& request) const;
    Response Tags(const Request& request) const;
    Response SaveTemplate(const Request& request);
    Catalogue::Entry EntryOf(const Request& request);

    Panel& panel_;
    const std::string secret_;
    std::atomic<std::uint16_t> port_{0};
};

} // namespace zelt
