#include <orvmetadatadb/detail/IndexStore.h>

#include <orvmetadatadb/detail/SetAside.h>
#include <orvmetadatadb/detail/Transaction.h>
#include <orvstorage/SQLiteCodes.h>

#include <utility>

namespace orvmetadatadb::detail {

namespace codes = orvstorage::sqlite;

namespace {

// How long a lock of another process is waited for: in general, and by the thread that ends the index,
// which may be a host's main thread.
constexpr int kBusyTimeoutMs = 500;
constexpr int kLastBusyTimeoutMs = 10;
// A list of changes this long, of which few still count, is written anew.
constexpr std::uint64_t kLongList = 65536;

} // namespace

IndexStore::~IndexStore()
{
    if (IsOpen()) {
        // An interrupt ends searches; what was changed before is still written.
        file_.GetConnection().SetProgressHandler(0, nullptr, nullptr);
        file_.GetConnection().SetBusyTimeout(kLastBusyTimeoutMs);
        SaveLast();
    }
}

void IndexStore::SaveLast() noexcept
{
    try {
        if (failure_ != codes::kCorrupt) {
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
    isTableInUse_ = false;
    path_ = path;
    wasSetAside_ = false;
    OpenOrReplace();
}

void IndexStore::OpenOrReplace()
{
    IndexFile::Format format = IndexFile::Format::OtherVersion;
    try {
        format = file_.Open(path_, kBusyTimeoutMs);
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
    if (!SetAside(path_) || file_.Open(path_, kBusyTimeoutMs) != IndexFile::Format::Current) {
        throw SQLiteError(codes::kCannotOpen);
    }
    wasSetAside_ = true;
    ApplySynchronous();
}

void IndexStore::Forget() noexcept
{
    memory_.Clear();
    lastRead_ = 0;
    lastKey_.clear();
    pending_.clear();
    saveAt_ = kGroupSize;
    failure_ = 0;
}

void IndexStore::SetSynchronous(bool synchronous)
{
    isSynchronous_ = synchronous;
    ApplySynchronous();
}

void IndexStore::ApplySynchronous()
{
    file_.GetConnection().Execute(isSynchronous_ ? "PRAGMA synchronous=NORMAL" : "PRAGMA synchronous=OFF");
}

void IndexStore::SetProgressHandler(int interval, Connection::ProgressCallback callback, void* context)
{
    file_.GetConnection().SetProgressHandler(interval, callback, context);
}

void IndexStore::UseTable(const orvcore::UTF16String& table)
{
    if (file_.HasTable() && table == table_) {
        isTableInUse_ = true; // what is pending for it, its removal included, stays pending
        return;
    }
    // What is pending, and what memory holds, belongs to one table: it is written before another one takes its place.
    Save();
    Forget();
    isTableInUse_ = false;
    try {
        file_.UseTable(table);
    } catch (const SQLiteError& error) {
        failure_ = error.Code();
        throw;
    }
    table_ = table;
    isTableInUse_ = true;
}

void IndexStore::RemoveTable()
{
    bool damaged = failure_ == codes::kCorrupt;
    // Pending changes would be undone by the removal that follows them. It becomes a change like any other, the first
    // that is pending: when the file is locked it waits, and until it is written nothing is read from the file.
    Forget();
    isTableInUse_ = false;
    if (!damaged && file_.HasTable()) {
        pending_.push_back({Change::Kind::RemoveAll, {}, {}});
        try {
            Save();
        } catch (const SQLiteError& error) {
            damaged = error.Code() == codes::kCorrupt;
            if (!damaged && error.Code() != codes::kBusy) {
                throw;
            }
        }
    }
    if (damaged) {
        Forget();
        Replace(); // nothing of the content is wanted any more
    }
}

void IndexStore::PrepareChange()
{
    if (failure_ != 0) {
        throw SQLiteError(failure_);
    }
    if (lastRead_ == 0) {
        CatchUp(); // what memory knows decides whether a row is new
    }
}

// A row that memory lacks is added without asking the file, which would cost a query for every row. When another
// process has added it meanwhile, the list gets the same row twice, which changes nothing for its readers.
bool IndexStore::Insert(std::u16string_view key, std::u16string_view text)
{
    PrepareChange();
    if (!memory_.Insert(key, text)) {
        CatchUp(); // another process may have deleted it since
        if (!memory_.Insert(key, text)) {
            return false;
        }
    }
    Note({Change::Kind::Add, orvcore::UTF16String(key), orvcore::UTF16String(text)});
    return true;
}

void IndexStore::Delete(std::u16string_view key)
{
    PrepareChange();
    if (key.empty()) {
        return; // has no rows, and no place in the file
    }
    memory_.Delete(key);
    Note({Change::Kind::RemoveKey, orvcore::UTF16String(key), {}});
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

void IndexStore::Note(Change change)
{
    pending_.push_back(std::move(change));
    if (pending_.size() < saveAt_) {
        return;
    }
    try {
        Save();
    } catch (const SQLiteError& error) {
        if (error.Code() != codes::kBusy) {
            throw;
        }
        saveAt_ = pending_.size() * 2; // another process keeps the file: ask less and less often
    }
}

void IndexStore::SaveIfFree()
{
    Connection& connection = file_.GetConnection();
    connection.SetBusyTimeout(0); // a search does not wait for a writer
    try {
        Save();
    } catch (const SQLiteError&) {
        // A search answers from memory, which has the changes. What failed is remembered and told to the next insert.
    }
    connection.SetBusyTimeout(kBusyTimeoutMs);
}

void IndexStore::Save()
{
    if (pending_.empty()) {
        return;
    }
    std::int64_t last = 0;
    try {
        // The transaction keeps other writers out from its beginning. What is read now is therefore all that comes
        // before the changes that this call writes, and no other process takes their numbers.
        Transaction transaction(file_.GetConnection());
        CatchUp();
        last = file_.LastChange();
        last = IsWorthWritingAnew(last) ? WriteAnew(last) : WriteChanges(last);
        transaction.Commit();
    } catch (const SQLiteError& error) {
        failure_ = error.Code() == codes::kBusy ? 0 : error.Code();
        throw;
    }
    // Only after the commit: when it fails the changes stay pending. Memory has them since they were noted, so they
    // are not read back.
    lastRead_ = last;
    pending_.clear();
    saveAt_ = kGroupSize;
    if (memory_.IsWasteful()) {
        Forget(); // the next operation reads the file anew
    }
}

// The number of the last change written.
std::int64_t IndexStore::WriteChanges(std::int64_t last)
{
    const Change* before = nullptr; // a key's rows mostly come together
    for (const Change& change : pending_) {
        ++last;
        switch (change.kind) {
        case Change::Kind::Add:
            if (before != nullptr && before->kind == Change::Kind::Add && before->key == change.key) {
                file_.AddRowOfSameKey(last, orvcore::ToUTF8(change.text));
            } else {
                file_.AddRow(last, change.key, orvcore::ToUTF8(change.text));
            }
            break;
        case Change::Kind::RemoveKey:
            file_.RemoveKey(last, change.key);
            break;
        case Change::Kind::RemoveAll:
            file_.RemoveAll(last);
            break;
        }
        before = &change;
    }
    return last;
}

// Folders that are relisted again and again would make the list grow for ever. (With a removal of all rows pending,
// memory is not what the file is to hold, and the removal shortens the list itself.)
bool IndexStore::IsWorthWritingAnew(std::int64_t last)
{
    const auto length = static_cast<std::uint64_t>(last) - static_cast<std::uint64_t>(file_.FirstChange());
    return length > kLongList && length / 4 > memory_.RowCount() && !IsRemovalPending();
}

std::int64_t IndexStore::WriteAnew(std::int64_t last)
{
    file_.RemoveAll(++last);
    std::u16string_view before;
    memory_.ForEachRow([&](std::u16string_view key, std::u16string_view text) {
        if (key == before) {
            file_.AddRowOfSameKey(++last, orvcore::ToUTF8(text));
        } else {
            file_.AddRow(++last, key, orvcore::ToUTF8(text));
        }
        before = key;
    });
    return last;
}

void IndexStore::Refresh()
{
    if (failure_ == codes::kCorrupt) {
        throw SQLiteError(failure_);
    }
    if (failure_ == 0) {
        SaveIfFree();
    }
    CatchUp();
}

void IndexStore::CatchUp()
{
    if (IsRemovalPending()) {
        return; // nothing of the file is wanted
    }
    const std::int64_t before = lastRead_;
    int refusal = 0;
    try {
        ReadChanges();
    } catch (const SQLiteError& error) {
        refusal = error.Code();
    }
    // What was read came into memory behind the pending changes, although in the file it comes before them. So these
    // are applied again, also when the reading ended half-way: each change that was read counts.
    if (lastRead_ != before) {
        for (const Change& change : pending_) {
            Apply(change);
        }
    }
    if (refusal != 0) {
        failure_ = refusal == codes::kCorrupt ? refusal : failure_;
        throw SQLiteError(refusal);
    }
}

void IndexStore::ReadChanges()
{
    Statement& changes = file_.ChangesAfter(lastRead_);
    while (changes.Step()) {
        orvcore::UTF16String path = changes.Units(1);
        const bool isSameKey = path.empty();
        if (!isSameKey) {
            lastKey_ = std::move(path);
        }
        const orvcore::UTF16String text = orvcore::ToUTF16(changes.Text(2));
        if (text.empty() && isSameKey) {
            memory_.Clear();
        } else if (text.empty()) {
            memory_.Delete(lastKey_);
        } else if (!lastKey_.empty()) { // a damaged file may begin without one
            memory_.Insert(lastKey_, text);
        }
        lastRead_ = changes.Integer(0);
    }
}

void IndexStore::Apply(const Change& change)
{
    switch (change.kind) {
    case Change::Kind::Add:
        memory_.Insert(change.key, change.text);
        break;
    case Change::Kind::RemoveKey:
        memory_.Delete(change.key);
        break;
    case Change::Kind::RemoveAll:
        memory_.Clear();
        break;
    }
}

} // namespace orvmetadatadb::detail
