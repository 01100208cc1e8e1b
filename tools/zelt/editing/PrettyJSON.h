#pragma once

#include <string>
#include <string_view>

namespace zelt {

/// A JSON text with each member and element on a line of its own, indented by two spaces a level; short lists of
/// numbers and empty values stay on one line. Keys keep their order, values their text. Ends with a line feed.
/// @throws orvcore::serialization::json_outline_exception  when it is not JSON
std::string PrettyJSON(std::string_view text);

} // namespace zelt
