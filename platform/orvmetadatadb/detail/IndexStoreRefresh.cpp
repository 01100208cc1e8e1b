// How the memory of an IndexStore follows its file.
#include <orvmetadatadb/detail/IndexStore.h>

#include <orvmetadatadb/detail/Transaction.h>
#include <orvstorage/SQLiteCodes.h>

#include <algorithm>

namespace orvmetadatadb::detail {

namespace codes = orvstorage::sqlite;

void IndexStore::Forget() noexcept
{
    memory_.Clear();
    keyOfFileId_.clear();
    newRows_.clear();
    goneKeys_.clear();
    replayRows_.clear();
    loaded_ = false;
    failure_ = 0;
    saveAt_ = kGroupSize;
    lastKey_ = lastRow_ = 0;
}

void IndexStore::Refresh()
{
    if (failure_ == codes::kCorrupt) {
        throw SQLiteError(failure_);
    }
    if (failure_ == 0) {
        SaveIfFree();
    }
    if (loaded_ && file_.DataVersion() == dataVersion_) {
        return;
    }
    try {
        Transaction transaction(file_.GetConnection(), Transaction::Kind::Read);
        CatchUp();
        transaction.Commit();
    } catch (const SQLiteError& error) {
        loaded_ = false;
        failure_ = error.Code() == codes::kCorrupt ? codes::kCorrupt : failure_;
        throw;
    }
}

void IndexStore::CatchUp()
{
    const std::int64_t version = file_.DataVersion();
    if (loaded_ && version == dataVersion_) {
        return;
    }
    const std::int64_t generation = file_.Generation();
    if (!loaded_ || generation != generation_) {
        KeepPendingForReplay();
        loaded_ = false;
    }
    LoadKeys();
    LoadRows();
    dataVersion_ = version;
    generation_ = generation;
    if (!loaded_) {
        loaded_ = true;
        ReplayPending();
    }
}

// What is not written yet is kept as text: the numbers it is known by end with the old memory. It stays kept until a
// load succeeds.
void IndexStore::KeepPendingForReplay()
{
    for (auto& [key, fileId] : goneKeys_) {
        fileId = 0;
    }
    for (const MemoryIndex::RowId id : newRows_) {
        const MemoryIndex::Row& row = memory_[id];
        if (row.text != TextPool::kNone && !row.stored) {
            replayRows_.emplace_back(memory_.KeyText(row.key), memory_.Text(row.text));
        }
    }
    newRows_.clear();
    memory_.Clear();
    keyOfFileId_.clear();
    lastKey_ = lastRow_ = 0;
}

void IndexStore::ReplayPending()
{
    for (const auto& [key, text] : replayRows_) {
        const MemoryIndex::Inserted inserted = memory_.Insert(memory_.AddKey(key), text);
        if (inserted.isNew) {
            newRows_.push_back(inserted.row);
        }
    }
    replayRows_.clear();
}

void IndexStore::LoadKeys()
{
    Statement& keys = file_.KeysAfter(lastKey_);
    while (keys.Step()) {
        lastKey_ = keys.Integer(0);
        const orvcore::UTF16String path = keys.Units(1);
        const auto gone = goneKeys_.find(path);
        if (gone != goneKeys_.end()) {
            gone->second = lastKey_;
            keyOfFileId_.emplace_back(lastKey_, kNoKey);
            continue;
        }
        const MemoryIndex::KeyId key = memory_.AddKey(path);
        memory_.SetFileId(key, lastKey_);
        keyOfFileId_.emplace_back(lastKey_, key);
    }
}

std::vector<IndexStore::KeyOfFileId>::iterator IndexStore::FindFileId(std::int64_t fileId) noexcept
{
    return std::lower_bound(keyOfFileId_.begin(), keyOfFileId_.end(), fileId,
                            [](const KeyOfFileId& known, std::int64_t id) { return known.first < id; });
}

void IndexStore::LoadRows()
{
    Statement& rows = file_.RowsAfter(lastRow_);
    auto known = keyOfFileId_.end();
    while (rows.Step()) {
        lastRow_ = rows.Integer(0);
        const std::int64_t fileId = rows.Integer(1);
        if (known == keyOfFileId_.end() || known->first != fileId) { // a key's rows mostly lie together
            known = FindFileId(fileId);
        }
        const orvcore::UTF16String text = orvcore::ToUTF16(rows.Text(2));
        if (known == keyOfFileId_.end() || known->first != fileId || known->second == kNoKey || text.empty()) {
            continue; // a row without key or text finds nothing
        }
        memory_[memory_.Insert(known->second, text).row].stored = true;
    }
}

} // namespace orvmetadatadb::detail
