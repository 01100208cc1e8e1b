#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace orvstorage::detail {

/// Deflates one stream on all processors: the input is cut into blocks of a fixed size, each compressed on its own with
/// the bytes before it as its dictionary, and the results joined. The output does not depend on how many processors
/// there are. Used by one thread.
class BlockDeflater {
public:
    BlockDeflater();
    BlockDeflater(const BlockDeflater&) = delete;
    BlockDeflater& operator=(const BlockDeflater&) = delete;
    ~BlockDeflater();

    /// How many bytes to hand over at a time, except at the end.
    std::size_t BatchSize() const noexcept;
    /// Compresses the next batch, the stream's last one or not, into `output`, whose old content is dropped. Throws
    /// `std::bad_alloc` when memory runs out.
    void Deflate(std::span<const char> batch, bool last, std::vector<char>& output);
    /// The checksum of all input so far.
    std::uint32_t Crc() const noexcept
    {
        return crc_;
    }

private:
    struct Block;

    std::vector<std::unique_ptr<Block>> blocks_;
    std::string before_; // the end of the last batch: the next one's dictionary
    std::uint32_t crc_ = 0;
};

} // namespace orvstorage::detail
