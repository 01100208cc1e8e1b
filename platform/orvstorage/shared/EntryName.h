#pragma once

#include <orvstorage/ZipFailure.h>

#include <string_view>

namespace orvstorage::detail {

/// What an entry's name comes to when it is to become a file.
struct EntryName {
    ZipError error = ZipError::None;
    orvcore::UTF8String relative; ///< the path below the target folder; "." and empty components are gone
};

/// Holds a name with forward slashes against one set of rules on every system: what one system could not store, or
/// would store elsewhere, is refused on all. A folder's closing slash is dropped.
ORVPLATFORM_API EntryName CheckEntryName(std::u8string_view name);

/// The form under which two names meet where case does not count.
ORVPLATFORM_API orvcore::UTF8String FoldCase(std::u8string_view name);

} // namespace orvstorage::detail
