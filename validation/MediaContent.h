#pragma once

#include <orvcapsule/Export.h>

#include <string_view>

namespace orvcapsule {

/// @name Pictures and films by their content
/// Whether a file is a PNG picture or an MP4 film, QuickTime's own type not among them, as far as its beginning tells.
/// @param head  the file's first orvstorage::kEntryHeadSize bytes; a file that is shorter is neither
/// Thread-safe; nothing is thrown.
/// @{
ORVCAPSULE_API bool IsPNG(std::string_view head) noexcept;
ORVCAPSULE_API bool IsMP4(std::string_view head) noexcept;
/// @}

} // namespace orvcapsule
