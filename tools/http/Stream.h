#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

namespace orvtools::http {

namespace detail {
class StreamBody;
}

/// A body that is written while it is sent, as of Server-Sent Events: a handler puts one into its response and keeps a
/// pointer to it. Any thread may call; no call waits. It ends with Close, when the client leaves, when the server
/// stops, and when the response is never sent (as to a HEAD request).
class Stream {
public:
    /// A client that is more than this many bytes behind is cut off.
    explicit Stream(std::size_t maxUnsent = std::size_t{16} << 20);

    /// Appends bytes. False when the stream has ended: nobody will read them.
    bool Write(std::string_view bytes);
    /// Appends an event that a page's EventSource takes.
    /// @param name  no line feed in it; empty: an event of the kind "message"
    /// @param data  any text
    bool WriteEvent(std::string_view name, std::string_view data);
    /// Ends the answer after what has been written.
    void Close();

    bool IsOpen() const;
    /// Bytes that the client has yet to take.
    std::size_t Unsent() const;

private:
    friend class detail::StreamBody;
    enum class State : std::uint8_t { Open, Closed, Abandoned };

    void Wake() const;
    void Abandon();

    mutable std::mutex mutex_;
    const std::size_t maxUnsent_;
    std::string unsent_;
    State state_ = State::Open;
    std::function<void()> wake_; // tells the connection; called under the lock, so that none is told after it has left
};

} // namespace orvtools::http
