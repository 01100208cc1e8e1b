#pragma once

#include <string>
#include <string_view>

namespace orvcapsule::serialization::detail {

/// The version that a definition text declares, found in the raw text before any parsing: the up to three characters
/// after the double quote that follows the first "apiVersion". Empty `found` when the word is nowhere in the text.
struct DeclaredVersion {
    bool found = false;
    std::u8string_view text;
};
DeclaredVersion FindDeclaredVersion(std::u8string_view json);

/// False when the text names no version or one newer than this library writes.
bool PassesVersionGate(std::u8string_view json);

} // namespace orvcapsule::serialization::detail
