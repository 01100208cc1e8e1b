#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace orvmetadatadb::detail {

/// A set of UTF-16 strings, each kept once and known by a small number that never changes: 0, 1, 2, ... in the order of
/// adding. Compact for many short strings (their code units lie side by side, 20-odd bytes each beside them). Not
/// thread-safe.
class StringTable {
public:
    using Id = std::uint32_t;

    /// The number of `text`, which is added when it is new.
    Id Add(std::u16string_view text);
    std::optional<Id> Find(std::u16string_view text) const noexcept;
    /// Valid until `Clear`.
    std::u16string_view operator[](Id id) const noexcept
    {
        return strings_[id];
    }
    std::size_t Size() const noexcept
    {
        return strings_.size();
    }
    void Clear() noexcept;

private:
    /// The slot that holds `text`, or the free one where it belongs.
    std::size_t SlotOf(std::u16string_view text) const noexcept;
    void Grow();
    std::u16string_view Store(std::u16string_view text);

    std::vector<std::u16string_view> strings_;
    std::vector<Id> slots_; // open addressing; a power of two, at most two thirds full
    std::vector<std::unique_ptr<char16_t[]>> blocks_;
    char16_t* free_ = nullptr;
    std::size_t freeSize_ = 0;
};

} // namespace orvmetadatadb::detail
