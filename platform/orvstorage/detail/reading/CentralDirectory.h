#pragma once

#include <orvstorage/ZipLimits.h>
#include <orvstorage/detail/reading/ArchiveFile.h>

#include <cstdint>
#include <vector>

namespace orvstorage::detail {

/// What the zip library does not tell of an entry but judging it needs.
struct DirectoryRecord {
    std::uint64_t size = 0;
    std::uint64_t compressedSize = 0;
    std::uint64_t headerOffset = 0;
    std::uint32_t crc = 0;
    std::uint32_t attributes = 0; ///< the making system's file attributes; Unix mode in the upper half
    std::uint16_t nameLength = 0;
    std::uint16_t flags = 0;
    std::uint8_t system = 0; ///< where the entry was made: 0 FAT, 3 Unix, 10 NTFS, 14 VFAT
    bool nameHasNul = false;
    ZipError dataError = ZipError::None; ///< set when its bytes are not its own
};

/// Reads the archive's directory, which may be hostile: memory stays within the limits, entries that share bytes with
/// others or lie outside the file are marked. Checked before the zip library sees the file.
/// @return false with `failure.error` set when the archive as a whole is refused.
bool ReadCentralDirectory(const ArchiveFile& file, const ZipLimits& limits, std::vector<DirectoryRecord>& records,
                          ZipFailure& failure);

} // namespace orvstorage::detail
