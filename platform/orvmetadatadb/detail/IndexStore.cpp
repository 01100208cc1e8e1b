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
    file_.GetConnection().SetProgressHandler(0, nullptr, nullptr);
    SaveLast();
}

void IndexStore::SaveLast() noexcept
{
    try {
        if (failure_ == 0 && HasTable()) {
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
    path_ = path;
    OpenOrReplace();
}

void IndexStore::OpenOrReplace()
{
    IndexFile::Format format = IndexFile::Format::OtherVersion;
    try {
        format = file_.Open(path_);
    } catch (const SQLiteError& error) {
        file_.Close();
        const bool damaged = error.Code() == codes::kCorrupt || error.Code() == codes::kNotADatabase;
        if (!damaged || !WasSearchIndex(path_)) {
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
    file_.Close();
    if (!SetAside(path_) || file_.Open(path_) != IndexFile::Format::Current) {
        throw SQLiteError(codes::kCannotOpen);
    }
    ApplySynchronous();
}

void IndexStore::SetSynchronous(bool synchronous)
{
    synchronous_ = synchronous;
    ApplySynchronous();
}

void IndexStore::ApplySynchronous()
{
    file_.GetConnection().Execute(synchronous_ ? "PRAGMA synchronous=NORMAL" : "PRAGMA synchronous=OFF");
}

void IndexStore::SetProgressHandler(int interval, Connection::ProgressCallback callback, void* context)
{
    file_.GetConnection().SetProgressHandler(interval, callback, context);
}

void IndexStore::UseTable(const orvcore::UTF16String& table)
{
    if (HasTable()) {
        Save();
    }
    Forget();
    try {
        file_.UseTable(table);
    } catch (const SQLiteError& error) {
        failure_ = error.Code();
        throw;
    }
}

void IndexStore::RemoveTable()
{
    bool damaged = failure_ == codes::kCorrupt;
    Forget();
    try {
        if (!damaged && HasTable()) {
            Transaction transaction(file_.GetConnection(), Transaction::Kind::Write);
            file_.RemoveAll();
            file_.CountDeletion();
            transaction.Commit();
        }
    } catch (const SQLiteError& error) {
        if (error.Code() != codes::kCorrupt) {
            throw;
        }
        damaged = true;
    }
    file_.ForgetTable();
    if (damaged) {
        Replace(); // nothing of the content is wanted any more
    }
}

bool IndexStore::Insert(std::u16string_view key, std::u16string_view text)
{
    if (failure_ != 0) {
        throw SQLiteError(failure_);
    }
    if (!loaded_) {
        Refresh();
    }
    const MemoryIndex::Inserted inserted = memory_.Insert(memory_.AddKey(key), text);
    if (inserted.isNew) {
        newRows_.push_back(inserted.row);
        SaveWhenDue();
    }
    return inserted.isNew;
}

void IndexStore::Delete(std::u16string_view key)
{
    if (failure_ != 0) {
        throw SQLiteError(failure_);
    }
    if (!loaded_) {
        Refresh();
    }
    // Noted even when memory has no such key: another process may have written it since memory was last filled.
    const std::int64_t fileId = memory_.Delete(key);
    std::int64_t& gone = goneKeys_.try_emplace(orvcore::UTF16String(key), 0).first->second;
    if (fileId != 0) {
        gone = fileId;
        FindFileId(fileId)->second = kNoKey;
    }
    SaveWhenDue();
}

std::vector<orvcore::UTF16String> IndexStore::Match(const std::vector<orvcore::UTF8String>& terms)
{
    Refresh();
    return memory_.Match(terms);
}

std::vector<orvcore::UTF16String> IndexStore::Similar(const orvcore::UTF8String& start, std::size_t count)
{
    Refresh();
    return memory_.Similar(start, count);
}

void IndexStore::SaveWhenDue()
{
    if (PendingCount() < saveAt_) {
        return;
    }
    try {
        Save();
        saveAt_ = kGroupSize;
    } catch (const SQLiteError& error) {
        if (error.Code() != codes::kBusy) {
            throw;
        }
        saveAt_ = PendingCount() * 2; // another process keeps the file: ask less and less often
    }
}

void IndexStore::SaveIfFree()
{
    Connection& connection = file_.GetConnection();
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
        Transaction transaction(file_.GetConnection(), Transaction::Kind::Write);
        try {
            CatchUp();
            WriteDeletions();
            WriteRows();
            transaction.Commit();
        } catch (...) {
            loaded_ = false; // memory knows numbers that the file does not have now
            throw;
        }
    } catch (const SQLiteError& error) {
        failure_ = error.Code() == codes::kBusy ? 0 : error.Code();
        throw;
    }
    for (const MemoryIndex::RowId row : newRows_) {
        memory_[row].stored = true;
    }
    newRows_.clear();
    goneKeys_.clear();
    if (memory_.IsWasteful()) {
        loaded_ = false;
    }
}

// Memory is up to date, so that the numbers of all keys are known that the file has.
void IndexStore::WriteDeletions()
{
    bool any = false;
    for (const auto& [key, fileId] : goneKeys_) {
        if (fileId != 0) {
            file_.RemoveKey(fileId);
            any = true;
        }
    }
    if (!any) {
        return;
    }
    file_.CountDeletion();
    generation_ = file_.Generation();
    // Numbers that were the highest are given again, by this process or another.
    lastKey_ = file_.LastKey();
    lastRow_ = file_.LastRow();
    while (!keyOfFileId_.empty() && keyOfFileId_.back().first > lastKey_) {
        keyOfFileId_.pop_back();
    }
}

void IndexStore::WriteRows()
{
    std::sort(newRows_.begin(), newRows_.end()); // a row that was deleted and used again is there twice
    newRows_.erase(std::unique(newRows_.begin(), newRows_.end()), newRows_.end());
    for (const MemoryIndex::RowId id : newRows_) {
        const MemoryIndex::Row& row = memory_[id];
        if (row.text == TextPool::kNone || row.stored) {
            continue; // deleted again meanwhile
        }
        std::int64_t key = memory_.FileId(row.key);
        if (key == 0) {
            key = lastKey_ = file_.AddKey(memory_.KeyText(row.key));
            memory_.SetFileId(row.key, key);
            keyOfFileId_.emplace_back(key, row.key);
        }
        lastRow_ = file_.AddRow(key, orvcore::ToUTF8(memory_.Text(row.text)));
    }
}

} // namespace orvmetadatadb::detail
