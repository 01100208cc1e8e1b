#pragma once

#include <orvcapsule/Export.h>
#include <orvcore/text/Strings.h>

namespace orvcapsule::utils {

/// A new random GUID as text, 36 lower-case characters with dashes: the form in which a template's identity is
/// stored. Thread-safe; never repeats in practice.
ORVCAPSULE_API orvcore::UTF16String GenerateStringGuid();

} // namespace orvcapsule::utils
