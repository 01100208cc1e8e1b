#include <orvstorage/detail/ReadAhead.h>

#include <algorithm>
#include <cstring>

namespace orvstorage::detail {

namespace {

constexpr std::size_t kFirstPiece = std::size_t{16} << 10;
constexpr std::size_t kLargestPiece = std::size_t{512} << 10;

} // namespace

bool ReadAhead::Fill(std::uint64_t offset, std::error_code& error)
{
    const bool inARow = !buffer_.empty() && offset == start_ + buffer_.size();
    buffer_.resize(inARow ? std::min(buffer_.size() * 4, kLargestPiece) : kFirstPiece);
    start_ = offset;
    buffer_.resize(file_->Read(offset, buffer_.data(), buffer_.size(), error));
    return !buffer_.empty();
}

std::size_t ReadAhead::Read(std::uint64_t offset, void* data, std::size_t size, std::error_code& error)
{
    error.clear();
    if (size >= kFirstPiece || offset >= file_->TailOffset()) {
        return file_->Read(offset, data, size, error);
    }
    std::size_t done = 0;
    while (done < size) {
        const std::uint64_t at = offset + done;
        if ((at < start_ || at >= start_ + buffer_.size()) && !Fill(at, error)) {
            break;
        }
        const std::size_t begin = at - start_;
        const std::size_t count = std::min(size - done, buffer_.size() - begin);
        std::memcpy(static_cast<char*>(data) + done, buffer_.data() + begin, count);
        done += count;
    }
    return done;
}

} // namespace orvstorage::detail
