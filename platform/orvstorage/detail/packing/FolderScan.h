#pragma once

#include <orvstorage/ZipLimits.h>
#include <orvstorage/detail/ZipResult.h>

#include <cstdint>
#include <vector>

namespace orvstorage::detail {

/// A file that is to become an entry.
struct PackItem {
    orvcore::UTF8String name; ///< the entry's
    std::filesystem::path path;
    std::uint64_t size = 0;
    std::uint16_t dosDate = 0;
    std::uint16_t dosTime = 0;
};

/// Looks at one file. Fails when it is missing or no regular file.
ZipResult<PackItem> DescribeItem(const std::filesystem::path& path, const orvcore::UTF8String& name);

/// All files below `folder` in the order of their names, `exclude` and private files left out. Fails when something
/// is there that cannot be packed or could not be unpacked everywhere under `limits`.
ZipResult<std::vector<PackItem>> ScanFolder(const std::filesystem::path& folder, const std::filesystem::path& exclude,
                                            const ZipLimits& limits);

} // namespace orvstorage::detail
