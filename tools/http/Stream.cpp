#include <tools/http/Stream.h>

// Two sides share a stream: whoever writes events, on any thread, and the connection that sends them, on the server's.
// The writer never waits: bytes are kept up to a limit, beyond which the client counts as gone. `wake_` posts to the
// connection's thread and is called under the lock, because Abandon (the connection's last word) takes it away under
// the same lock: after that no call can reach a connection that is no more.

namespace orvtools::http {

Stream::Stream(std::size_t maxUnsent)
    : maxUnsent_(maxUnsent)
{
}

bool Stream::Write(std::string_view bytes)
{
    const std::lock_guard lock(mutex_);
    if (state_ != State::Open) {
        return false;
    }
    // All or nothing: half an event would spoil the next one.
    if (bytes.size() > maxUnsent_ - unsent_.size()) {
        unsent_.clear();
        state_ = State::Abandoned;
    } else {
        unsent_ += bytes;
    }
    Wake();
    return state_ == State::Open;
}

bool Stream::WriteEvent(std::string_view name, std::string_view data)
{
    std::string event = name.empty() ? "" : "event: " + std::string(name) + '\n';
    do { // a line of its own for each, or an empty line in the data would end the event
        const auto end = data.find_first_of("\r\n");
        event.append("data: ").append(data.substr(0, end)).append("\n");
        const bool isPair = end != data.npos && data.substr(end, 2) == "\r\n";
        data = end == data.npos ? std::string_view() : data.substr(end + (isPair ? 2 : 1));
    } while (!data.empty());
    return Write(event + '\n');
}

void Stream::Close()
{
    const std::lock_guard lock(mutex_);
    if (state_ == State::Open) {
        state_ = State::Closed;
        Wake();
    }
}

bool Stream::IsOpen() const
{
    const std::lock_guard lock(mutex_);
    return state_ == State::Open;
}

std::size_t Stream::Unsent() const
{
    const std::lock_guard lock(mutex_);
    return unsent_.size();
}

void Stream::Wake() const
{
    if (wake_) {
        wake_();
    }
}

void Stream::Abandon()
{
    const std::lock_guard lock(mutex_);
    state_ = State::Abandoned;
    wake_ = nullptr;
    unsent_ = {};
}

} // namespace orvtools::http
