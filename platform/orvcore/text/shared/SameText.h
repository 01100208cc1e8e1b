#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace orvcore::detail {

/// Equality of short texts such as keys, without the call that comparing views makes.
inline bool SameText(std::string_view a, std::string_view b) noexcept
{
    const auto differ = [&]<class Word>(std::size_t at, Word) {
        Word left{};
        Word right{};
        std::memcpy(&left, a.data() + at, sizeof(Word));
        std::memcpy(&right, b.data() + at, sizeof(Word));
        return left != right;
    };
    const std::size_t size = a.size();
    if (size != b.size()) {
        return false;
    }
    if (size < sizeof(std::uint64_t)) {
        if (size >= sizeof(std::uint32_t)) {
            return !differ(0, std::uint32_t{}) && !differ(size - sizeof(std::uint32_t), std::uint32_t{});
        }
        return (size < 2 || !differ(0, std::uint16_t{})) && (size == 0 || a[size - 1] == b[size - 1]);
    }
    for (std::size_t at = 0; at + sizeof(std::uint64_t) < size; at += sizeof(std::uint64_t)) {
        if (differ(at, std::uint64_t{})) {
            return false;
        }
    }
    return !differ(size - sizeof(std::uint64_t), std::uint64_t{}); // overlaps what was compared before
}

} // namespace orvcore::detail
