// How the memory of an IndexStore follows its file.
#include <orvmetadatadb/detail/IndexStore.h>

#include <orvmetadatadb/detail/Transaction.h>
#include <orvstorage/SQLiteCodes.h>

#include <algorithm>

namespace orvmetadatadb::detail {

namespace codes = orvstorage::sqlite;

void IndexStore::Forget() noexcept
{
    m_memory.Clear();
    m_keyOfFileId.clear();
    m_newRows.clear();
    m_goneKeys.clear();
    m_replayRows.clear();
    m_replayGone.clear();
    m_loaded = false;
    m_failure = 0;
    m_saveAt = kGroupSize;
    m_lastKey = m_lastRow = 0;
}

void IndexStore::Refresh()
{
    if (m_failure == codes::kCorrupt) {
        throw SQLiteError(m_failure);
    }
    if (m_failure == 0) {
        SaveIfFree();
    }
    if (m_loaded && m_file.DataVersion() == m_dataVersion) {
        return;
    }
    try {
        Transaction transaction(m_file.GetConnection(), Transaction::Kind::Read);
        CatchUp();
        transaction.Commit();
    } catch (const SQLiteError& error) {
        m_loaded = false;
        m_failure = error.Code() == codes::kCorrupt ? codes::kCorrupt : m_failure;
        throw;
    }
}

void IndexStore::CatchUp()
{
    const std::int64_t version = m_file.DataVersion();
    if (m_loaded && version == m_dataVersion) {
        return;
    }
    const std::int64_t generation = m_file.Generation();
    if (!m_loaded || generation != m_generation) {
        KeepPendingForReplay();
        m_loaded = false;
    }
    LoadKeys();
    LoadRows();
    m_dataVersion = version;
    m_generation = generation;
    if (!m_loaded) {
        m_loaded = true;
        ReplayPending();
    }
}

// What is not written yet is kept as text: the numbers it is known by end with the old memory. It stays kept until a
// load succeeds.
void IndexStore::KeepPendingForReplay()
{
    for (auto& [key, fileId] : m_goneKeys) {
        m_replayGone.push_back(std::move(key));
    }
    for (const MemoryIndex::RowId id : m_newRows) {
        const MemoryIndex::Row& row = m_memory[id];
        if (row.text != TextPool::kNone && !row.stored) {
            m_replayRows.emplace_back(m_memory.KeyText(row.key), m_memory.Text(row.text));
        }
    }
    m_goneKeys.clear();
    m_newRows.clear();
    m_memory.Clear();
    m_keyOfFileId.clear();
    m_lastKey = m_lastRow = 0;
}

void IndexStore::ReplayPending()
{
    for (orvcore::UTF16String& key : m_replayGone) {
        const std::int64_t fileId = m_memory.Delete(key);
        if (fileId != 0) {
            m_goneKeys.emplace_back(std::move(key), fileId);
        }
    }
    for (const auto& [key, text] : m_replayRows) {
        const MemoryIndex::Inserted inserted = m_memory.Insert(m_memory.AddKey(key), text);
        if (inserted.isNew) {
            m_newRows.push_back(inserted.row);
        }
    }
    m_replayGone.clear();
    m_replayRows.clear();
}

void IndexStore::LoadKeys()
{
    Statement& keys = m_file.KeysAfter(m_lastKey);
    while (keys.Step()) {
        m_lastKey = keys.Integer(0);
        const MemoryIndex::KeyId key = m_memory.AddKey(keys.Units(1));
        m_memory.SetFileId(key, m_lastKey);
        m_keyOfFileId.emplace_back(m_lastKey, key);
    }
}

void IndexStore::LoadRows()
{
    Statement& rows = m_file.RowsAfter(m_lastRow);
    auto known = m_keyOfFileId.cend();
    while (rows.Step()) {
        m_lastRow = rows.Integer(0);
        const std::int64_t fileId = rows.Integer(1);
        if (known == m_keyOfFileId.cend() || known->first != fileId) { // a key's rows mostly lie together
            known = std::lower_bound(m_keyOfFileId.cbegin(), m_keyOfFileId.cend(), fileId,
                                     [](const auto& pair, std::int64_t id) { return pair.first < id; });
        }
        const orvcore::UTF16String text = orvcore::ToUTF16(rows.Text(2));
        if (known == m_keyOfFileId.cend() || known->first != fileId || text.empty()) {
            continue; // a row without key or text finds nothing
        }
        m_memory[m_memory.Insert(known->second, text).row].stored = true;
    }
}

} // namespace orvmetadatadb::detail
