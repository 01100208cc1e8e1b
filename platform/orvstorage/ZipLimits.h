#pragma once

#include <cstdint>

namespace orvstorage {

/// How much one archive may ask of this machine. An archive that asks for more is refused before anything is
/// written; one that lies about its sizes is stopped when it reaches what it declared.
struct ZipLimits {
    /// Entries in the archive; as many folders may there be in it, those that are only part of a name included.
    std::uint64_t maxEntries = 100'000;
    /// Folders in one another.
    std::uint64_t maxDepth = 64;
    /// Bytes of the archive's directory: names, extra fields and comments of all entries.
    std::uint64_t maxDirectorySize = std::uint64_t{64} << 20;
    /// Unpacked bytes of one entry that is written to a file.
    std::uint64_t maxEntrySize = std::uint64_t{64} << 30;
    /// Unpacked bytes of one entry that is read into memory.
    std::uint64_t maxItemSize = std::uint64_t{512} << 20;
    /// Unpacked bytes of all entries together.
    std::uint64_t maxTotalSize = std::uint64_t{128} << 30;
    /// Unpacked bytes for one packed byte, asked of entries of `ratioFloor` bytes and more. Smaller ones are harmless
    /// and may well be blank pictures.
    std::uint64_t maxRatio = 400;
    std::uint64_t ratioFloor = std::uint64_t{256} << 20;
};

} // namespace orvstorage
