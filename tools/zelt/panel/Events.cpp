#include <tools/zelt/panel/Events.h>

#include <tools/http/Stream.h>

// A page that has gone does not say so. Its stream ends when a write to it fails, so a comment is written when nothing
// else was for some time; an ended stream is dropped at the next write. The megabyte for each stream is far more than
// the states of a page that is merely slow: one that is further behind is cut off, and its EventSource connects again.

namespace zelt {

namespace {

constexpr std::chrono::seconds kSilence(15);

} // namespace

std::shared_ptr<orvtools::http::Stream> Events::Open(const std::string& state)
{
    auto stream = std::make_shared<orvtools::http::Stream>(std::size_t{1} << 20);
    stream->WriteEvent("state", state);
    const std::lock_guard lock(mutex_);
    streams_.push_back(stream);
    return stream;
}

template <class Write>
void Events::WriteAll(Write&& write)
{
    const std::lock_guard lock(mutex_);
    std::erase_if(streams_, [&](const auto& stream) { return !write(*stream); });
    last_ = std::chrono::steady_clock::now();
}

void Events::Send(const std::string& state)
{
    WriteAll([&state](orvtools::http::Stream& stream) { return stream.WriteEvent("state", state); });
}

void Events::KeepAlive()
{
    if (std::chrono::steady_clock::now() - last_ > kSilence) {
        WriteAll([](orvtools::http::Stream& stream) { return stream.Write(": \n\n"); });
    }
}

} // namespace zelt
