#pragma once

#include <orvmetadatadb/detail/Connection.h>
#include <orvmetadatadb/detail/Statement.h>

#include <cstdint>
#include <optional>
#include <string_view>

namespace orvmetadatadb::detail {

/// The database file of one index and the statements that read and write it.
///
/// A table T is kept as `T` (id, key, text), a row for each indexed text; `T_keys` (id, path as UTF-16 bytes), a row
/// for each key; and `T_state`, whose one row counts the deletions. Numbers are given in ascending order and none comes
/// back without a deletion, so that a reader who knows the count is unchanged reads only rows above the last one it has
/// seen. Operations throw SQLiteError and belong into a transaction of the caller's. Not thread-safe.
class IndexFile {
public:
    /// "ORVF", in the file's header: the file is a search index.
    static constexpr std::uint32_t kApplicationId = 0x4F525646;
    static constexpr int kFormatVersion = 1;

    enum class Format { Current, OtherVersion, NotAnIndex };

    /// Opens or creates the file, not waiting for the disk until told to. Unless the result is `Current`, the file is
    /// closed again, unchanged.
    Format Open(const orvcore::UTF16String& path);
    void Close() noexcept;
    Connection& GetConnection() noexcept
    {
        return connection_;
    }
    const Connection& GetConnection() const noexcept
    {
        return connection_;
    }

    /// Makes `table` the one in use, created when it is missing. Begins its own transaction.
    void UseTable(const orvcore::UTF16String& table);
    void ForgetTable() noexcept
    {
        table_.reset();
    }
    bool HasTable() const noexcept
    {
        return table_.has_value();
    }

    /// Differs from the last result when another connection has changed the file meanwhile.
    std::int64_t DataVersion();
    std::int64_t Generation();
    void CountDeletion();

    std::int64_t AddKey(std::u16string_view path);
    std::int64_t AddRow(std::int64_t key, std::u8string_view text);
    void RemoveKey(std::int64_t key);
    void RemoveAll();

    /// The highest numbers in use, 0 where there are none.
    std::int64_t LastKey();
    std::int64_t LastRow();
    /// The keys (id, path) and rows (id, key, text) above a number, ascending. Reset after the last.
    Statement& KeysAfter(std::int64_t id);
    Statement& RowsAfter(std::int64_t id);

private:
    struct TableStatements {
        Statement generation, countDeletion;
        Statement addKey, addRow;
        Statement removeKey, removeRows, removeAllKeys, removeAllRows;
        Statement lastKey, lastRow;
        Statement keysAfter, rowsAfter;
    };

    Format ReadFormat();
    void CreateTable(const std::string& table);

    Connection connection_;
    std::optional<Statement> dataVersion_;
    std::optional<TableStatements> table_;
};

} // namespace orvmetadatadb::detail
