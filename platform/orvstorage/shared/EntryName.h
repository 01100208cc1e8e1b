#pragma once

#include <orvstorage/ZipFailure.h>

#include <string_view>

namespace orvstorage::detail {

/// The result of checking an entry's name that is to become a file.
struct EntryName {
    ZipError error = ZipError::None;
    orvcore::UTF8String relative; ///< the path below the target folder; "." and empty components are gone
};

/// Checks a name with forward slashes by the same rules on every system: a name that any system cannot store, or stores
/// elsewhere, is refused on all. A folder's closing slash is dropped.
ORVPLATFORM_API EntryName CheckEntryName(std::u8string_view name);

/// The form in which two names are equal when they differ in case only.
ORVPLATFORM_API orvcore::UTF8String FoldCase(std::u8string_view name);

} // namespace orvstorage::detail
