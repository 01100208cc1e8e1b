#pragma once

namespace orvtools {

/// @name Letters and digits of ASCII
/// Every other byte is no letter and no digit, and stays as it is. The machine's locale plays no part.
/// @{
constexpr char ToLower(char c) noexcept
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}
constexpr char ToUpper(char c) noexcept
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
}
constexpr bool IsLetter(char c) noexcept
{
    return ToLower(c) >= 'a' && ToLower(c) <= 'z';
}
constexpr bool IsDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}
/// 0 to 15; -1 for what is no hexadecimal digit.
constexpr int HexValue(char c) noexcept
{
    return IsDigit(c) ? c - '0' : ToLower(c) >= 'a' && ToLower(c) <= 'f' ? ToLower(c) - 'a' + 10 : -1;
}
/// @}

} // namespace orvtools
