#pragma once

#include <orvcore/text/Strings.h>

#include <cstddef>
#include <cstdint>

namespace orvstorage {

/// How many of an entry's first bytes are told by a check that reads it: enough to know most types of file.
inline constexpr std::size_t kEntryHeadSize = 16;

/// One entry of an archive as its directory describes it.
struct ZipEntry {
    orvcore::UTF8String name;         ///< forward slashes; a folder's name ends with one
    std::uint64_t size = 0;           ///< unpacked bytes
    std::uint64_t compressedSize = 0; ///< bytes in the archive
    bool isDirectory = false;
    bool isEncrypted = false;
};

} // namespace orvstorage
