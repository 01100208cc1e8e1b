#pragma once

#include <tools/support/Console.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace zelt {

enum class Style : std::uint8_t { Heading, Good, Bad, Warning };

/// The text in the style's colour, where the stream is a terminal that shows colours and the user has not set NO_COLOR;
/// elsewhere as it is.
std::string Styled(std::string_view text, Style style,
                   orvtools::StandardStream stream = orvtools::StandardStream::Output);

/// How many columns a text for people may take: the terminal's, or those that COLUMNS says, or 80.
std::size_t OutputWidth();

/// The text in lines of at most `width` columns, broken at spaces; each line but the first is indented. A word that is
/// longer has a line of its own. Ends without a line feed.
std::string Wrapped(std::string_view text, std::size_t width, std::size_t indent);

} // namespace zelt
