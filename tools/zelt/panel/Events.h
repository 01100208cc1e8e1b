#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace orvtools::http {
class Stream;
}

namespace zelt {

/// The open pages, all of which are told the same state as server-sent events. Any thread.
class Events {
public:
    /// A page's stream; it is told the state at once.
    std::shared_ptr<orvtools::http::Stream> Open(const std::string& state);
    /// Tells all pages.
    void Send(const std::string& state);
    /// Writes a sign of life now and then, by which the connections of pages that have gone are found out.
    void KeepAlive();

private:
    template <class Write>
    void WriteAll(Write&& write);

    std::mutex mutex_;
    std::vector<std::shared_ptr<orvtools::http::Stream>> streams_;
    std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
};

} // namespace zelt
