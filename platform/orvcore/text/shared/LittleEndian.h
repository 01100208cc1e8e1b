#pragma once

#include <cstddef>
#include <cstdint>

namespace orvcore {

/// @name Numbers as bytes, the lowest first
/// `width` is at most 8.
/// @{
inline std::uint64_t LoadLittleEndian(const void* from, std::size_t width) noexcept
{
    std::uint64_t value = 0;
    for (std::size_t i = width; i > 0; --i) {
        value = value << 8U | static_cast<const unsigned char*>(from)[i - 1];
    }
    return value;
}

inline void StoreLittleEndian(std::uint64_t value, void* to, std::size_t width) noexcept
{
    for (std::size_t i = 0; i < width; ++i) {
        static_cast<unsigned char*>(to)[i] = static_cast<unsigned char>(value >> (8 * i));
    }
}

/// @tparam Bytes a string or vector of one-byte elements
template <class Bytes>
void AppendLittleEndian(Bytes& bytes, std::uint64_t value, std::size_t width)
{
    bytes.resize(bytes.size() + width);
    StoreLittleEndian(value, bytes.data() + bytes.size() - width, width);
}
/// @}

} // namespace orvcore
