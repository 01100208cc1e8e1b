#pragma once

#include <tools/support/ASCII.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace orvtools::http::detail {

/// Compares ASCII text without regard to case.
inline bool EqualsNoCase(std::string_view a, std::string_view b) noexcept
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char left, char right) { return ToLower(left) == ToLower(right); });
}

constexpr bool IsControl(char letter) noexcept
{
    return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7f;
}

/// The number that the text is, of digits alone.
inline std::optional<std::uint64_t> ToNumber(std::string_view text) noexcept
{
    std::uint64_t number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    return read.ec == std::errc() && read.ptr == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

/// The text before the first separator, which is taken off `rest` with it; all of it where there is none.
inline std::string_view TakeUntil(std::string_view& rest, char separator) noexcept
{
    const auto end = std::min(rest.find(separator), rest.size());
    const std::string_view part = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return part;
}

} // namespace orvtools::http::detail
