#include <orvmetadatadb/detail/IndexStore.h>

#include <orvmetadatadb/detail/SetAside.h>
#include <orvmetadatadb/detail/Transaction.h>
#include <orvstorage/SQLiteCodes.h>

#include <algorithm>

namespace orvmetadatadb::detail {

namespace codes = orvstorage::sqlite;

namespace {

constexpr int kPatientMilliseconds = 500;

} // namespace

IndexStore::~IndexStore()
{
    // An interrupt ends searches; what was inserted before is still written.
    m_file.GetConnection().SetProgressHandler(0, nullptr, nullptr);
    SaveLast();
}

void IndexStore::SaveLast() noexcept
{
    try {
        if (m_failure == 0 && HasTable()) {
            Save();
        }
    } catch (...) {
        // The index is a cache: rows that cannot be written are found again by the next listing.
    }
}

void IndexStore::Open(const orvcore::UTF16String& path)
{
    SaveLast();
    Forget();
    m_path = path;
    OpenOrReplace();
}

void IndexStore::OpenOrReplace()
{
    IndexFile::Format format = IndexFile::Format::OtherVersion;
    try {
        format = m_file.Open(m_path);
    } catch (const SQLiteError& error) {
        m_file.Close();
        const bool damaged = error.Code() == codes::kCorrupt || error.Code() == codes::kNotADatabase;
        if (!damaged || !WasSearchIndex(m_path)) {
            throw;
        }
    }
    if (format == IndexFile::Format::NotAnIndex) {
        throw SQLiteError(codes::kNotADatabase);
    }
    if (format == IndexFile::Format::OtherVersion) {
        Replace();
    }
    ApplySynchronous();
}

void IndexStore::Replace()
{
    m_file.Close();
    if (!SetAside(m_path) || m_file.Open(m_path) != IndexFile::Format::Current) {
        throw SQLiteError(codes::kCannotOpen);
    }
    ApplySynchronous();
}

void IndexStore::SetSynchronous(bool synchronous)
{
    m_synchronous = synchronous;
    ApplySynchronous();
}

void IndexStore::ApplySynchronous()
{
    m_file.GetConnection().Execute(m_synchronous ? "PRAGMA synchronous=NORMAL" : "PRAGMA synchronous=OFF");
}

void IndexStore::SetProgressHandler(int interval, Connection::ProgressCallback callback, void* context)
{
    m_file.GetConnection().SetProgressHandler(interval, callback, context);
}

void IndexStore::UseTable(const orvcore::UTF16String& table)
{
    if (HasTable()) {
        Save();
    }
    Forget();
    try {
        m_file.UseTable(table);
    } catch (const SQLiteError& error) {
        m_failure = error.Code();
        throw;
    }
}

void IndexStore::RemoveTable()
{
    bool damaged = m_failure == codes::kCorrupt;
    Forget();
    try {
        if (!damaged && HasTable()) {
            Transaction transaction(m_file.GetConnection(), Transaction::Kind::Write);
            m_file.RemoveAll();
            m_file.CountDeletion();
            transaction.Commit();
        }
    } catch (const SQLiteError& error) {
        if (error.Code() != codes::kCorrupt) {
            throw;
        }
        damaged = true;
    }
    m_file.ForgetTable();
    if (damaged) {
        Replace(); // nothing of the content is wanted any more
    }
}

bool IndexStore::Insert(std::u16string_view key, std::u16string_view text)
{
    if (m_failure != 0) {
        throw SQLiteError(m_failure);
    }
    if (!m_loaded) {
        Refresh();
    }
    const MemoryIndex::Inserted inserted = m_memory.Insert(m_memory.AddKey(key), text);
    if (inserted.isNew) {
        m_newRows.push_back(inserted.row);
        SaveWhenDue();
    }
    return inserted.isNew;
}

void IndexStore::Delete(std::u16string_view key)
{
    if (m_failure != 0) {
        throw SQLiteError(m_failure);
    }
    if (!m_loaded) {
        Refresh();
    }
    const std::int64_t fileId = m_memory.Delete(key);
    if (fileId != 0) {
        m_goneKeys.emplace_back(key, fileId);
        SaveWhenDue();
    }
}

std::vector<orvcore::UTF16String> IndexStore::Match(const std::vector<orvcore::UTF8String>& terms)
{
    Refresh();
    return m_memory.Match(terms);
}

std::vector<orvcore::UTF16String> IndexStore::Similar(const orvcore::UTF8String& start, std::size_t count)
{
    Refresh();
    return m_memory.Similar(start, count);
}

void IndexStore::SaveWhenDue()
{
    if (PendingCount() < m_saveAt) {
        return;
    }
    try {
        Save();
        m_saveAt = kGroupSize;
    } catch (const SQLiteError& error) {
        if (error.Code() != codes::kBusy) {
            throw;
        }
        m_saveAt = PendingCount() * 2; // another process keeps the file: ask less and less often
    }
}

void IndexStore::SaveIfFree()
{
    Connection& connection = m_file.GetConnection();
    connection.SetBusyTimeout(0);
    try {
        Save();
    } catch (const SQLiteError&) {
        // A search answers from memory, which has the rows. What failed is remembered and told to the next insert.
    }
    connection.SetBusyTimeout(kPatientMilliseconds);
}

void IndexStore::Save()
{
    if (PendingCount() == 0) {
        return;
    }
    try {
        Transaction transaction(m_file.GetConnection(), Transaction::Kind::Write);
        try {
            CatchUp();
            WritePending();
            transaction.Commit();
        } catch (...) {
            m_loaded = false; // memory knows numbers that the file does not have now
            throw;
        }
    } catch (const SQLiteError& error) {
        m_failure = error.Code() == codes::kBusy ? 0 : error.Code();
        throw;
    }
    for (const MemoryIndex::RowId row : m_newRows) {
        m_memory[row].stored = true;
    }
    m_newRows.clear();
    m_goneKeys.clear();
    if (m_memory.IsWasteful()) {
        m_loaded = false;
    }
}

void IndexStore::WritePending()
{
    for (const auto& [key, fileId] : m_goneKeys) {
        m_file.RemoveKey(fileId);
    }
    if (!m_goneKeys.empty()) {
        m_file.CountDeletion();
        m_generation = m_file.Generation();
    }
    for (const MemoryIndex::RowId id : m_newRows) {
        const MemoryIndex::Row& row = m_memory[id];
        if (row.text == TextPool::kNone || row.stored) {
            continue; // deleted again meanwhile
        }
        std::int64_t key = m_memory.FileId(row.key);
        if (key == 0) {
            key = m_lastKey = m_file.AddKey(m_memory.KeyText(row.key));
            m_memory.SetFileId(row.key, key);
            m_keyOfFileId.emplace_back(key, row.key);
        }
        m_lastRow = m_file.AddRow(key, orvcore::ToUTF8(m_memory.Text(row.text)));
    }
}

} // namespace orvmetadatadb::detail
