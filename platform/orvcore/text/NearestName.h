#pragma once

#include <orvcore/Export.h>

#include <string>
#include <string_view>
#include <vector>

namespace orvcore {

/// The name that a misspelt word was likely meant to be: the one that takes the fewest letters to add, drop, change or
/// swap with their neighbour, of several the first. Upper and lower case of ASCII letters count as equal. Empty when
/// each takes more than a third of its letters, or the word is longer than any name can be meant (64 bytes).
/// Thread-safe.
ORVPLATFORM_API std::string NearestName(std::string_view word, const std::vector<std::string>& names);

} // namespace orvcore
