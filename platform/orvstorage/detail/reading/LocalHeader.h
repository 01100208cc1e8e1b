#pragma once

#include <orvstorage/detail/reading/CentralDirectory.h>

namespace orvstorage::detail {

/// Holds the header in front of an entry's data, and the record behind it, against what the directory says: readers
/// that go by them must see the same entry. What real writers leave open there is left open: sizes that were not known
/// yet, other extra fields, flags that change nothing.
/// @return None, HeaderMismatch, or the reason why the data is not the entry's own
ZipError CheckLocalHeader(const ArchiveFile& file, const DirectoryRecord& record);

} // namespace orvstorage::detail
