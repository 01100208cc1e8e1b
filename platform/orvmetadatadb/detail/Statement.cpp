#include <orvmetadatadb/detail/Statement.h>

#include <sqlite3.h>

#include <cstddef>
#include <cstring>
#include <utility>

namespace orvmetadatadb::detail {

Statement::Statement(Connection& connection, const std::string& sql)
{
    // With the closing NUL counted SQLite need not copy the text; PERSISTENT tells it that the statement is kept for
    // long.
    Connection::Check(sqlite3_prepare_v3(connection.Handle(), sql.c_str(), static_cast<int>(sql.size() + 1),
                                         SQLITE_PREPARE_PERSISTENT, &statement_, nullptr));
}

Statement::~Statement()
{
    sqlite3_finalize(statement_);
}

Statement::Statement(Statement&& other) noexcept
    : statement_(std::exchange(other.statement_, nullptr))
{
}

Statement& Statement::operator=(Statement&& other) noexcept
{
    std::swap(statement_, other.statement_);
    return *this;
}

void Statement::Bind(int parameter, std::int64_t value)
{
    Connection::Check(sqlite3_bind_int64(statement_, parameter, value));
}

void Statement::Bind(int parameter, std::u8string_view text)
{
    // A view without characters may have no address, which SQLite would store as NULL.
    const char* bytes = text.empty() ? "" : reinterpret_cast<const char*>(text.data());
    // SQLITE_STATIC: no copy is made, so the bytes must stay until the statement has run.
    Connection::Check(sqlite3_bind_text64(statement_, parameter, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void Statement::BindBytes(int parameter, std::u16string_view units)
{
    Connection::Check(sqlite3_bind_blob64(statement_, parameter, units.data(), units.size() * 2, SQLITE_STATIC));
}

bool Statement::Step()
{
    const int result = sqlite3_step(statement_);
    if (result == SQLITE_ROW) {
        return true;
    }
    sqlite3_reset(statement_); // until then it keeps its lock on the file
    Connection::Check(result);
    return false;
}

void Statement::Run()
{
    while (Step()) {
    }
}

void Statement::Reset() noexcept
{
    sqlite3_reset(statement_);
}

std::int64_t Statement::Number()
{
    const std::int64_t value = Step() ? Integer(0) : 0;
    Reset();
    return value;
}

std::int64_t Statement::Integer(int column) const noexcept
{
    return sqlite3_column_int64(statement_, column);
}

std::u8string_view Statement::Text(int column) const noexcept
{
    // A column has whatever type a damaged file gives it; converting it would make text of numbers.
    if (sqlite3_column_type(statement_, column) != SQLITE_TEXT) {
        return {};
    }
    const auto* text = reinterpret_cast<const char8_t*>(sqlite3_column_text(statement_, column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
    return text != nullptr ? std::u8string_view(text, size) : std::u8string_view();
}

orvcore::UTF16String Statement::Units(int column) const
{
    orvcore::UTF16String units;
    if (sqlite3_column_type(statement_, column) == SQLITE_BLOB) {
        const void* bytes = sqlite3_column_blob(statement_, column); // not aligned for 16-bit access
        units.resize(static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)) / 2);
        if (!units.empty()) {
            std::memcpy(units.data(), bytes, units.size() * 2);
        }
    }
    return units;
}

} // namespace orvmetadatadb::detail
