#pragma once

#include <orvstorage/ZipLimits.h>
#include <orvstorage/detail/ZipArchive.h>

#include <cstdint>
#include <vector>

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
    bool ReadAll(std::vector<std::uint8_t>& content, ZipFailure& failure);

private:
    EntryHandle handle_;
    std::uint64_t declared_;
    std::uint64_t done_ = 0;
};

} // namespace orvstorage::detail
