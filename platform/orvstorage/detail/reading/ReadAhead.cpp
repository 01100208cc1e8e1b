#include <orvstorage/detail/reading/ReadAhead.h>

#include <algorithm>
#include <cstring>

namespace orvstorage::detail {

namespace {

constexpr std::size_t kFirstPiece = std::size_t{16} << 10;
constexpr std::size_t kLargestPiece = std::size_t{64} << 10;

} // namespace

bool ReadAhead::Fill(std::uint64_t offset, std::error_code& error)
{
    const bool inARow = filled_ > 0 && offset == start_ + filled_;
    const std::size_t wanted = inARow ? kLargestPiece : kFirstPiece;
    if (wanted > capacity_) {
        buffer_ = std::make_unique_for_overwrite<unsigned char[]>(wanted);
        capacity_ = wanted;
    }
    start_ = offset;
    filled_ = file_->Read(offset, buffer_.get(), wanted, error);
    return filled_ > 0;
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
        if ((at < start_ || at >= start_ + filled_) && !Fill(at, error)) {
            break;
        }
        const std::size_t begin = at - start_;
        const std::size_t count = std::min(size - done, filled_ - begin);
        std::memcpy(static_cast<char*>(data) + done, buffer_.get() + begin, count);
        done += count;
    }
    return done;
}

} // namespace orvstorage::detail
