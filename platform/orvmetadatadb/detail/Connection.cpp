#include <orvmetadatadb/detail/Connection.h>

#include <orvcore/files/Paths.h>
#include <orvstorage/SQLiteCodes.h>

#include <sqlite3.h>

namespace orvmetadatadb::detail {

// The public header repeats these numbers, because it does not include SQLite's.
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
    const std::filesystem::path file = orvcore::PathFromUTF16(path);
    if (!orvcore::IsUsablePath(file)) {
        throw SQLiteError(SQLITE_CANTOPEN);
    }
    // SQLite takes UTF-8 on every system, and on Windows opens the extended form of a long path as it stands.
    const orvcore::UTF8String name = orvcore::PathToUTF8(orvcore::ToSystemPath(file));
    // The owner serialises all calls, so SQLite's own locks around each would be paid for nothing.
    constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    const int result = sqlite3_open_v2(reinterpret_cast<const char*>(name.c_str()), &handle_, kFlags, nullptr);
    if (result != SQLITE_OK) {
        Close();
        throw SQLiteError(result & 0xFF);
    }
    // Callers tell primary codes apart.
    sqlite3_extended_result_codes(handle_, 0);
    // The file's content is not trusted: no functions or virtual tables run from its schema.
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    // A handler that was set before the file was opened, or for the file before.
    SetProgressHandler(interval_, callback_, context_);
}

void Connection::Close() noexcept
{
    // In this form it does not mind statements that are still there; the last of them closes the file.
    sqlite3_close_v2(handle_);
    handle_ = nullptr;
}

void Connection::Check(int result)
{
    if (result != SQLITE_OK && result != SQLITE_ROW && result != SQLITE_DONE) {
        throw SQLiteError(result & 0xFF);
    }
}

void Connection::Execute(const char* sql)
{
    Check(sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr));
}

void Connection::SetBusyTimeout(int milliseconds) noexcept
{
    sqlite3_busy_timeout(handle_, milliseconds);
}

void Connection::SetProgressHandler(int interval, ProgressCallback callback, void* context) noexcept
{
    interval_ = interval;
    callback_ = callback;
    context_ = context;
    if (handle_ != nullptr) {
        sqlite3_progress_handler(handle_, interval, interval > 0 ? &Connection::OnProgress : nullptr, this);
    }
}

// A flag of our own and not sqlite3_interrupt: that ends only what runs at the moment and needs a handle, which the
// thread that works here may be closing.
int Connection::OnProgress(void* self)
{
    const auto& connection = *static_cast<const Connection*>(self);
    if (connection.IsInterrupted()) {
        return 1;
    }
    return connection.callback_ != nullptr ? connection.callback_(connection.context_) : 0;
}

} // namespace orvmetadatadb::detail
