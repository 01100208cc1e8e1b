#pragma once

#include <tools/http/Message.h>

#include <optional>
#include <string>
#include <string_view>

namespace orvtools::http {

/// The text with its percent escapes decoded; none when an escape is broken, or when the result is not well-formed
/// UTF-8 or holds a NUL.
std::optional<std::string> DecodePercent(std::string_view text);

/// Sets the request's target, and takes it apart into the path and the query. False, with neither of use, for what
/// Request::path excludes, an escaped slash, and every other form than "/PATH?QUERY".
bool ParseTarget(std::string_view target, Request& request);

/// The text as one part of a path or a value of a query: everything but letters, digits and "-._~" is escaped.
std::string EncodePercent(std::string_view text);

} // namespace orvtools::http
