#pragma once

#include <capsule/UIString.h>

#include <orvcore/json/shared/JSONTable.h>

namespace orvcore::serialization::detail {

// A localised text: {"strDB": [{"str": text, "localeString": locale}, ...]}, locales in ascending order.
template <>
struct Codec<orvcapsule::UIString> {
    static bool Read(const JSONNode& node, orvcapsule::UIString& out);
    static bool Check(const JSONNode& node);
    static void Write(JSONSink& sink, const orvcapsule::UIString& value);
};

} // namespace orvcore::serialization::detail
