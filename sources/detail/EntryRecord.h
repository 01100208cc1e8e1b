#pragma once

#include <sources/detail/EntryStore.h>

#include <string>
#include <string_view>

namespace orvcapsule::detail {

/// @name One package in a store's file: its path and state, then the entry's fields that come from its definition
/// Numbers are little-endian, texts and lists carry their length.
/// @{
void AppendRecord(std::string& bytes, const CapsuleEntry& entry, const PackageState& state);

/// Takes one record's path off the beginning of `bytes`, which then begins with the next record.
/// @param rest the record without its path
/// @return false when `bytes` hold no whole record
bool TakeRecord(std::string_view& bytes, std::u8string_view& path, std::string_view& rest);

/// Takes the state off the beginning of such a rest.
bool TakeState(std::string_view& rest, PackageState& state);
/// Reads the fields, all that is left then. False, with the entry half filled, when they are damaged.
bool ReadFields(std::string_view rest, CapsuleEntry& entry);
/// @}

} // namespace orvcapsule::detail
