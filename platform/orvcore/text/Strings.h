#pragma once

#include <orvcore/Export.h>

#include <string>
#include <string_view>

namespace orvcore {

/// UTF-8 text: JSON documents, file paths at the JSON and zip boundary.
using UTF8String = std::u8string;
/// UTF-16 text ("wide"): user-visible and identity fields.
using UTF16String = std::u16string;

/// @name Conversions
/// Lossless between well-formed UTF-8 and UTF-16. They never throw for content: every ill-formed sequence
/// becomes U+FFFD. A narrow string (`std::string`) holds UTF-8 on every system. Thread-safe.
/// @{
ORVPLATFORM_API UTF16String ToUTF16(std::u8string_view text);
ORVPLATFORM_API UTF16String ToUTF16(std::string_view narrow);
ORVPLATFORM_API UTF8String ToUTF8(std::u16string_view text);
ORVPLATFORM_API std::string ToNarrow(std::u16string_view text);
/// Puts the UTF-8 form of `text` at `to`, which has room for `kMaxUTF8PerUTF16` bytes a code unit.
/// @return the end of what was put.
ORVPLATFORM_API char8_t* EncodeUTF8(std::u16string_view text, char8_t* to) noexcept;
inline constexpr std::size_t kMaxUTF8PerUTF16 = 3;
/// @}

/// @name Views of the same bytes
/// UTF-8 text and narrow text differ in type only; these change the type and copy nothing.
/// @{
inline std::string_view AsNarrow(std::u8string_view text) noexcept
{
    return {reinterpret_cast<const char*>(text.data()), text.size()};
}
inline std::u8string_view AsUTF8(std::string_view narrow) noexcept
{
    return {reinterpret_cast<const char8_t*>(narrow.data()), narrow.size()};
}
/// @}

/// A copy of UTF-8 text as a narrow string.
inline std::string ToNarrow(std::u8string_view text)
{
    return std::string(AsNarrow(text));
}
/// A copy of a narrow string as UTF-8 text.
inline UTF8String ToUTF8(std::string_view narrow)
{
    return UTF8String(AsUTF8(narrow));
}

/// True when `text` is well-formed UTF-8 (no overlong forms, surrogates or values above U+10FFFF).
ORVPLATFORM_API bool IsWellFormedUTF8(std::string_view text) noexcept;

} // namespace orvcore
