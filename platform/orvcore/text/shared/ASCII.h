#pragma once

namespace orvcore {

/// @name Letters and digits of ASCII
/// For code units of any encoding that keeps ASCII as it is; every other unit is no letter and no digit, and stays as
/// it is. The machine's locale plays no part.
/// @{
template <class Char>
constexpr Char ToASCIILower(Char c) noexcept
{
    return c >= Char{'A'} && c <= Char{'Z'} ? static_cast<Char>(c + ('a' - 'A')) : c;
}
template <class Char>
constexpr Char ToASCIIUpper(Char c) noexcept
{
    return c >= Char{'a'} && c <= Char{'z'} ? static_cast<Char>(c - ('a' - 'A')) : c;
}
template <class Char>
constexpr bool IsASCIILetter(Char c) noexcept
{
    return ToASCIILower(c) >= Char{'a'} && ToASCIILower(c) <= Char{'z'};
}
template <class Char>
constexpr bool IsASCIIDigit(Char c) noexcept
{
    return c >= Char{'0'} && c <= Char{'9'};
}
/// @}

} // namespace orvcore
