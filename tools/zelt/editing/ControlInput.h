#pragma once

#include <capsule/ControlKinds.h>

#include <string>
#include <string_view>
#include <vector>

namespace zelt {

/// A control's new value, as a person types it, in the form that a document holds. What is accepted depends on the
/// control's kind: "on" or "off"; a number; "r,g,b", "r,g,b,a", "#RRGGBB" or "#RRGGBBAA" (opacity stays when it is not
/// given); "x,y"; a menu's index or one of its entries; one number for each dimension of a scale; a cache id; the JSON
/// text of a table. Texts are not for this function, as their form holds all languages.
/// @param force  numbers outside the control's range are taken
/// @throws UsageError  that says what the control wants
std::string ValueAsJSON(const orvcapsule::ClientControl& control, std::string_view input, bool force);

/// The numbers of a list with commas; empty when one of them is none.
std::vector<double> ParseNumbers(std::string_view text);

} // namespace zelt
