#pragma once

#include <orvstorage/ZipLimits.h>
#include <orvstorage/detail/reading/ZipArchive.h>

#include <algorithm>
#include <cstdint>

namespace orvstorage::detail {

/// Reads one entry's content piece by piece, checking it: never more bytes than the entry declares, its checksum at
/// the end. Memory does not depend on the entry's size.
class EntryReader {
public:
    /// Looks at what the directory says of the entry; False when that alone refuses it.
    static bool MayRead(const ArchiveEntry& entry, const ZipLimits& limits, ZipFailure& failure);

    /// @param handle the calling thread's handle on the archive of `entry`
    EntryReader(zip_t* handle, std::uint64_t index, const ArchiveEntry& entry, ZipFailure& failure);

    /// Fills `data`; fewer bytes than `size` mean the end, reached in good order, or a failure, told in `failure`.
    std::size_t Read(void* data, std::size_t size, ZipFailure& failure);

    /// Reads everything into memory, which grows with what is really there.
    /// @param content a vector or string of bytes
    template <class Container>
    bool ReadAll(Container& content, ZipFailure& failure)
    {
        content.resize(std::min(declared_, kTrustedSize));
        std::size_t done = 0;
        for (;;) {
            done += Read(content.data() + done, content.size() - done, failure);
            if (failure || done < content.size() || done >= declared_) {
                break;
            }
            content.resize(std::min(declared_, std::uint64_t{content.size()} * 2));
        }
        char beyond = 0;
        if (!failure && done == content.size()) {
            Read(&beyond, 1, failure); // the checksum is compared at the end of the data
        }
        content.resize(done);
        return !failure;
    }

private:
    static constexpr std::uint64_t kTrustedSize = std::uint64_t{4} << 20; // given on the directory's word alone

    EntryHandle handle_;
    std::uint64_t declared_;
    std::uint64_t done_ = 0;
};

} // namespace orvstorage::detail
