#pragma once

#include <orvcore/json/JSONErrors.h>

#include <string>
#include <string_view>

namespace orvcore::serialization::detail {

/// " under "key"", for the messages about a value; empty for a value without a key.
inline std::string UnderKey(std::string_view key)
{
    return key.empty() ? "" : " under \"" + std::string(key) + "\"";
}

inline json_write_exception NotFinite(std::string_view key)
{
    return json_write_exception("a number" + UnderKey(key) + " is not finite and has no JSON form");
}

} // namespace orvcore::serialization::detail
