#pragma once

#include <orvcore/json/JSONErrors.h>
#include <orvcore/text/Strings.h>

#include <any>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvcore::serialization {

/// A node of a JSON value tree. It holds one of: nothing (null), `UTF8String`, `std::int64_t`, `std::uint64_t`,
/// `double`, `bool`, `Object` or `Array`; anything else is foreign and has no JSON form.
using Variant = std::any;
using VariantPtr = std::shared_ptr<Variant>;
/// An object: keys in ascending byte order, whatever the order of insertion.
using Object = std::map<UTF8String, VariantPtr>;
using Array = std::vector<VariantPtr>;

/// The keys that a record read and does not know, each with its value as compact, well-formed JSON text. A record that
/// has a member of this type puts them out again when it is written, and cannot be written when one of the texts is not
/// JSON (`json_write_exception`, which names the key).
using UnknownKeys = std::map<std::string, std::string>;

/// The most objects and arrays that a value may lie in; documents that nest deeper are neither read nor written.
inline constexpr std::size_t kMaxJSONDepth = 256;
/// The most bytes that a text may have to be read.
inline constexpr std::size_t kMaxJSONSize = std::size_t{8} << 20U;
/// The most values (objects, arrays and scalars, the outermost one included) that a text may hold to be read.
inline constexpr std::size_t kMaxJSONValues = std::size_t{1} << 18U;
/// The bytes of spare capacity with which a definition's text is parsed where it lies; any other is copied first.
/// `UnzipText` and `GetJsonContent` give texts that have them.
inline constexpr std::size_t kJSONTextRoom = 64;

/// Reads a whole JSON text into a value tree.
///
/// The text is strict JSON in UTF-8; a leading byte-order mark is skipped. Integers are exact: those up to
/// 2^63-1 become `std::int64_t`, larger ones up to 2^64-1 `std::uint64_t`; numbers with a fraction or an exponent, and
/// integers outside 64 bits, become the nearest `double`. Of keys that repeat in one object the last one counts.
/// @throws json_parse_exception  for malformed text, ill-formed UTF-8, a lone surrogate escape, a number too large for
///         a double, nesting deeper than `kMaxJSONDepth`, or a text beyond `kMaxJSONSize` or `kMaxJSONValues`. Takes
///         time and memory linear in the text.
ORVPLATFORM_API Variant JSONParse(std::u8string_view text);

/// Writes a value tree as UTF-8 JSON text: compact, or over several lines with two spaces of indentation when
/// `formatted`. A double is written as the shortest text that reads back as the same double and always looks like
/// one ("50.0"); ill-formed UTF-8 inside strings becomes U+FFFD.
/// @throws json_write_exception  for a number that is not finite, a foreign node or too deep a tree.
ORVPLATFORM_API UTF8String GetJSONUTF8String(const Variant& value, bool formatted);

/// True when `value` is an object that has `key`.
ORVPLATFORM_API bool ObjectHasProperty(const Variant& value, std::u8string_view key);

/// The value under `key`.
/// @throws missing_key_exception  when `value` is not an object or lacks the key.
ORVPLATFORM_API const Variant& GetVariantInObject(const Variant& value, std::u8string_view key);

/// Adds `key` to `object`; a key that is already there keeps its value.
/// `object` becomes an empty object first when it holds nothing or anything else. @return whether the key was added.
ORVPLATFORM_API bool AddToObject(Variant& object, std::u8string_view key, Variant value);

/// Replaces the value of `key` in `object`, or adds it. `object` becomes an empty object first when it
/// holds nothing or anything else.
ORVPLATFORM_API void UpdateInObject(Variant& object, std::u8string_view key, Variant value);

/// @name Typed access
/// Null when `value` holds another type.
/// @{
ORVPLATFORM_API const Object* AsObject(const Variant& value) noexcept;
ORVPLATFORM_API const Array* AsArray(const Variant& value) noexcept;
ORVPLATFORM_API const UTF8String* AsString(const Variant& value) noexcept;
/// @}

} // namespace orvcore::serialization
