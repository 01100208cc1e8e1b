#include <orvmetadatadb/detail/IndexFile.h>

#include <orvmetadatadb/detail/Transaction.h>
#include <orvstorage/SQLiteCodes.h>

#include <sqlite3.h>

#include <string>

namespace orvmetadatadb::detail {

namespace {

// `name` with `suffix` as an SQL identifier: whatever it holds, it names a table.
std::string Identifier(const std::string& name, const char* suffix)
{
    std::string out = "\"";
    for (const char c : name + suffix) {
        out.append(c == '"' ? 2 : 1, c);
    }
    return out + '"';
}

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

IndexFile::Format IndexFile::Open(const orvcore::UTF16String& path)
{
    Close();
    connection_.Open(path);
    connection_.SetBusyTimeout(500);
    SetUp(connection_);
    const Format format = ReadFormat();
    if (format != Format::Current) {
        Close();
        return format;
    }
    PreferWriteAheadLog(connection_);
    dataVersion_.emplace(connection_, "PRAGMA data_version");
    return format;
}

IndexFile::Format IndexFile::ReadFormat()
{
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
    Transaction transaction(connection_, Transaction::Kind::Write);
    connection_.Execute(("PRAGMA application_id=" + std::to_string(kApplicationId) +
                         "; PRAGMA user_version=" + std::to_string(kFormatVersion))
                            .c_str());
    transaction.Commit();
    return Format::Current;
}

void IndexFile::Close() noexcept
{
    table_.reset();
    dataVersion_.reset();
    connection_.Close();
}

void IndexFile::UseTable(const orvcore::UTF16String& table)
{
    table_.reset();
    const std::string name = orvcore::ToNarrow(table);
    Statement exists(connection_, "SELECT count(*) FROM sqlite_schema WHERE type='table' AND name=?");
    const std::string state = name + "_state";
    exists.Bind(1, orvcore::AsUTF8(state));
    if (exists.Number() == 0) {
        CreateTable(name);
    }
    const std::string rows = Identifier(name, "");
    const std::string keys = Identifier(name, "_keys");
    const auto prepare = [this](const std::string& sql) { return Statement(connection_, sql); };
    table_ = TableStatements{
        prepare("SELECT generation FROM " + Identifier(name, "_state")),
        prepare("UPDATE " + Identifier(name, "_state") + " SET generation=generation+1"),
        prepare("INSERT INTO " + keys + "(path) VALUES(?)"),
        prepare("INSERT INTO " + rows + "(key,text) VALUES(?,?)"),
        prepare("DELETE FROM " + keys + " WHERE id=?"),
        prepare("DELETE FROM " + rows + " WHERE key=?"),
        prepare("DELETE FROM " + keys),
        prepare("DELETE FROM " + rows),
        prepare("SELECT coalesce(max(id),0) FROM " + keys),
        prepare("SELECT coalesce(max(id),0) FROM " + rows),
        prepare("SELECT id,path FROM " + keys + " WHERE id>? ORDER BY id"),
        prepare("SELECT id,key,text FROM " + rows + " WHERE id>? ORDER BY id"),
    };
}

void IndexFile::CreateTable(const std::string& table)
{
    const std::string rows = Identifier(table, "");
    const std::string keys = Identifier(table, "_keys");
    const std::string state = Identifier(table, "_state");
    Transaction transaction(connection_, Transaction::Kind::Write);
    connection_.Execute(
        ("CREATE TABLE IF NOT EXISTS " + rows + "(id INTEGER PRIMARY KEY, key INTEGER NOT NULL, text TEXT NOT NULL);" +
         "CREATE INDEX IF NOT EXISTS " + Identifier(table, "_by_key") + " ON " + rows + "(key);" +
         "CREATE TABLE IF NOT EXISTS " + keys + "(id INTEGER PRIMARY KEY, path BLOB NOT NULL);" +
         "CREATE TABLE IF NOT EXISTS " + state + "(id INTEGER PRIMARY KEY, generation INTEGER NOT NULL);" +
         "INSERT OR IGNORE INTO " + state + " VALUES(1,1)")
            .c_str());
    transaction.Commit();
}

std::int64_t IndexFile::DataVersion()
{
    return dataVersion_->Number();
}

std::int64_t IndexFile::Generation()
{
    return table_->generation.Number();
}

void IndexFile::CountDeletion()
{
    table_->countDeletion.Run();
}

std::int64_t IndexFile::AddKey(std::u16string_view path)
{
    table_->addKey.BindBytes(1, path);
    table_->addKey.Run();
    return sqlite3_last_insert_rowid(connection_.Handle());
}

std::int64_t IndexFile::AddRow(std::int64_t key, std::u8string_view text)
{
    table_->addRow.Bind(1, key);
    table_->addRow.Bind(2, text);
    table_->addRow.Run();
    return sqlite3_last_insert_rowid(connection_.Handle());
}

void IndexFile::RemoveKey(std::int64_t key)
{
    table_->removeRows.Bind(1, key);
    table_->removeRows.Run();
    table_->removeKey.Bind(1, key);
    table_->removeKey.Run();
}

void IndexFile::RemoveAll()
{
    table_->removeAllRows.Run();
    table_->removeAllKeys.Run();
}

std::int64_t IndexFile::LastKey()
{
    return table_->lastKey.Number();
}

std::int64_t IndexFile::LastRow()
{
    return table_->lastRow.Number();
}

Statement& IndexFile::KeysAfter(std::int64_t id)
{
    table_->keysAfter.Bind(1, id);
    return table_->keysAfter;
}

Statement& IndexFile::RowsAfter(std::int64_t id)
{
    table_->rowsAfter.Bind(1, id);
    return table_->rowsAfter;
}

} // namespace orvmetadatadb::detail
