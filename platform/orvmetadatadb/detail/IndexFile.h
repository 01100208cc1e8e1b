#pragma once

#include <orvmetadatadb/detail/Connection.h>
#include <orvmetadatadb/detail/Statement.h>

#include <cstdint>
#include <optional>
#include <string_view>

namespace orvmetadatadb::detail {

/// The database file of one index and the statements that read and write it.
///
/// A table is a list of changes, from the first to the last, that together make its rows. Changes are only added at the
/// end, so a reader goes on after the last one it has seen, and writers need to know nothing of each other. A removal
/// of all rows empties the list and stays as its only change: the numbers go on from it and never come back.
///
/// | path | text | the change |
/// |---|---|---|
/// | there | there | adds a row |
/// | NULL | there | adds a row to the same key as the change before it |
/// | there | NULL | removes a key's rows |
/// | NULL | NULL | removes all rows |
///
/// Paths are UTF-16 code units as bytes, texts UTF-8. Operations throw SQLiteError; those that write belong into a
/// transaction of the caller's. Not thread-safe.
class IndexFile {
public:
    /// "ORVF", in the file's header: the file is a search index.
    static constexpr std::uint32_t kApplicationId = 0x4F525646;
    static constexpr int kFormatVersion = 2;

    enum class Format { Current, OtherVersion, NotAnIndex };

    /// Opens or creates the file. Commits do not wait for the disk until that is switched on; another connection's lock
    /// is waited for at most `busyTimeoutMs` milliseconds. Unless the result is `Current`, the file is closed again,
    /// unchanged.
    Format Open(const orvcore::UTF16String& path, int busyTimeoutMs);
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
    bool HasTable() const noexcept
    {
        return table_.has_value();
    }

    /// The numbers of the first and the last change, 0 without one. They follow each other without a gap.
    std::int64_t FirstChange();
    std::int64_t LastChange();
    /// The changes (id, path, text) above a number, ascending. Reset after the last.
    Statement& ChangesAfter(std::int64_t id);

    /// Add the change with the number `id`, which is above all others.
    void AddRow(std::int64_t id, std::u16string_view path, std::u8string_view text);
    void AddRowOfSameKey(std::int64_t id, std::u8string_view text);
    void RemoveKey(std::int64_t id, std::u16string_view path);
    void RemoveAll(std::int64_t id);

private:
    struct TableStatements {
        Statement first, last, after;
        Statement add, addToSame, removeKey, dropAll, removeAll;
    };

    Format ReadFormat();
    void CreateTable(const std::string& table);

    Connection connection_;
    std::optional<TableStatements> table_;
};

} // namespace orvmetadatadb::detail
