#pragma once

#include <capsule/ControlKinds.h>

#include <string>

namespace zelt {

/// The kind of a control in a word or two: "slider".
std::string KindName(orvcapsule::ClientControlType type);

/// A control's value on one line, for people.
std::string ValueText(const orvcapsule::ClientControl& control);

} // namespace zelt
