#pragma once

#include <orvstorage/ZipFailure.h>

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

/// Looks at one file. False, with the reason in `failure`, when it is missing or no regular file.
bool DescribeItem(const std::filesystem::path& path, orvcore::UTF8String name, PackItem& item, ZipFailure& failure);

/// All files below `folder` in the order of their names, `exclude` and private files left out. False when something
/// is there that cannot be packed or could not be unpacked everywhere.
bool ScanFolder(const std::filesystem::path& folder, const std::filesystem::path& exclude, std::vector<PackItem>& items,
                ZipFailure& failure);

} // namespace orvstorage::detail
