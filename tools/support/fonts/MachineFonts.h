#pragma once

#include <optional>
#include <set>
#include <string>

namespace orvtools {

/// The names, UTF-8, by which this machine's fonts can be asked for: of each font the PostScript name, which templates
/// use, the full name and the family's. Nothing when the system cannot tell. Takes a while: it reads the system's
/// whole table.
std::optional<std::set<std::string>> InstalledFontNames();

} // namespace orvtools
