#pragma once

#include <package/CapsuleZip.h>
#include <sources/CapsuleEntry.h>

#include <functional>

namespace orvcapsule::detail {

/// Fills an entry from its package's definition. Definitions are read by several workers at once; together they take no
/// more memory than one large definition, so a large one waits for the others and they for it.
/// @param stop  asked after such a wait; true gives up
/// @return false, with the entry as it was, when there is no definition that can be read
bool FillFromDefinition(CapsuleEntry& entry, const CapsuleZip& package, const std::function<bool()>& stop);

} // namespace orvcapsule::detail
