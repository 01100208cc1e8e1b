#pragma once

#include <orvcore/json/JSON.h>

#include <cstdint>
#include <variant>
#include <vector>

namespace kinlet {

/// The value of one parameter: on or off, a whole number, a number, a text, or a list of numbers (a point, a colour, a
/// scale).
using CapsuleParamValue = std::variant<bool, std::int64_t, double, orvcore::UTF16String, std::vector<double>>;

/// One parameter of a placed template.
struct CapsuleParam {
    /// The id of the template's control.
    orvcore::UTF16String id;
    CapsuleParamValue value;
    orvcore::serialization::UnknownKeys unknownKeys;

    bool operator==(const CapsuleParam&) const = default;
};

/// Which template a composition was placed from, and the values its controls were given.
struct ORVPLATFORM_API CapsuleParams {
    /// The identity of the template; empty when the composition came from none.
    orvcore::UTF16String capsuleID;
    /// Parameters in the order of the template's controls; those not listed have the template's own value.
    std::vector<CapsuleParam> params;
    /// Unknown keys of the document that was read; written again with the record.
    orvcore::serialization::UnknownKeys unknownKeys;

    /// The record as a JSON object: {"capsuleID": text, "params": [{"id": text, "value": any of the kinds above}]}.
    orvcore::serialization::Variant ToJSON() const;
    /// Replaces this record by what `tree` holds; absent keys take their defaults.
    /// @return false, the record being left as it is, when `tree` is not an object.
    /// @throws orvcore::serialization::missing_key_exception  when a key holds no usable value; the record is then
    ///         left as it is.
    bool FromJSON(const orvcore::serialization::Variant& tree);

    bool operator==(const CapsuleParams&) const = default;
};

} // namespace kinlet
