#include <tools/zelt/panel/Events.h>

#include <tools/http/Stream.h>

// A page that has gone does not say so. Its stream ends when a write to it fails, so a comment is written when nothing
// else was for some time; an ended stream is dropped at the next write. The megabyte for each stream is far more than
// the states of a page that is merely slow: one that is further behind is cut off, and its EventSource connects again.

namespace zelt {

namespace {

constexpr std::chrono::seconds kSilence(15);

} // namespace

std::shared_ptr<orvtools::http::Stream> Events::Open()
{
    auto stream = std::make_shared<orvtools::http::Stream>(std::size_t{1} << 20);
    // The state is written where it cannot change before the page is one of those that are told.
    const std::lock_guard lock(mutex_);
    if (!told_.empty()) {
        stream->WriteEvent("state", told_);
    }
    streams_.push_back(stream);
    return stream;
}

void Events::Tell(std::string state)
{
    const std::lock_guard lock(mutex_);
    const auto now = std::chrono::steady_clock::now();
    const bool isNew = state != told_;
    if (!isNew && now - last_ <= kSilence) {
        return;
    }
    told_ = std::move(state);
    last_ = now;
    std::erase_if(streams_, [&](const auto& stream) {
        return isNew ? !stream->WriteEvent("state", told_) : !stream->Write(": \n\n");
    });
}

} // namespace zelt
