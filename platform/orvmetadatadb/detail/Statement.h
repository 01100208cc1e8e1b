#pragma once

#include <orvmetadatadb/detail/Connection.h>

#include <cstdint>
#include <string>
#include <string_view>

struct sqlite3_stmt;

namespace orvmetadatadb::detail {

/// A prepared statement, kept and run many times. Parameters are numbered from 1, columns from 0. Every operation that
/// SQLite refuses throws SQLiteError.
class Statement {
public:
    Statement() = default;
    Statement(Connection& connection, const std::string& sql);
    ~Statement();
    Statement(Statement&& other) noexcept;
    Statement& operator=(Statement&& other) noexcept;

    void Bind(int parameter, std::int64_t value);
    /// The bytes must stay in place until the statement has run.
    void Bind(int parameter, std::u8string_view text);
    void BindBytes(int parameter, std::u16string_view units);

    /// The next row; false after the last, when the statement is ready to run again.
    bool Step();
    /// Runs a statement that gives no rows.
    void Run();
    /// Ends a statement whose rows are not all wanted; a statement left open would hold its read lock.
    void Reset() noexcept;
    /// The first column of the first row, 0 without rows.
    std::int64_t Number();

    std::int64_t Integer(int column) const noexcept;
    /// A view of the current row, valid until the next step. Data of another type reads as empty.
    std::u8string_view Text(int column) const noexcept;
    /// UTF-16 code units stored as bytes. Data of another type reads as empty.
    orvcore::UTF16String Units(int column) const;

private:
    sqlite3_stmt* statement_ = nullptr;
};

} // namespace orvmetadatadb::detail
