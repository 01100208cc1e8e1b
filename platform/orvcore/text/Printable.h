#pragma once

#include <orvcore/Export.h>

#include <string>
#include <string_view>

namespace orvcore {

/// UTF-8 text in a form that is safe to show on one line: what could steer a terminal, fake a line or turn the order of
/// the letters round (control characters, line separators, overrides of the writing direction) becomes "?", and so does
/// what is not UTF-8.
ORVPLATFORM_API std::string Printable(std::string_view text);

} // namespace orvcore
