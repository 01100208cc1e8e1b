#include <tools/http/detail/Body.h>

#include <tools/http/Stream.h>

#include <orvcore/files/Paths.h>

#include <algorithm>
#include <cstdio>

namespace orvtools::http::detail {

void Body::OnReady(std::function<void()> /*ready*/) {} // NOLINT(performance-unnecessary-value-param): streams keep it

TextBody::TextBody(std::string text)
    : text_(std::move(text))
{
}

Next TextBody::Read(std::string& out)
{
    const std::size_t size = std::min(kBlock, text_.size() - at_);
    out.append(text_, at_, size);
    at_ += size;
    return at_ == text_.size() ? Next::End : Next::More;
}

FilePart::FilePart(const std::filesystem::path& path, std::uint64_t first, std::uint64_t size)
    : file_(orvcore::ToSystemPath(path), std::ios::binary)
    , left_(size)
{
    if (!file_) {
        throw std::filesystem::filesystem_error("open", path, std::make_error_code(std::errc::permission_denied));
    }
    file_.seekg(static_cast<std::streamoff>(first));
}

Next FilePart::Read(std::string& out)
{
    const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(kBlock, left_));
    const std::size_t before = out.size();
    out.resize(before + size);
    // The length was announced before the file was read; one that has become shorter cannot be made good, only cut off.
    if (size > 0 && !file_.read(out.data() + before, static_cast<std::streamsize>(size))) {
        return Next::Broken;
    }
    left_ -= size;
    return left_ == 0 ? Next::End : Next::More;
}

StreamBody::StreamBody(std::shared_ptr<Stream> stream, bool chunked)
    : stream_(std::move(stream))
    , chunked_(chunked)
{
}

StreamBody::~StreamBody()
{
    // The connection is gone, or the response was never sent: the writer learns it at its next Write.
    stream_->Abandon();
}

Next StreamBody::Read(std::string& out)
{
    std::string bytes;
    Stream::State state;
    {
        const std::lock_guard lock(stream_->mutex_);
        // Taken in one go, so that the lock is not held while bytes are framed.
        bytes.swap(stream_->unsent_);
        state = stream_->state_;
    }
    if (state == Stream::State::Abandoned) {
        return Next::Broken;
    }
    if (chunked_ && !bytes.empty()) {
        char size[32];
        std::snprintf(size, sizeof size, "%zx\r\n", bytes.size());
        out.append(size).append(bytes).append("\r\n");
    } else {
        out += bytes;
    }
    if (state == Stream::State::Closed) {
        // The empty chunk is the body's end; without chunks (HTTP/1.0) the closed connection is.
        out += chunked_ ? "0\r\n\r\n" : "";
        return Next::End;
    }
    return bytes.empty() ? Next::Wait : Next::More;
}

void StreamBody::OnReady(std::function<void()> ready)
{
    const std::lock_guard lock(stream_->mutex_);
    if (stream_->state_ != Stream::State::Abandoned) {
        stream_->wake_ = std::move(ready);
    }
}

} // namespace orvtools::http::detail
