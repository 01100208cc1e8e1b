#pragma once

#include <cstddef>
#include <string_view>

namespace zelt {

/// How many columns a UTF-8 text takes on a terminal: two for the wide characters of East Asian scripts and emoji, none
/// for combining marks and joiners, else one. Terminals agree on these for the scripts of the table in the source; for
/// rarer ones the answer may be off by some columns.
std::size_t DisplayWidth(std::string_view text);

} // namespace zelt
