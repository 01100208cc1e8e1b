#include <orvmetadatadb/detail/IndexStore.h>

#include <orvmetadatadb/detail/SetAside.h>
#include <orvstorage/SQLiteCodes.h>

#include <utility>

// The index between two places: memory, which answers, and the file, which lasts. IndexStore.h has the rules by which
// both agree; how changes go to the file and come from it is IndexStoreChanges.cpp. A failure to write is one of four:
//
// - another process holds the lock, or the host interrupts: the changes stay pending, and are tried again ever less
//   often;
// - the file is damaged: nothing is read or written any more, until Open or RemoveTable sets the file aside;
// - anything else (a full disk, no rights): no further change is taken, since earlier calls have promised rows that the
//   file lacks; searches go on from memory;
// - at the end of the object: given up. The index is a cache, and the next listing finds the rows again.

namespace orvmetadatadb::detail {

namespace codes = orvstorage::sqlite;

namespace {

// How long a lock of another process is waited for: in general, and by the thread that ends the index,
// which may be a host's main thread.
// A group of another process is written in milliseconds; half a second means that it is stopped or its disk hangs.
constexpr int kBusyTimeoutMs = 500;
constexpr int kLastBusyTimeoutMs = 10;

} // namespace

IndexStore::~IndexStore()
{
    if (IsOpen()) {
        // An interrupt ends searches; what was changed before is still written.
        // Its context belongs to the host, and may be gone by now.
        file_.GetConnection().SetProgressHandler(0, nullptr, nullptr);
        file_.GetConnection().SetBusyTimeout(kLastBusyTimeoutMs);
        SaveLast();
    }
}

void IndexStore::SaveLast() noexcept
{
    try {
        // Into a damaged file nothing is written any more.
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

// The index is a cache, so a damaged one is replaced rather than told of. But only what was an index once: a file that
// somebody else put at the path is not ours to move away, and an old one may still be of use to an older program.
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
    // Another process may have replaced the file at the same moment: then this one moves the new, empty index away, and
    // rows that were in it are found again by its listing.
    if (!SetAside(path_) || file_.Open(path_, kBusyTimeoutMs) != IndexFile::Format::Current) {
        throw SQLiteError(codes::kCannotOpen);
    }
    wasSetAside_ = true;
    ApplySynchronous();
}

void IndexStore::Forget() noexcept
{
    // All of what is known of the file goes together: the next operation reads it from its first change.
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
    // NORMAL and not FULL: with a write-ahead log a loss of power may cost the last groups, but damages nothing.
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
    // A group is written at some later call. When that failed, earlier calls had promised rows that the file lacks, so
    // no further change is taken until the index is opened again or its table removed.
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
            // Really there, as far as anybody has written it.
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
    // Even if memory has no such row: another process may have added one that has not been read yet.
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
        saveAt_ = pending_.size() * 2; // what keeps it from being written may last: ask less and less often
        if (error.Code() != codes::kBusy) {
            throw;
        }
    }
}

void IndexStore::SaveIfFree()
{
    Connection& connection = file_.GetConnection();
    // The user waits for a search at each key press; an insert has time.
    connection.SetBusyTimeout(0); // a search does not wait for a writer
    bool isInterrupted = false;
    try {
        Save();
    } catch (const SQLiteError& error) {
        // A search answers from memory, which has the changes. What failed is remembered and told to the next insert.
        // An interrupt is meant for the search.
        isInterrupted = error.Code() == codes::kInterrupted;
    }
    connection.SetBusyTimeout(kBusyTimeoutMs);
    if (isInterrupted) {
        throw SQLiteError(codes::kInterrupted);
    }
}

// What is pending is written if that needs no waiting, so that other processes see it soon. When it failed, searches
// still answer from memory; but not after damage, for then it cannot be known what memory lacks.
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

} // namespace orvmetadatadb::detail
