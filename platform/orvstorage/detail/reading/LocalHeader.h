#pragma once

#include <orvstorage/detail/reading/CentralDirectory.h>

namespace orvstorage::detail {

/// Compares the header in front of an entry's data, and the record behind it, with the directory: readers that go by
/// them must see the same entry. Differences that real writers produce are accepted: sizes that were not known yet,
/// other extra fields, flags that change nothing.
/// @return None, HeaderMismatch, or the reason why the data is not the entry's own
ZipError CheckLocalHeader(const ArchiveFile& file, const DirectoryRecord& record);

} // namespace orvstorage::detail
