#pragma once

#include <orvstorage/ZipLimits.h>
#include <orvstorage/detail/reading/ArchiveFile.h>

#include <cstdint>
#include <vector>

namespace orvstorage::detail {

/// Where an archive's directory lies, by the records at the archive's end.
struct DirectoryExtent {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    std::uint64_t entries = 0; ///< some writers count modulo 65536
    std::vector<unsigned char> comment = {};
    ZipError error = ZipError::None; ///< set when there is no directory that could be read
};

/// Reads the records, which may be hostile. Those of zip64 count when they are there and agree with the plain one.
DirectoryExtent LocateDirectory(const ArchiveFile& file, const ZipLimits& limits);

/// The records for such a directory, to stand right behind it, where nothing before them and nothing in their comment
/// leads a reader to another directory. The comment stays, for an archive that is changed keeps it. See
/// ArchiveFile::ReplaceEnd.
std::vector<unsigned char> MakeEnd(const DirectoryExtent& extent);

} // namespace orvstorage::detail
