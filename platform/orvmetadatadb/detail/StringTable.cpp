#include <orvmetadatadb/detail/StringTable.h>

#include <algorithm>
#include <functional>
#include <stdexcept>

namespace orvmetadatadb::detail {

namespace {

constexpr StringTable::Id kFreeSlot = 0xFFFFFFFFU;
constexpr std::size_t kFirstSlots = 64;
constexpr std::size_t kBlockUnits = 32 * 1024;

} // namespace

std::size_t StringTable::SlotOf(std::u16string_view text) const noexcept
{
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = std::hash<std::u16string_view>{}(text)&mask;
    while (m_slots[slot] != kFreeSlot && m_strings[m_slots[slot]] != text) {
        slot = (slot + 1) & mask;
    }
    return slot;
}

std::optional<StringTable::Id> StringTable::Find(std::u16string_view text) const noexcept
{
    if (m_slots.empty()) {
        return std::nullopt;
    }
    const Id id = m_slots[SlotOf(text)];
    return id == kFreeSlot ? std::nullopt : std::optional<Id>(id);
}

StringTable::Id StringTable::Add(std::u16string_view text)
{
    if (m_strings.size() * 3 >= m_slots.size() * 2) {
        Grow();
    }
    Id& slot = m_slots[SlotOf(text)];
    if (slot == kFreeSlot) {
        if (m_strings.size() == kFreeSlot) {
            throw std::length_error("too many strings");
        }
        m_strings.push_back(Store(text));
        slot = static_cast<Id>(m_strings.size() - 1);
    }
    return slot;
}

void StringTable::Grow()
{
    m_slots.assign(std::max(kFirstSlots, m_slots.size() * 2), kFreeSlot);
    for (std::size_t id = 0; id < m_strings.size(); ++id) {
        m_slots[SlotOf(m_strings[id])] = static_cast<Id>(id);
    }
}

std::u16string_view StringTable::Store(std::u16string_view text)
{
    if (text.size() > m_freeSize) {
        // A long string gets a block of its own, so that the rest of the current one is not lost.
        const bool isLong = text.size() > kBlockUnits / 4;
        const std::size_t size = isLong ? text.size() : kBlockUnits;
        m_blocks.push_back(std::make_unique<char16_t[]>(size));
        if (isLong) {
            std::copy(text.begin(), text.end(), m_blocks.back().get());
            return {m_blocks.back().get(), text.size()};
        }
        m_free = m_blocks.back().get();
        m_freeSize = size;
    }
    char16_t* const at = m_free;
    std::copy(text.begin(), text.end(), at);
    m_free += text.size();
    m_freeSize -= text.size();
    return {at, text.size()};
}

void StringTable::Clear() noexcept
{
    *this = StringTable();
}

} // namespace orvmetadatadb::detail
