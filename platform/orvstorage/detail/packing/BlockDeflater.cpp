#include <orvstorage/detail/packing/BlockDeflater.h>

#include <orvcore/tasks/Executor.h>
#include <orvcore/tasks/ParallelFor.h>

#define ZLIB_CONST
#include <zlib.h>

#include <algorithm>
#include <new>

namespace orvstorage::detail {

namespace {

// All but kMostBlocks decide the bytes of every archive that is packed: the same folder gives the same archive only as
// long as they stay.
constexpr std::size_t kBlockSize = std::size_t{256} << 10;
constexpr std::size_t kWindow = std::size_t{32} << 10; // how far deflate looks back
// A bound for memory: a block holds its compressor (a quarter of a megabyte at this level of memory), 256 KB of output
// and its part of the batch.
constexpr std::size_t kMostBlocks = 32;
constexpr int kLevel = 6;
constexpr int kRawWindowBits = -15; // no header of zlib's own
constexpr int kMemoryLevel = 8;

const Bytef* Bytes(const char* data)
{
    return reinterpret_cast<const Bytef*>(data);
}

} // namespace

// Deflate is a stream, but its blocks can be made side by side: each begins with the last 32 KB before it as its
// dictionary and, but for the last, ends at a byte's border (Z_SYNC_FLUSH), so that the results are one stream when put
// one behind the other. This costs a few bytes a block, and the blocks do not depend on the number of processors: the
// same file gives the same bytes everywhere.
//
// One block's compressor and result, kept for the blocks to come.
struct BlockDeflater::Block {
    Block()
    {
        if (deflateInit2(&stream, kLevel, Z_DEFLATED, kRawWindowBits, kMemoryLevel, Z_DEFAULT_STRATEGY) != Z_OK) {
            throw std::bad_alloc();
        }
        // The largest a block can become, with the empty block that closes it.
        output.resize(deflateBound(&stream, kBlockSize) + 16);
    }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block()
    {
        deflateEnd(&stream);
    }

    void Run(std::span<const char> dictionary, std::span<const char> input, bool last)
    {
        // A new stream each time, so that a block depends on its input and dictionary alone and not on what this object
        // did before.
        deflateReset(&stream);
        // The reader needs none: to it the bytes of the dictionary are what it has just unpacked.
        if (!dictionary.empty()) {
            deflateSetDictionary(&stream, Bytes(dictionary.data()), static_cast<uInt>(dictionary.size()));
        }
        stream.next_in = Bytes(input.data());
        stream.avail_in = static_cast<uInt>(input.size());
        stream.next_out = reinterpret_cast<Bytef*>(output.data());
        stream.avail_out = static_cast<uInt>(output.size());
        if (deflate(&stream, last ? Z_FINISH : Z_SYNC_FLUSH) != (last ? Z_STREAM_END : Z_OK) || stream.avail_in > 0) {
            throw std::bad_alloc(); // the output is large enough, so nothing else can be the reason
        }
        made = output.size() - stream.avail_out;
        crc = static_cast<std::uint32_t>(crc32(0, Bytes(input.data()), static_cast<uInt>(input.size())));
    }

    z_stream stream{};
    std::vector<char> output;
    std::size_t made = 0;
    std::uint32_t crc = 0;
};

BlockDeflater::BlockDeflater()
{
    // Two blocks a worker: one that took a quick block finds another one in the batch.
    const std::size_t count = std::min(2 * orvcore::GetCPUBoundExecutor()->GetConcurrency(), kMostBlocks);
    blocks_.resize(std::max<std::size_t>(count, 1));
}

BlockDeflater::~BlockDeflater() = default;

std::size_t BlockDeflater::BatchSize() const noexcept
{
    return blocks_.size() * kBlockSize;
}

void BlockDeflater::Deflate(std::span<const char> batch, bool last, std::vector<char>& output)
{
    // At least one: a stream without input still needs the block that closes it.
    const std::size_t count = std::max<std::size_t>((batch.size() + kBlockSize - 1) / kBlockSize, 1);
    for (std::size_t i = 0; i < count; ++i) {
        // Made on this thread and when first needed: memory that runs out here throws to the caller, and a small file
        // costs one.
        if (!blocks_.at(i)) {
            blocks_[i] = std::make_unique<Block>();
        }
    }
    orvcore::ParallelFor(count, 1, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            const std::size_t at = i * kBlockSize;
            const auto dictionary = i == 0 ? std::span<const char>(before_) : batch.subspan(at - kWindow, kWindow);
            const auto input = batch.subspan(at, std::min(kBlockSize, batch.size() - at));
            blocks_[i]->Run(dictionary, input, last && i + 1 == count);
        }
    });
    output.clear();
    std::size_t left = batch.size();
    for (std::size_t i = 0; i < count; ++i) {
        const Block& block = *blocks_[i];
        output.insert(output.end(), block.output.begin(),
                      block.output.begin() + static_cast<std::ptrdiff_t>(block.made));
        const std::size_t length = std::min(kBlockSize, left);
        crc_ = static_cast<std::uint32_t>(crc32_combine(crc_, block.crc, static_cast<z_off_t>(length)));
        left -= length;
    }
    // Only the stream's last batch is shorter than the window, and no batch after it refers back to it.
    const auto tail = batch.last(std::min(kWindow, batch.size()));
    before_.assign(tail.begin(), tail.end());
}

} // namespace orvstorage::detail
