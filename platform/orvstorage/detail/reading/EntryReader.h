#pragma once

#include <orvcore/json/JSON.h>
#include <orvstorage/ZipLimits.h>
#include <orvstorage/detail/reading/ZipArchive.h>

#include <algorithm>
#include <cstdint>

namespace orvstorage::detail {

/// True when so many bytes unpack from so few that the limits do not allow it, of one entry or of several together.
bool IsBeyondRatio(std::uint64_t size, std::uint64_t compressedSize, const ZipLimits& limits);

/// Reads one entry's content piece by piece, checking it: its own header against the directory, never more bytes than
/// the entry declares, its checksum at the end. Memory does not depend on the entry's size.
class EntryReader {
public:
    /// Why what the directory says of the entry alone refuses it; None when it may be read.
    static ZipError Judge(const ArchiveEntry& entry, const ZipLimits& limits);

    /// @param handle the calling thread's handle on the archive of `entry`
    static ZipResult<EntryReader> Open(zip_t* handle, std::uint64_t index, const ArchiveEntry& entry);

    /// Fills `data`; fewer bytes than `size` are the end, reached in good order.
    ZipResult<std::size_t> Read(void* data, std::size_t size);

    /// Reads everything into memory, which grows with what is really there.
    /// @param content a vector or string of bytes
    template <class Container>
    ZipFault ReadAll(Container& content)
    {
        const auto makeRoom = [&content](std::uint64_t size) {
            content.reserve(size + orvcore::serialization::kJSONTextRoom); // many are texts that are parsed next
            content.resize(size);
        };
        makeRoom(std::min(declared_, kTrustedSize));
        std::size_t done = 0;
        for (;;) {
            auto got = Read(content.data() + done, content.size() - done);
            if (!got) {
                return got.Fault();
            }
            done += *got;
            if (done < content.size() || done >= declared_) {
                break;
            }
            makeRoom(std::min(declared_, std::uint64_t{content.size()} * 2));
        }
        char beyond = 0;
        if (done == content.size()) {
            if (auto end = Read(&beyond, 1); !end) { // the checksum is compared at the end of the data
                return end.Fault();
            }
        }
        content.resize(done);
        return {};
    }

private:
    EntryReader(EntryHandle handle, const ArchiveEntry& entry)
        : handle_(std::move(handle))
        , declared_(entry.shown.size)
        , hasWeakPassword_(entry.hasWeakPassword)
    {
    }
    ZipResult<std::size_t> ReadPlain(void* data, std::size_t size);

    // A directory of a few bytes may declare any size. Beyond this, memory doubles only as bytes really come, so an
    // entry that lies costs at most twice of what it has.
    static constexpr std::uint64_t kTrustedSize = std::uint64_t{4} << 20; // given on the directory's word alone

    EntryHandle handle_;
    std::uint64_t declared_;
    bool hasWeakPassword_;
    std::uint64_t done_ = 0;
};

} // namespace orvstorage::detail
