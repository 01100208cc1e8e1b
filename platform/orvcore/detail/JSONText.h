#pragma once

#include <orvcore/Export.h>

#include <string>
#include <string_view>

// What is asked of JSON texts without reading them. Malformed texts get some answer; the parser refuses them.
namespace orvcore::serialization::detail {

/// Why a text asks for more than readers grant, `kMaxJSONSize` and `kMaxJSONValues`; null when it does not.
ORVPLATFORM_API const char* BeyondJSONLimits(std::string_view json) noexcept;

/// The text with every integer beyond 64 bits in the form of a floating-point number; empty when there is none.
std::string WithBigIntegersAsDoubles(std::string_view json);

} // namespace orvcore::serialization::detail
