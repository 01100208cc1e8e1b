#pragma once

#include <sources/CapsuleEntry.h>
#include <sources/CheckCancel.h>
#include <sources/shared/IndexSession.h>

#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <vector>

namespace orvcapsule::detail {

using EntryList = std::vector<boost::shared_ptr<CapsuleEntry>>;

/// Only the first so many tags of an entry are indexed: no real template has more, and one with millions must not delay
/// the others.
inline constexpr std::size_t kMostIndexedTags = 4096;

/// Adds the entries' texts, the display name and each tag, to the search index; ends early, between any two texts, when
/// it must end.
void IndexEntries(const IndexSession& index, const EntryList& entries, CheckCancel& token);

/// Puts the entries' texts in the place of those the index has of them, entry by entry; ends early, between two
/// entries, when it must end. So an entry is found by what it was or by what it is.
void ReindexEntries(const IndexSession& index, const EntryList& entries, CheckCancel& token);

} // namespace orvcapsule::detail
