#pragma once

#include <package/CapsuleZip.h>
#include <sources/CapsuleEntry.h>

#include <functional>

namespace orvcapsule::detail {

/// Fills an entry from its package's definition. Several workers read definitions at the same time. Together they use
/// no more memory than one large definition needs: a large one waits until the others are done, and they wait for it.
/// @param stop  asked after such a wait; true gives up
/// @return false, with the entry as it was, when there is no definition that can be read
bool FillFromDefinition(CapsuleEntry& entry, const CapsuleZip& package, const std::function<bool()>& stop);

} // namespace orvcapsule::detail
