#include <orvmetadatadb/detail/Connection.h>

#include <orvstorage/SQLiteCodes.h>

#include <sqlite3.h>

namespace orvmetadatadb::detail {

static_assert(orvstorage::sqlite::kOk == SQLITE_OK && orvstorage::sqlite::kBusy == SQLITE_BUSY &&
              orvstorage::sqlite::kReadOnly == SQLITE_READONLY &&
              orvstorage::sqlite::kInterrupted == SQLITE_INTERRUPT && orvstorage::sqlite::kIOError == SQLITE_IOERR &&
              orvstorage::sqlite::kCorrupt == SQLITE_CORRUPT && orvstorage::sqlite::kFull == SQLITE_FULL &&
              orvstorage::sqlite::kCannotOpen == SQLITE_CANTOPEN && orvstorage::sqlite::kNotADatabase == SQLITE_NOTADB);

Connection::~Connection()
{
    Close();
}

void Connection::Open(const orvcore::UTF16String& path)
{
    Close();
    const orvcore::UTF8String name = orvcore::ToUTF8(path);
    if (name.empty() || name.find(u8'\0') != orvcore::UTF8String::npos) {
        throw SQLiteError(SQLITE_CANTOPEN);
    }
    // The owner serialises all calls, so SQLite's own locks around each would be paid for nothing.
    constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    const int result = sqlite3_open_v2(reinterpret_cast<const char*>(name.c_str()), &m_handle, kFlags, nullptr);
    if (result != SQLITE_OK) {
        Close();
        throw SQLiteError(result & 0xFF);
    }
    sqlite3_extended_result_codes(m_handle, 0);
    // The file's content is not trusted: no functions or virtual tables run from its schema.
    sqlite3_db_config(m_handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(m_handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    SetProgressHandler(m_interval, m_callback, m_context);
}

void Connection::Close() noexcept
{
    sqlite3_close_v2(m_handle);
    m_handle = nullptr;
}

void Connection::Check(int result)
{
    if (result != SQLITE_OK && result != SQLITE_ROW && result != SQLITE_DONE) {
        throw SQLiteError(result & 0xFF);
    }
}

void Connection::Execute(const char* sql)
{
    Check(sqlite3_exec(m_handle, sql, nullptr, nullptr, nullptr));
}

void Connection::SetBusyTimeout(int milliseconds) noexcept
{
    sqlite3_busy_timeout(m_handle, milliseconds);
}

void Connection::SetProgressHandler(int interval, ProgressCallback callback, void* context) noexcept
{
    m_interval = interval;
    m_callback = callback;
    m_context = context;
    if (m_handle != nullptr) {
        sqlite3_progress_handler(m_handle, interval, interval > 0 ? &Connection::OnProgress : nullptr, this);
    }
}

int Connection::OnProgress(void* self)
{
    const auto& connection = *static_cast<const Connection*>(self);
    if (connection.IsInterrupted()) {
        return 1;
    }
    return connection.m_callback != nullptr ? connection.m_callback(connection.m_context) : 0;
}

} // namespace orvmetadatadb::detail
