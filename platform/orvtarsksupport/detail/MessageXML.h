#pragma once

#include <orvcore/json/JSON.h>

#include <string_view>

namespace orvtarsksupport::detail {

/// The XML document of a payload, as `SendTarskMessage` describes it.
/// @throws orvcore::serialization::json_write_exception  for what has no form in it
ORVPLATFORM_API orvcore::UTF8String MessageXML(std::u8string_view rootTag,
                                               const orvcore::serialization::Object& payload);

} // namespace orvtarsksupport::detail
