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
    /// A page's stream. It begins with the state that the others know.
    std::shared_ptr<orvtools::http::Stream> Open();
    /// Tells all pages a state that they do not know. For one that they know it writes a sign of life now and then, by
    /// which the connections of pages that have gone are found out.
    void Tell(std::string state);

private:
    std::mutex mutex_;
    std::vector<std::shared_ptr<orvtools::http::Stream>> streams_;
    std::string told_; // the state that the pages know; empty before the first
    std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
};

} // namespace zelt
