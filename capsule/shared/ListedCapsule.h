#pragma once

#include <capsule/Capsule.h>

#include <optional>

namespace orvcapsule::serialization {

/// What `CapsuleFromJson` makes of a definition, without what no list of templates shows: no controls, and of the
/// compositions the one that `Capsule::GetSourceInfo` gives in the application language. What is left out is judged all
/// the same, so a definition that one of the two refuses the other refuses, too. Of a definition with eight controls in
/// ten languages it takes two thirds of the time, most of which is the parser's.
/// @return nothing for a document of a newer version
/// @throws orvcore::serialization::missing_key_exception, as `CapsuleFromJson` does
ORVCAPSULE_API std::optional<Capsule> ListedCapsuleFromJson(const UTF8String& text);

} // namespace orvcapsule::serialization
