#include <orvmetadatadb/detail/MemoryIndex.h>

#include <orvmetadatadb/detail/CodeUnitOrder.h>

#include <algorithm>
#include <numeric>
#include <stdexcept>

namespace orvmetadatadb::detail {

namespace {

constexpr std::size_t kWasteWorthClearing = 16 * 1024;
// An answer this small is sorted by itself; others are picked from a lasting order of all keys. Where that is out of
// date, a small share of the keys does not pay for it.
constexpr std::size_t kSmallAnswer = 256;
constexpr std::size_t kSmallShare = 16;

} // namespace

MemoryIndex::KeyId MemoryIndex::AddKey(std::u16string_view key)
{
    const KeyId id = m_keys.Add(key);
    if (id == m_keyRecords.size()) {
        m_keyRecords.emplace_back();
    }
    return id;
}

MemoryIndex::Inserted MemoryIndex::Insert(KeyId key, std::u16string_view text)
{
    const TextPool::Id textId = m_texts.Add(text);
    RowId& first = m_keyRecords[key].firstRow;
    for (RowId row = first; row != kNoRow; row = m_rows[row].next) {
        if (m_rows[row].text == textId) {
            return {row, false};
        }
    }
    const RowId row = NewRow();
    m_rows[row] = {key, textId, first, false};
    m_liveKeys += first == kNoRow ? 1 : 0;
    first = row;
    m_texts.AddUse(textId);
    return {row, true};
}

MemoryIndex::RowId MemoryIndex::NewRow()
{
    if (m_freeRows.empty()) {
        if (m_rows.size() == kNoRow) {
            throw std::length_error("too many rows");
        }
        m_rows.emplace_back();
        return static_cast<RowId>(m_rows.size() - 1);
    }
    const RowId row = m_freeRows.back();
    m_freeRows.pop_back();
    return row;
}

std::int64_t MemoryIndex::Delete(std::u16string_view key)
{
    const auto keyId = m_keys.Find(key);
    if (!keyId) {
        return 0;
    }
    KeyRecord& record = m_keyRecords[*keyId];
    const std::int64_t fileId = record.fileId;
    m_liveKeys -= record.firstRow != kNoRow ? 1 : 0;
    for (RowId row = record.firstRow; row != kNoRow; row = m_rows[row].next) {
        m_texts.DropUse(m_rows[row].text);
        m_rows[row].text = TextPool::kNone;
        m_freeRows.push_back(row);
    }
    record = KeyRecord();
    return fileId;
}

void MemoryIndex::Clear()
{
    *this = MemoryIndex();
}

bool MemoryIndex::IsWasteful() const noexcept
{
    return m_keys.Size() > kWasteWorthClearing && m_liveKeys < m_keys.Size() / 2;
}

std::vector<orvcore::UTF16String> MemoryIndex::Match(const std::vector<orvcore::UTF8String>& terms)
{
    std::vector<std::uint8_t> wanted(m_keys.Size(), 0);
    for (std::size_t key = 0; key < wanted.size(); ++key) {
        wanted[key] = m_keyRecords[key].firstRow != kNoRow ? 1 : 0;
    }
    const bool any = std::all_of(terms.begin(), terms.end(), [&](const auto& term) { return Narrow(term, wanted); });
    return any ? Collect(wanted) : std::vector<orvcore::UTF16String>();
}

bool MemoryIndex::Narrow(const orvcore::UTF8String& term, std::vector<std::uint8_t>& wanted) const
{
    if (term.empty()) {
        return true;
    }
    std::vector<std::uint8_t> texts(m_texts.Size(), 0);
    if (!m_texts.FindContaining(term, texts)) {
        return false;
    }
    std::vector<std::uint8_t> hits(wanted.size(), 0);
    for (const Row& row : m_rows) {
        hits[row.key] = static_cast<std::uint8_t>(hits[row.key] | texts[row.text]);
    }
    std::uint8_t any = 0;
    for (std::size_t key = 0; key < wanted.size(); ++key) {
        wanted[key] = static_cast<std::uint8_t>(wanted[key] & hits[key]);
        any = static_cast<std::uint8_t>(any | wanted[key]);
    }
    return any != 0;
}

std::vector<orvcore::UTF16String> MemoryIndex::Collect(const std::vector<std::uint8_t>& wanted)
{
    std::vector<orvcore::UTF16String> keys;
    const auto count = static_cast<std::size_t>(std::count(wanted.begin(), wanted.end(), std::uint8_t{1}));
    keys.reserve(count);
    const bool ordered = m_sortedKeys.size() == m_keys.Size();
    if (count < kSmallAnswer || (!ordered && count < wanted.size() / kSmallShare)) {
        for (std::size_t key = 0; key < wanted.size(); ++key) {
            if (wanted[key] != 0) {
                keys.emplace_back(m_keys[static_cast<KeyId>(key)]);
            }
        }
        std::sort(keys.begin(), keys.end(), IsBefore);
        return keys;
    }
    SortKeys();
    for (const KeyId key : m_sortedKeys) {
        if (wanted[key] != 0) {
            keys.emplace_back(m_keys[key]);
        }
    }
    return keys;
}

void MemoryIndex::SortKeys()
{
    const std::size_t known = m_sortedKeys.size();
    if (known == m_keys.Size()) {
        return;
    }
    m_sortedKeys.resize(m_keys.Size());
    const auto added = m_sortedKeys.begin() + static_cast<std::ptrdiff_t>(known);
    std::iota(added, m_sortedKeys.end(), static_cast<KeyId>(known));
    const auto before = [this](KeyId a, KeyId b) { return IsBefore(m_keys[a], m_keys[b]); };
    std::sort(added, m_sortedKeys.end(), before);
    std::inplace_merge(m_sortedKeys.begin(), added, m_sortedKeys.end(), before);
}

std::vector<orvcore::UTF16String> MemoryIndex::Similar(std::u8string_view start, std::size_t count) const
{
    std::vector<orvcore::UTF16String> texts;
    for (const TextPool::Id id : m_texts.FindSimilar(start, count)) {
        texts.emplace_back(m_texts[id]);
    }
    return texts;
}

} // namespace orvmetadatadb::detail
