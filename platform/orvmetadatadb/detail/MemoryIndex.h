#pragma once

#include <orvcore/text/Strings.h>
#include <orvmetadatadb/detail/StringTable.h>
#include <orvmetadatadb/detail/TextPool.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orvmetadatadb::detail {

/// The rows (key, text) of the index in memory, where all searches run. A row exists once. Not thread-safe.
class MemoryIndex {
public:
    /// False when the row is there already. `text` is not empty.
    bool Insert(std::u16string_view key, std::u16string_view text);
    /// Removes the key's rows.
    void Delete(std::u16string_view key);
    void Clear();
    std::size_t RowCount() const noexcept
    {
        return rows_.size() - freeRows_.size();
    }
    /// Calls `visit(key, text)` for each row.
    template <class Visit>
    void ForEachRow(Visit&& visit) const
    {
        for (const Row& row : rows_) {
            if (row.text != TextPool::kNone) {
                visit(keys_[row.key], texts_[row.text]);
            }
        }
    }

    /// True when keys without rows hold much of the memory, so that building a new index pays.
    bool IsWasteful() const noexcept;

    /// The keys for which each folded term is contained in some text of theirs, in order of code units.
    std::vector<orvcore::UTF16String> Match(const std::vector<orvcore::UTF8String>& terms);
    std::vector<orvcore::UTF16String> Similar(std::u8string_view start, std::size_t count) const;

private:
    using KeyId = StringTable::Id;
    using RowId = std::uint32_t;
    static constexpr RowId kNoRow = 0xFFFFFFFFU;

    struct Row {
        KeyId key = 0;
        TextPool::Id text = TextPool::kNone; // kNone: the row is gone
        RowId next = kNoRow;                 // the key's next row
    };
    struct KeyRecord {
        RowId firstRow = kNoRow;
        std::uint32_t rowCount = 0;
    };

    RowId FindRow(KeyId key, TextPool::Id text) const;
    void NoteLongChain(const KeyRecord& record);
    RowId NewRow();
    /// Leaves in `wanted` only the keys that `term` hits too; false when none is left.
    bool Narrow(const orvcore::UTF8String& term, std::vector<std::uint8_t>& wanted) const;
    std::vector<orvcore::UTF16String> Collect(const std::vector<std::uint8_t>& wanted);
    void SortKeys();

    StringTable keys_;
    std::vector<KeyRecord> keyRecords_;
    std::vector<Row> rows_;
    std::vector<RowId> freeRows_;
    std::unordered_map<std::uint64_t, RowId> rowsOfLongChains_; // by key and text
    TextPool texts_;
    std::vector<KeyId> sortedKeys_; // all keys that were there at the last big answer
    std::size_t liveKeys_ = 0;
};

} // namespace orvmetadatadb::detail
