#pragma once

#include <orvstorage/ZipLimits.h>
#include <orvstorage/detail/reading/ZipArchive.h>

#include <vector>

namespace orvstorage::detail {

/// What unpacking an archive comes to, decided before anything is written.
struct UnpackPlan {
    struct File {
        std::size_t index = 0; ///< of the archive's entry
        orvcore::UTF8String relative;
    };
    std::vector<File> files;
    std::vector<orvcore::UTF8String> directories;
    std::vector<ZipFault> refused; ///< entries that are left out, in the archive's order
    std::uint64_t totalSize = 0;   ///< unpacked bytes of all files
};

/// Judges every entry. Entries whose name or kind is bad are refused alone; a limit that is exceeded refuses the whole.
ZipResult<UnpackPlan> MakeUnpackPlan(const ZipArchive& archive, const ZipLimits& limits);

} // namespace orvstorage::detail
