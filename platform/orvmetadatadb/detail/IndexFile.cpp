#include <orvmetadatadb/detail/IndexFile.h>

#include <orvmetadatadb/detail/Transaction.h>
#include <orvstorage/SQLiteCodes.h>

#include <sqlite3.h>

#include <limits>
#include <string>

namespace orvmetadatadb::detail {

namespace {

// `name` as an SQL identifier: whatever it holds, it names a table.
std::string Identifier(const std::string& name)
{
    std::string out = "\"";
    for (const char c : name) {
        out.append(c == '"' ? 2 : 1, c);
    }
    return out + '"';
}

// For each new connection: SQLite keeps none of these in the file.
void SetUp(Connection& connection)
{
    // What the index forgets need not be wiped from the disk, a damaged page is better found early, and an empty index
    // is not worth waiting for the disk.
    connection.Execute(
        "PRAGMA synchronous=OFF; PRAGMA secure_delete=OFF; PRAGMA cell_size_check=ON; PRAGMA temp_store=MEMORY");
}

// Readers and a writer do not wait for each other in this mode. On a file system that cannot have it (or while another
// process keeps the file busy) the file stays in the mode it has, which serves too.
void PreferWriteAheadLog(Connection& connection)
{
    sqlite3_exec(connection.Handle(), "PRAGMA journal_mode=WAL; PRAGMA journal_size_limit=4194304", nullptr, nullptr,
                 nullptr);
}

} // namespace

IndexFile::Format IndexFile::Open(const orvcore::UTF16String& path, int busyTimeoutMs)
{
    Close();
    connection_.Open(path);
    connection_.SetBusyTimeout(busyTimeoutMs);
    SetUp(connection_);
    const Format format = ReadFormat();
    if (format != Format::Current) {
        Close();
        return format;
    }
    PreferWriteAheadLog(connection_);
    return format;
}

IndexFile::Format IndexFile::ReadFormat()
{
    // The marks of the three cases: ours has both numbers, a file that SQLite has just made has neither and no table,
    // and any other is somebody's database, which stays as it is.
    const auto application = Statement(connection_, "PRAGMA application_id").Number();
    const auto version = Statement(connection_, "PRAGMA user_version").Number();
    const auto tables = Statement(connection_, "SELECT count(*) FROM sqlite_schema").Number(); // reads the whole schema
    if (application == kApplicationId) {
        return version == kFormatVersion ? Format::Current : Format::OtherVersion;
    }
    if (application != 0 || version != 0 || tables != 0) {
        return Format::NotAnIndex;
    }
    // Written before the log comes into use, so that the mark stands in the file itself from the start.
    Transaction transaction(connection_);
    connection_.Execute(("PRAGMA application_id=" + std::to_string(kApplicationId) +
                         "; PRAGMA user_version=" + std::to_string(kFormatVersion))
                            .c_str());
    transaction.Commit();
    return Format::Current;
}

void IndexFile::Close() noexcept
{
    // The statements first: a connection goes only when the last of them has gone.
    table_.reset();
    connection_.Close();
}

void IndexFile::UseTable(const orvcore::UTF16String& table)
{
    table_.reset();
    const std::string name = orvcore::ToNarrow(table);
    // Asked before a table is made: to make one takes the write lock, for which a mere reader would wait.
    Statement exists(connection_, "SELECT count(*) FROM sqlite_schema WHERE type='table' AND name=?");
    exists.Bind(1, orvcore::AsUTF8(name));
    if (exists.Number() == 0) {
        CreateTable(name);
    }
    const std::string changes = Identifier(name);
    const auto prepare = [this](const std::string& sql) { return Statement(connection_, sql); };
    // Prepared once: an insert then costs the binding of its values. The order is that of the members.
    table_ = TableStatements{
        prepare("SELECT coalesce(min(id),0) FROM " + changes),
        prepare("SELECT coalesce(max(id),0) FROM " + changes),
        prepare("SELECT id,path,text FROM " + changes + " WHERE id>? ORDER BY id"),
        prepare("INSERT INTO " + changes + " VALUES(?,?,?)"),
        prepare("INSERT INTO " + changes + " VALUES(?,NULL,?)"),
        prepare("INSERT INTO " + changes + " VALUES(?,?,NULL)"),
        prepare("DELETE FROM " + changes),
        prepare("INSERT INTO " + changes + " VALUES(?,NULL,NULL)"),
    };
}

// Another process may be here at the same time: the second one waits for the transaction and finds the table.
void IndexFile::CreateTable(const std::string& table)
{
    Transaction transaction(connection_);
    connection_.Execute(
        ("CREATE TABLE IF NOT EXISTS " + Identifier(table) + "(id INTEGER PRIMARY KEY, path BLOB, text TEXT)").c_str());
    transaction.Commit();
}

std::int64_t IndexFile::FirstChange()
{
    return table_->first.Number();
}

std::int64_t IndexFile::LastChange()
{
    // The numbers of a damaged or hostile file may be anything. Those that follow must not overflow.
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max() / 2; // no index comes so far
    const std::int64_t last = table_->last.Number();
    if (last > kMost) {
        throw SQLiteError(orvstorage::sqlite::kCorrupt);
    }
    return last;
}

Statement& IndexFile::ChangesAfter(std::int64_t id)
{
    table_->after.Reset(); // a reading that ended half-way
    table_->after.Bind(1, id);
    return table_->after;
}

// All of them insert with a number of the caller's. Two writers that gave out one number would fail here instead of
// mixing their lists; the transaction, within which the last number was asked for, keeps that from happening.
void IndexFile::AddRow(std::int64_t id, std::u16string_view path, std::u8string_view text)
{
    table_->add.Bind(1, id);
    table_->add.BindBytes(2, path);
    table_->add.Bind(3, text);
    table_->add.Run();
}

void IndexFile::AddRowOfSameKey(std::int64_t id, std::u8string_view text)
{
    table_->addToSame.Bind(1, id);
    table_->addToSame.Bind(2, text);
    table_->addToSame.Run();
}

void IndexFile::RemoveKey(std::int64_t id, std::u16string_view path)
{
    table_->removeKey.Bind(1, id);
    table_->removeKey.BindBytes(2, path);
    table_->removeKey.Run();
}

void IndexFile::RemoveAll(std::int64_t id)
{
    // Without a condition: SQLite then empties the table page by page instead of deleting row by row.
    table_->dropAll.Run();
    table_->removeAll.Bind(1, id);
    table_->removeAll.Run();
}

} // namespace orvmetadatadb::detail
