#include <orvmetadatadb/detail/Statement.h>

#include <sqlite3.h>

#include <cstddef>
#include <cstring>
#include <utility>

namespace orvmetadatadb::detail {

Statement::Statement(Connection& connection, const std::string& sql)
{
    Connection::Check(sqlite3_prepare_v3(connection.Handle(), sql.c_str(), static_cast<int>(sql.size() + 1),
                                         SQLITE_PREPARE_PERSISTENT, &m_statement, nullptr));
}

Statement::~Statement()
{
    sqlite3_finalize(m_statement);
}

Statement::Statement(Statement&& other) noexcept
    : m_statement(std::exchange(other.m_statement, nullptr))
{
}

Statement& Statement::operator=(Statement&& other) noexcept
{
    std::swap(m_statement, other.m_statement);
    return *this;
}

void Statement::Bind(int parameter, std::int64_t value)
{
    Connection::Check(sqlite3_bind_int64(m_statement, parameter, value));
}

void Statement::Bind(int parameter, std::u8string_view text)
{
    // A view without characters may have no address, which SQLite would store as NULL.
    const char* bytes = text.empty() ? "" : reinterpret_cast<const char*>(text.data());
    Connection::Check(sqlite3_bind_text64(m_statement, parameter, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void Statement::BindBytes(int parameter, std::u16string_view units)
{
    Connection::Check(sqlite3_bind_blob64(m_statement, parameter, units.data(), units.size() * 2, SQLITE_STATIC));
}

bool Statement::Step()
{
    const int result = sqlite3_step(m_statement);
    if (result == SQLITE_ROW) {
        return true;
    }
    sqlite3_reset(m_statement);
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
    sqlite3_reset(m_statement);
}

std::int64_t Statement::Number()
{
    const std::int64_t value = Step() ? Integer(0) : 0;
    Reset();
    return value;
}

std::int64_t Statement::Integer(int column) const noexcept
{
    return sqlite3_column_int64(m_statement, column);
}

std::u8string_view Statement::Text(int column) const noexcept
{
    if (sqlite3_column_type(m_statement, column) != SQLITE_TEXT) {
        return {};
    }
    const auto* text = reinterpret_cast<const char8_t*>(sqlite3_column_text(m_statement, column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column));
    return text != nullptr ? std::u8string_view(text, size) : std::u8string_view();
}

orvcore::UTF16String Statement::Units(int column) const
{
    orvcore::UTF16String units;
    if (sqlite3_column_type(m_statement, column) == SQLITE_BLOB) {
        const void* bytes = sqlite3_column_blob(m_statement, column); // not aligned for 16-bit access
        units.resize(static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column)) / 2);
        if (!units.empty()) {
            std::memcpy(units.data(), bytes, units.size() * 2);
        }
    }
    return units;
}

} // namespace orvmetadatadb::detail
