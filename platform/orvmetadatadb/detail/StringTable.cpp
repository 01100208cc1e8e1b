#include <orvmetadatadb/detail/StringTable.h>

#include <algorithm>
#include <functional>
#include <stdexcept>

namespace orvmetadatadb::detail {

namespace {

constexpr StringTable::Id kFreeSlot = 0xFFFFFFFFU;
constexpr std::size_t kFirstSlots = 64;
// 64 KB: strings are copied into blocks one behind the other, so that half a million of them are not as many
// allocations.
constexpr std::size_t kBlockUnits = 32768;

} // namespace

// Linear probing: at most two thirds of the slots are taken and nothing is ever removed, so a free one ends each
// search.
std::size_t StringTable::SlotOf(std::u16string_view text) const noexcept
{
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = std::hash<std::u16string_view>{}(text)&mask;
    while (slots_[slot] != kFreeSlot && strings_[slots_[slot]] != text) {
        slot = (slot + 1) & mask;
    }
    return slot;
}

std::optional<StringTable::Id> StringTable::Find(std::u16string_view text) const noexcept
{
    if (slots_.empty()) {
        return std::nullopt;
    }
    const Id id = slots_[SlotOf(text)];
    return id == kFreeSlot ? std::nullopt : std::optional<Id>(id);
}

StringTable::Id StringTable::Add(std::u16string_view text)
{
    // Before the look-up, because growing moves the slots: the reference to one must stay good until it is filled.
    if (strings_.size() * 3 >= slots_.size() * 2) {
        Grow();
    }
    Id& slot = slots_[SlotOf(text)];
    if (slot == kFreeSlot) {
        if (strings_.size() == kFreeSlot) {
            throw std::length_error("too many strings");
        }
        strings_.push_back(Store(text));
        slot = static_cast<Id>(strings_.size() - 1);
    }
    return slot;
}

void StringTable::Grow()
{
    slots_.assign(std::max(kFirstSlots, slots_.size() * 2), kFreeSlot);
    for (std::size_t id = 0; id < strings_.size(); ++id) {
        slots_[SlotOf(strings_[id])] = static_cast<Id>(id);
    }
}

// Strings never move: others hold views of them.
std::u16string_view StringTable::Store(std::u16string_view text)
{
    if (text.size() > freeSize_) {
        // A long string gets a block of its own, so that the rest of the current one is not lost.
        const bool isLong = text.size() > kBlockUnits / 4;
        const std::size_t size = isLong ? text.size() : kBlockUnits;
        blocks_.push_back(std::make_unique<char16_t[]>(size));
        if (isLong) {
            std::copy(text.begin(), text.end(), blocks_.back().get());
            return {blocks_.back().get(), text.size()};
        }
        free_ = blocks_.back().get();
        freeSize_ = size;
    }
    char16_t* const at = free_;
    std::copy(text.begin(), text.end(), at);
    free_ += text.size();
    freeSize_ -= text.size();
    return {at, text.size()};
}

void StringTable::Clear() noexcept
{
    *this = StringTable();
}

} // namespace orvmetadatadb::detail
