#pragma once

#include <orvcore/Export.h>

#include <string>
#include <string_view>

namespace orvcore {

/// UTF-8 text in a form that is safe to show on one line: what could steer a terminal, fake a line or turn the order of
/// the letters round (control characters, line separators, overrides of the writing direction) becomes "?", and so does
/// what is not UTF-8.
ORVPLATFORM_API std::string Printable(std::string_view text);

/// UTF-8 text that is short enough to stand in a sentence: of a longer one the first 80 bytes, whole characters, and
/// "...".
ORVPLATFORM_API std::string Shortened(std::string_view text);

} // namespace orvcore
