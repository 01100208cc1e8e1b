#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace orvmetadatadb::detail {

/// `a < b` in order of code units, four at a time: the paths that the index sorts share long beginnings, over which the
/// standard comparison goes unit by unit.
inline bool IsBefore(std::u16string_view a, std::u16string_view b) noexcept
{
    const std::size_t common = a.size() < b.size() ? a.size() : b.size();
    std::size_t at = 0;
    for (; at + 4 <= common; at += 4) {
        std::uint64_t left = 0;
        std::uint64_t right = 0;
        std::memcpy(&left, a.data() + at, sizeof(left));
        std::memcpy(&right, b.data() + at, sizeof(right));
        if (left != right) {
            break;
        }
    }
    // The block of four only says that they differ: which unit is the first is found one by one, because in memory the
    // lowest byte comes first and the block as a number has another order.
    while (at < common && a[at] == b[at]) {
        ++at;
    }
    return at < common ? a[at] < b[at] : a.size() < b.size();
}

} // namespace orvmetadatadb::detail
