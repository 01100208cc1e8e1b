#pragma once

#include <capsule/ClientControl.h>

#include <orvcore/json/shared/JSONCodec.h>

#include <memory>
#include <vector>

namespace orvcore::serialization::detail {

// A control as an object. What names no kind of control that documents hold reads as an empty pointer.
template <>
struct Codec<std::shared_ptr<orvcapsule::ClientControl>> {
    static bool Read(const JSONNode& node, std::shared_ptr<orvcapsule::ClientControl>& out);
    static bool Check(const JSONNode& node);
    static void Write(JSONSink& sink, const std::shared_ptr<orvcapsule::ClientControl>& value);
};

} // namespace orvcore::serialization::detail

namespace orvcapsule::serialization::detail {

// The controls of a template; elements that are none are skipped in both directions.
struct ControlListCodec {
    using List = std::vector<std::shared_ptr<ClientControl>>;
    static bool Read(const orvcore::serialization::JSONNode& node, List& out);
    static bool Check(const orvcore::serialization::JSONNode& node);
    static void Write(orvcore::serialization::JSONSink& sink, const List& value);
};

} // namespace orvcapsule::serialization::detail
