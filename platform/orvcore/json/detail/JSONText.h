#pragma once

#include <string>
#include <string_view>

// What is asked of JSON texts without reading them. Malformed texts get some answer; the parser refuses them.
namespace orvcore::serialization::detail {

/// How many values a text holds.
std::size_t CountValues(std::string_view json) noexcept;

/// The text with every integer beyond 64 bits in the form of a floating-point number; empty when there is none.
std::string WithBigIntegersAsDoubles(std::string_view json);

} // namespace orvcore::serialization::detail
