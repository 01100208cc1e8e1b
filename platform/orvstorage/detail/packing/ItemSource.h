#pragma once

#include <orvstorage/detail/packing/FolderScan.h>
#include <orvstorage/detail/packing/PackProgress.h>
#include <orvstorage/detail/reading/Libzip.h>

namespace orvstorage::detail {

/// What a source hands to the zip library: the file's bytes, or what they deflate to.
enum class ItemForm : std::uint8_t { Plain, Deflated };

/// A source from which the zip library reads the file of `item`, opened no sooner than its turn comes. Null when
/// memory runs out. `item` and `progress` must outlive the archive's closing.
zip_source_t* MakeItemSource(const PackItem& item, ItemForm form, PackProgress& progress);

} // namespace orvstorage::detail
