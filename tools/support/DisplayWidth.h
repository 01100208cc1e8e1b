#pragma once

#include <cstddef>
#include <string_view>

namespace orvtools {

/// How many columns a UTF-8 text takes on a terminal: two for the wide characters of East Asian scripts and for emoji,
/// none for what joins the character before it (combining marks, joiners), else one. A byte that is not UTF-8 counts as
/// the one sign that stands for it. Terminals differ in sequences of emoji and in some Indic vowel signs; there the
/// answer may be off by some columns. Thread-safe, throws nothing.
std::size_t DisplayWidth(std::string_view text) noexcept;

} // namespace orvtools
