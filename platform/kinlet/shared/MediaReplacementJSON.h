#pragma once

#include <kinlet/MediaReplacementProperties.h>
#include <orvcore/json/shared/JSONTable.h>

// The rows lie in the object of the control that has the properties, among the control's own. A control's table takes
// them in with
//   std::tuple_cat(Lift<Control>(accessToProperties, JSONTable<kinlet::MediaReplacementProperties>::fields),
//                  Fields(...own rows...))
// and leads its `unknown` to the properties' unknown keys.
namespace orvcore::serialization::detail {

template <>
struct JSONTable<kinlet::MediaReplacementProperties> {
    static constexpr auto fields =
        Fields(Optional("replacementFit", &kinlet::MediaReplacementProperties::fit),
               Optional("replacementKinds", &kinlet::MediaReplacementProperties::mediaKinds),
               Optional("replacementTrimToSlot", &kinlet::MediaReplacementProperties::trimToSlot),
               Optional("replacementLayerID", &kinlet::MediaReplacementProperties::layerID));
    static constexpr auto unknown = &kinlet::MediaReplacementProperties::unknownKeys;
};

} // namespace orvcore::serialization::detail
