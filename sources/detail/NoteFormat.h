#pragma once

#include <sources/CapsuleEntry.h>
#include <sources/detail/NotedFile.h>

#include <string>
#include <string_view>

namespace orvcapsule::detail {

/// @name One note: its subject and the file's state, then the entry's fields that come from its
/// definition. Numbers are little-endian, texts and lists carry their length.
/// @{
void AppendNote(std::string& bytes, const CapsuleEntry& entry, const NotedFile& state);

/// Takes one note's subject off the beginning of `bytes`, which then begins with the next note.
/// @param rest the note without its subject
/// @return false when `bytes` hold no whole note
bool TakeNote(std::string_view& bytes, std::u8string_view& subject, std::string_view& rest);

/// Takes the state off the beginning of such a rest.
bool TakeState(std::string_view& rest, NotedFile& state);
/// Reads the fields, all that is left then. False, with the entry half filled, when they are damaged.
bool ReadFields(std::string_view rest, CapsuleEntry& entry);
/// @}

} // namespace orvcapsule::detail
