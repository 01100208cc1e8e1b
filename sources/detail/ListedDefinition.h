#pragma once

#include <package/CapsuleZip.h>
#include <sources/CapsuleEntry.h>

#include <cstdint>
#include <functional>

namespace orvcapsule::detail {

/// @name The definition of a template that is listed
/// Several workers read definitions at the same time. Together they use no more memory than one large definition needs:
/// a large one waits until the others are done, and they wait for it. Afterwards `stop` is asked; true gives up.
/// @return false when there is no definition that can be read; the entry is then as it was, with the reason in its
/// `refusal` unless `stop` gave up
/// @{

/// Fills an entry from its package's definition.
bool FillFromDefinition(CapsuleEntry& entry, const CapsuleZip& package, const std::function<bool()>& stop);
/// Fills an entry from a definition document that is a file of `size` bytes.
bool FillFromDefinitionFile(CapsuleEntry& entry, const orvcore::UTF8String& path, std::uint64_t size,
                            const std::function<bool()>& stop);
/// @}

} // namespace orvcapsule::detail
