#pragma once

#include <orvstorage/detail/packing/ItemSource.h>
#include <orvstorage/detail/reading/ZipArchive.h>

#include <optional>
#include <string>

namespace orvstorage::detail {

/// Where and how an archive is written.
struct PackTarget {
    std::filesystem::path path;
    std::string password;                                 ///< encrypts what is added; empty: none
    std::optional<orvcore::detail::FileVersion>& version; ///< receives the new file's
};

/// Makes a new archive of `items` that takes the place of the target's.
bool PackAll(const PackTarget& target, const std::vector<PackItem>& items, ByteProgress& progress, ZipFailure& failure);

/// Makes a new archive of an old one, with `item` in the place of the entry `replaced` or added at the end, or, when it
/// is null, without the entry `replaced`. The old one's other entries are copied as they are packed. `old` may be null:
/// there is none. Fails when that, or nothing, is no longer what is at the target's path.
bool PackOne(const PackTarget& target, std::shared_ptr<const ArchiveFile> old, std::optional<std::size_t> replaced,
             const PackItem* item, ZipFailure& failure);

} // namespace orvstorage::detail
