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
    // What the index forgets need not be wiped from the disk, and a damaged page is better found early.
    connection.Execute("PRAGMA secure_delete=OFF; PRAGMA cell_size_check=ON; PRAGMA temp_store=MEMORY");
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
    m_connection.Open(path);
    m_connection.SetBusyTimeout(500);
    SetUp(m_connection);
    const Format format = ReadFormat();
    if (format != Format::Current) {
        Close();
        return format;
    }
    PreferWriteAheadLog(m_connection);
    m_dataVersion.emplace(m_connection, "PRAGMA data_version");
    return format;
}

IndexFile::Format IndexFile::ReadFormat()
{
    const auto application = Statement(m_connection, "PRAGMA application_id").Number();
    const auto version = Statement(m_connection, "PRAGMA user_version").Number();
    const auto tables =
        Statement(m_connection, "SELECT count(*) FROM sqlite_schema").Number(); // reads the whole schema
    if (application == kApplicationId) {
        return version == kFormatVersion ? Format::Current : Format::OtherVersion;
    }
    if (application != 0 || version != 0 || tables != 0) {
        return Format::NotAnIndex;
    }
    // Written before the log comes into use, so that the mark stands in the file itself from the start.
    Transaction transaction(m_connection, Transaction::Kind::Write);
    m_connection.Execute(("PRAGMA application_id=" + std::to_string(kApplicationId) +
                          "; PRAGMA user_version=" + std::to_string(kFormatVersion))
                             .c_str());
    transaction.Commit();
    return Format::Current;
}

void IndexFile::Close() noexcept
{
    m_table.reset();
    m_dataVersion.reset();
    m_connection.Close();
}

void IndexFile::UseTable(const orvcore::UTF16String& table)
{
    m_table.reset();
    const std::string name = orvcore::ToNarrow(table);
    Statement exists(m_connection, "SELECT count(*) FROM sqlite_schema WHERE type='table' AND name=?");
    const std::string state = name + "_state";
    exists.Bind(1, orvcore::AsUTF8(state));
    if (exists.Number() == 0) {
        CreateTable(name);
    }
    const std::string rows = Identifier(name, "");
    const std::string keys = Identifier(name, "_keys");
    const auto prepare = [this](const std::string& sql) { return Statement(m_connection, sql); };
    m_table = TableStatements{
        prepare("SELECT generation FROM " + Identifier(name, "_state")),
        prepare("UPDATE " + Identifier(name, "_state") + " SET generation=generation+1"),
        prepare("INSERT INTO " + keys + "(path) VALUES(?)"),
        prepare("INSERT INTO " + rows + "(key,text) VALUES(?,?)"),
        prepare("DELETE FROM " + keys + " WHERE id=?"),
        prepare("DELETE FROM " + rows + " WHERE key=?"),
        prepare("DELETE FROM " + keys),
        prepare("DELETE FROM " + rows),
        prepare("SELECT id,path FROM " + keys + " WHERE id>? ORDER BY id"),
        prepare("SELECT id,key,text FROM " + rows + " WHERE id>? ORDER BY id"),
    };
}

void IndexFile::CreateTable(const std::string& table)
{
    const std::string rows = Identifier(table, "");
    const std::string keys = Identifier(table, "_keys");
    const std::string state = Identifier(table, "_state");
    Transaction transaction(m_connection, Transaction::Kind::Write);
    m_connection.Execute(
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
    return m_dataVersion->Number();
}

std::int64_t IndexFile::Generation()
{
    return m_table->generation.Number();
}

void IndexFile::CountDeletion()
{
    m_table->countDeletion.Run();
}

std::int64_t IndexFile::AddKey(std::u16string_view path)
{
    m_table->addKey.BindBytes(1, path);
    m_table->addKey.Run();
    return sqlite3_last_insert_rowid(m_connection.Handle());
}

std::int64_t IndexFile::AddRow(std::int64_t key, std::u8string_view text)
{
    m_table->addRow.Bind(1, key);
    m_table->addRow.Bind(2, text);
    m_table->addRow.Run();
    return sqlite3_last_insert_rowid(m_connection.Handle());
}

void IndexFile::RemoveKey(std::int64_t key)
{
    m_table->removeRows.Bind(1, key);
    m_table->removeRows.Run();
    m_table->removeKey.Bind(1, key);
    m_table->removeKey.Run();
}

void IndexFile::RemoveAll()
{
    m_table->removeAllRows.Run();
    m_table->removeAllKeys.Run();
}

Statement& IndexFile::KeysAfter(std::int64_t id)
{
    m_table->keysAfter.Bind(1, id);
    return m_table->keysAfter;
}

Statement& IndexFile::RowsAfter(std::int64_t id)
{
    m_table->rowsAfter.Bind(1, id);
    return m_table->rowsAfter;
}

} // namespace orvmetadatadb::detail
