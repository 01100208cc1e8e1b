#include <orvmetadatadb/detail/MemoryIndex.h>

#include <orvcore/tasks/ParallelFor.h>
#include <orvmetadatadb/detail/CodeUnitOrder.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <stdexcept>

// Three tables refer to each other by small numbers: keys (paths), texts, and rows that join one of each. A key's rows
// form a chain through `rows_`, newest first. Numbers of keys and texts are never used again, those of rows are:
//
// - a removed row stays in `rows_` with the text that never hits, until a new row takes its number;
// - a key without rows stays among the keys, with an empty chain, and a text that no row uses stays in the pool with a
//   count of 0. Both can only be got rid of by building a new memory, which IsWasteful asks for.
//
// So a search needs no table of what has gone: one pass over the folded texts, one over the rows, one over the keys,
// each over memory that lies side by side.

namespace orvmetadatadb::detail {

namespace {

// Fewer keys than this cost little however many of them are unused; reading the file again costs more.
constexpr std::size_t kWasteWorthClearing = 16384;
// An answer this small is sorted by itself; others are picked from a lasting order of all keys. Where that is out of
// date, a small share of the keys does not pay for it.
constexpr std::size_t kSmallAnswer = 256;
constexpr std::size_t kSmallShare = 16;
constexpr std::size_t kCopiedAtOnce = 4096; // copying the texts takes most of a big answer's time
// A key with more rows than this has them in a table; few have.
constexpr std::uint32_t kLongChain = 32;

// Both numbers have 32 bits, so the pair is one number without collisions.
std::uint64_t RowName(StringTable::Id key, TextPool::Id text) noexcept
{
    return std::uint64_t{key} << 32 | text;
}

} // namespace

bool MemoryIndex::Insert(std::u16string_view key, std::u16string_view text)
{
    const KeyId keyId = keys_.Add(key);
    if (keyId == keyRecords_.size()) {
        keyRecords_.emplace_back();
    }
    // Added without a use: when the row turns out to be there, nothing has to be taken back.
    const TextPool::Id textId = texts_.Add(text);
    if (FindRow(keyId, textId) != kNoRow) {
        return false;
    }
    const RowId row = NewRow();
    KeyRecord& record = keyRecords_[keyId];
    rows_[row] = {keyId, textId, record.firstRow};
    record.firstRow = row;
    liveKeys_ += record.rowCount == 0 ? 1 : 0;
    ++record.rowCount;
    texts_.AddUse(textId);
    if (record.rowCount > kLongChain) {
        NoteLongChain(record);
    }
    return true;
}

// Most keys have a name and a few tags, for which the chain of their rows is the smallest and quickest list. A hostile
// package may have a hundred thousand tags: each row would then be compared with all before it.
MemoryIndex::RowId MemoryIndex::FindRow(KeyId key, TextPool::Id text) const
{
    const KeyRecord& record = keyRecords_[key];
    if (record.rowCount > kLongChain) {
        const auto found = rowsOfLongChains_.find(RowName(key, text));
        return found == rowsOfLongChains_.end() ? kNoRow : found->second;
    }
    RowId row = record.firstRow;
    while (row != kNoRow && rows_[row].text != text) {
        row = rows_[row].next;
    }
    return row;
}

// The newest row of a long chain goes into the table, and all of them when the chain has just become long.
void MemoryIndex::NoteLongChain(const KeyRecord& record)
{
    RowId row = record.firstRow;
    for (std::uint32_t left = record.rowCount == kLongChain + 1 ? record.rowCount : 1; left != 0; --left) {
        rowsOfLongChains_.emplace(RowName(rows_[row].key, rows_[row].text), row);
        row = rows_[row].next;
    }
}

MemoryIndex::RowId MemoryIndex::NewRow()
{
    if (freeRows_.empty()) {
        if (rows_.size() == kNoRow) {
            throw std::length_error("too many rows");
        }
        rows_.emplace_back();
        return static_cast<RowId>(rows_.size() - 1);
    }
    const RowId row = freeRows_.back();
    freeRows_.pop_back();
    return row;
}

// Only the rows are used again. Keys and texts keep their numbers, which rows and the lasting order of keys refer to;
// IsWasteful tells when too many of them are left over.
void MemoryIndex::Delete(std::u16string_view key)
{
    const auto keyId = keys_.Find(key);
    if (!keyId) {
        return;
    }
    KeyRecord& record = keyRecords_[*keyId];
    liveKeys_ -= record.rowCount != 0 ? 1 : 0;
    for (RowId row = record.firstRow; row != kNoRow; row = rows_[row].next) {
        if (record.rowCount > kLongChain) {
            rowsOfLongChains_.erase(RowName(*keyId, rows_[row].text));
        }
        texts_.DropUse(rows_[row].text);
        rows_[row].text = TextPool::kNone;
        freeRows_.push_back(row);
    }
    record = KeyRecord();
}

void MemoryIndex::Clear()
{
    *this = MemoryIndex();
}

bool MemoryIndex::IsWasteful() const noexcept
{
    return keys_.Size() > kWasteWorthClearing && liveKeys_ < keys_.Size() / 2;
}

std::vector<orvcore::UTF16String> MemoryIndex::Match(const std::vector<orvcore::UTF8String>& terms)
{
    std::vector<std::uint8_t> wanted(keys_.Size(), 0);
    for (std::size_t key = 0; key < wanted.size(); ++key) {
        wanted[key] = keyRecords_[key].firstRow != kNoRow ? 1 : 0;
    }
    const bool any = std::all_of(terms.begin(), terms.end(), [&](const auto& term) { return Narrow(term, wanted); });
    return any ? Collect(wanted) : std::vector<orvcore::UTF16String>();
}

// A term is looked for in the distinct texts, of which there are far fewer than rows; one pass over the rows carries
// the hits to the keys. A row that is gone has the text that never hits, so the pass needs no branch.
bool MemoryIndex::Narrow(const orvcore::UTF8String& term, std::vector<std::uint8_t>& wanted) const
{
    if (term.empty()) {
        return true;
    }
    std::vector<std::uint8_t> texts(texts_.Size(), 0);
    if (!texts_.FindContaining(term, texts)) {
        return false;
    }
    std::vector<std::uint8_t> hits(wanted.size(), 0);
    for (const Row& row : rows_) {
        hits[row.key] = static_cast<std::uint8_t>(hits[row.key] | texts[row.text]);
    }
    std::uint8_t any = 0;
    for (std::size_t key = 0; key < wanted.size(); ++key) {
        wanted[key] = static_cast<std::uint8_t>(wanted[key] & hits[key]);
        any = static_cast<std::uint8_t>(any | wanted[key]);
    }
    return any != 0;
}

// Answers come in the order of keys. Sorting one of 100,000 keys at each key press would take longer than the search.
std::vector<orvcore::UTF16String> MemoryIndex::Collect(const std::vector<std::uint8_t>& wanted)
{
    std::vector<orvcore::UTF16String> keys;
    const auto count = static_cast<std::size_t>(std::count(wanted.begin(), wanted.end(), std::uint8_t{1}));
    // Keys are never removed, so equal sizes mean the same keys.
    const bool ordered = sortedKeys_.size() == keys_.Size();
    if (count < kSmallAnswer || (!ordered && count < wanted.size() / kSmallShare)) {
        keys.reserve(count);
        for (std::size_t key = 0; key < wanted.size(); ++key) {
            if (wanted[key] != 0) {
                keys.emplace_back(keys_[static_cast<KeyId>(key)]);
            }
        }
        std::sort(keys.begin(), keys.end(), IsBefore);
        return keys;
    }
    SortKeys();
    std::vector<KeyId> found;
    found.reserve(count);
    std::copy_if(sortedKeys_.begin(), sortedKeys_.end(), std::back_inserter(found),
                 [&](KeyId key) { return wanted[key] != 0; });
    keys.resize(count);
    // Each piece fills strings of its own; keys and texts are only read meanwhile, since the caller holds the index's
    // lock.
    orvcore::ParallelFor(count, kCopiedAtOnce, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            keys[i] = keys_[found[i]];
        }
    });
    return keys;
}

// Keys are only ever added, so that the old order stays and the new keys are merged into it.
void MemoryIndex::SortKeys()
{
    const std::size_t known = sortedKeys_.size();
    if (known == keys_.Size()) {
        return;
    }
    sortedKeys_.resize(keys_.Size());
    const auto added = sortedKeys_.begin() + static_cast<std::ptrdiff_t>(known);
    std::iota(added, sortedKeys_.end(), static_cast<KeyId>(known));
    const auto before = [this](KeyId a, KeyId b) { return IsBefore(keys_[a], keys_[b]); };
    std::sort(added, sortedKeys_.end(), before);
    std::inplace_merge(sortedKeys_.begin(), added, sortedKeys_.end(), before);
}

std::vector<orvcore::UTF16String> MemoryIndex::Similar(std::u8string_view start, std::size_t count) const
{
    std::vector<orvcore::UTF16String> texts;
    for (const TextPool::Id id : texts_.FindSimilar(start, count)) {
        texts.emplace_back(texts_[id]);
    }
    return texts;
}

} // namespace orvmetadatadb::detail
