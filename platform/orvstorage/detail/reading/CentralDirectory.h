#pragma once

#include <orvstorage/ZipLimits.h>
#include <orvstorage/detail/reading/ArchiveFile.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace orvstorage::detail {

/// What the zip library does not tell of an entry but judging it needs.
struct DirectoryRecord {
    std::string_view name; ///< as it is stored, in the archive file's tail
    std::uint64_t size = 0;
    std::uint64_t compressedSize = 0;
    std::uint64_t headerOffset = 0;
    std::uint64_t dataLimit = 0; ///< where the next entry's header or the directory begins
    std::uint32_t crc = 0;
    std::uint32_t attributes = 0; ///< the making system's file attributes; Unix mode in the upper half
    std::uint16_t method = 0;
    std::uint16_t flags = 0;
    std::uint8_t system = 0;             ///< where the entry was made: 0 FAT, 3 Unix, 10 NTFS, 14 VFAT
    bool nameHasControls = false;        ///< such as the zip library does not pass on
    ZipError dataError = ZipError::None; ///< set when its bytes are not its own, or cannot be decrypted
};

/// Reads the archive's directory, which may be hostile: memory stays within the limits, entries that share bytes with
/// others or lie outside the file are marked. Done before the zip library sees the file, which then shows it this very
/// directory, whatever else the file's end could be taken for, and without what would make the library refuse the
/// whole for the sake of one entry.
ZipResult<std::vector<DirectoryRecord>> ReadCentralDirectory(ArchiveFile& file, const ZipLimits& limits);

} // namespace orvstorage::detail
