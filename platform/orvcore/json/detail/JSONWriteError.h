#pragma once

#include <orvcore/json/shared/JSONDocument.h>

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

/// A value that is to be written as it is. @throws json_write_exception  when `json` is not the text of one
inline JSONDocument ReadRaw(std::string_view json, std::string_view key)
{
    try {
        if (json.starts_with("\uFEFF")) {
            throw json_parse_exception("a byte-order mark inside a text");
        }
        return JSONDocument::Parse(AsUTF8(json));
    } catch (const json_parse_exception& error) {
        throw json_write_exception("the text of a value" + UnderKey(key) + " is not JSON: " + error.what());
    }
}

} // namespace orvcore::serialization::detail
