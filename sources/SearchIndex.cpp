#include <sources/SearchIndex.h>

#include <orvcore/files/Paths.h>
#include <orvcore/host/DebugSettings.h>
#include <orvcore/tasks/shared/NoDestructor.h>
#include <orvcore/text/shared/TextFold.h>
#include <orvmetadatadb/EscapeSequences.h>
#include <orvmetadatadb/RapidFindDB.h>
#include <orvstorage/SQLiteCodes.h>
#include <sources/shared/IndexSession.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

// One index a process, used from any thread. The mutex guards the fields of Singleton and nothing else: it is never
// held while the database is asked, because a query may take long and an open may wait for another process.
//
// Ownership. Each call copies the handle under the mutex and works on the copy, so the database closes with the last
// call that is in it, on whatever thread that ends. The handle's deleter takes the mutex: no handle may be dropped
// under it. Replacing or closing the index interrupts calls that are in the old one, which then end soon with an error
// that is passed over; a new database waits for that (two seconds at most) before it opens the file, since two
// databases of one process on one file would write their changes in any order.
//
// Sessions. A session is the time between two closings; opening another file goes on with it. A task of a manager that
// was shut down may come to its end seconds later, when the next manager has opened the index: its session is over, so
// TheDatabase gives it nothing, and it cannot empty what the new one has listed.
//
// Nothing throws and nothing waits for ever: an index that fails costs the search, never the host.

namespace orvcapsule {

namespace {

using orvmetadatadb::RapidFindDB;
using Handle = std::shared_ptr<RapidFindDB>;

// The interface promises the number.
constexpr int kMostTags = 100;
// An interrupted call ends at its next look at the progress handler. One that hangs in the file system does not, and
// the host's start must not hang with it: its late changes may then come after the new ones, and a relisting sets them
// right.
constexpr std::chrono::seconds kCloseTimeout{2};

struct Singleton {
    std::mutex mutex;
    Handle handle;
    int openFailure = orvstorage::sqlite::kOk; // of the handle's database
    std::uint64_t session = 1;                 // how often the index was closed, and one
    std::size_t open = 0;                      // databases, those included that a running call still keeps from closing
    std::condition_variable closed;
};

Singleton& TheSingleton()
{
    static orvcore::NoDestructor<Singleton> singleton;
    return *singleton;
}

void NoteOpenFailure(int failure)
{
    const std::lock_guard lock(TheSingleton().mutex);
    TheSingleton().openFailure = failure;
}

std::uint64_t ThisSession()
{
    const std::lock_guard lock(TheSingleton().mutex);
    return TheSingleton().session;
}

// Each call works on a copy: the database closes when the last one goes, never under a running call.
Handle TheDatabase(std::optional<std::uint64_t> session)
{
    const std::lock_guard lock(TheSingleton().mutex);
    return !session || *session == TheSingleton().session ? TheSingleton().handle : nullptr;
}

Handle MakeDatabase()
{
    auto database = std::make_unique<RapidFindDB>();
    {
        const std::lock_guard lock(TheSingleton().mutex);
        ++TheSingleton().open;
    }
    const auto close = [](const RapidFindDB* closing) {
        delete closing;
        {
            const std::lock_guard lock(TheSingleton().mutex);
            --TheSingleton().open;
        }
        TheSingleton().closed.notify_all();
    };
    // The count goes down in the deleter, also when no memory is left for the handle's own block.
    return Handle(database.release(), close);
}

Handle ExchangeDatabase(Handle handle)
{
    const std::lock_guard lock(TheSingleton().mutex);
    // Only a closing ends a session: two managers that are alive at one time share it.
    TheSingleton().session += handle ? 0U : 1U;
    return std::exchange(TheSingleton().handle, std::move(handle));
}

// Until no call is left in a database that was replaced or closed: what it still writes into the same file must come
// before what the new one writes. Such a call was interrupted and soon ends.
void AwaitEarlierDatabases()
{
    Singleton& singleton = TheSingleton();
    std::unique_lock lock(singleton.mutex);
    singleton.closed.wait_for(lock, kCloseTimeout, [&] { return singleton.open <= 1; });
}

// One table for names and tags alike: a term may stand in either.
const std::vector<orvcore::UTF16String>& Tables()
{
    static orvcore::NoDestructor<std::vector<orvcore::UTF16String>> tables(1U, u"nametable");
    return *tables;
}

// In steps of SQLite. 0 switches the handler off, and with it the interruption of running calls: opening the index
// again then waits up to two seconds for them.
int ProgressInterval()
{
    const std::int64_t interval = orvcore::DebugSettings::GetInt("ORV.graphicfindinterval", 50000);
    return static_cast<int>(std::clamp<std::int64_t>(interval, 0, std::numeric_limits<int>::max()));
}

// Runs `operation` on the database, if there is one. Searching is a convenience: whatever goes wrong in it (memory
// running out, say) ends the operation and not the host.
template <class Operation>
void OnDatabase(std::optional<std::uint64_t> session, Operation&& operation) noexcept
{
    try {
        if (const Handle database = TheDatabase(session)) {
            operation(*database);
        }
    } catch (...) {
    }
}

void Release(const Handle& handle) noexcept
{
    if (handle) {
        handle->Interrupt();
    }
}

// @return why the database is of no use, kOk when it is
int Prepare(RapidFindDB& database, const orvcore::UTF16String& path)
{
    if (database.Open(path) < 0) {
        return database.GetSQLiteErrorCode();
    }
    // The index is a cache: what a crash of the system loses, the next listing finds again.
    database.SetSynchronousMode(false);
    database.RegisterSQLiteProgressHandler(ProgressInterval(), nullptr, nullptr);
    return database.UpdateTable(Tables()) < 0 ? database.GetSQLiteErrorCode() : orvstorage::sqlite::kOk;
}

// Only what a host can tell its user apart; every other code of SQLite counts as one.
SearchIndexState StateOf(int failure)
{
    switch (failure) {
    case orvstorage::sqlite::kOk:
        return SearchIndexState::Open;
    case orvstorage::sqlite::kBusy:
        return SearchIndexState::Locked;
    case orvstorage::sqlite::kReadOnly:
        return SearchIndexState::ReadOnly;
    case orvstorage::sqlite::kCorrupt:
        return SearchIndexState::Damaged;
    case orvstorage::sqlite::kNotADatabase:
        return SearchIndexState::NotAnIndex;
    default:
        return SearchIndexState::Unavailable;
    }
}

void Insert(std::optional<std::uint64_t> session, const orvcore::UTF8String& path,
            const orvcore::UTF8String& text) noexcept
{
    if (path.empty() || text.empty()) {
        return;
    }
    OnDatabase(session, [&](RapidFindDB& database) {
        // Insert and Clear must make the key in the same way, or a row could not be removed.
        const auto key = orvmetadatadb::FixEscapeSequences(orvcore::PathTextToUTF16(path));
        database.InsertRow(key, {orvcore::ToUTF16(text)});
    });
}

void ClearPaths(std::optional<std::uint64_t> session, const std::vector<orvcore::UTF8String>& paths) noexcept
{
    OnDatabase(session, [&](RapidFindDB& database) {
        if (paths.empty()) {
            // A file that was of no use when it was opened is empty and sound after this, so that failure no longer
            // holds.
            database.DeleteTable();
            if (database.UpdateTable(Tables()) >= 0) {
                NoteOpenFailure(orvstorage::sqlite::kOk);
            }
        }
        for (const orvcore::UTF8String& path : paths) {
            database.DeleteRow(orvmetadatadb::FixEscapeSequences(orvcore::PathTextToUTF16(path)));
        }
    });
}

} // namespace

namespace detail {

IndexSession::IndexSession()
    : number_(ThisSession())
{
}

void IndexSession::InsertRow(const orvcore::UTF8String& path, const orvcore::UTF8String& text) const
{
    Insert(number_, path, text);
}

void IndexSession::Clear(const std::vector<orvcore::UTF8String>& paths) const
{
    ClearPaths(number_, paths);
}

} // namespace detail

void InitializeRapidFindDB(const orvcore::UTF16String& path)
{
    static orvcore::NoDestructor<std::mutex> opening; // two at once would wait for each other's new database
    try {
        const std::lock_guard one(*opening);
        // The new handle takes the old one's place before it is opened, so that no new call gets into the old one. A
        // call in between finds a database that is not open yet and finds nothing.
        const Handle database = MakeDatabase();
        Release(ExchangeDatabase(database));
        AwaitEarlierDatabases();
        NoteOpenFailure(Prepare(*database, path));
    } catch (...) {
    }
}

SearchIndexStatus GetSearchIndexStatus()
{
    Handle database;
    int failure = orvstorage::sqlite::kOk;
    {
        const std::lock_guard lock(TheSingleton().mutex);
        database = TheSingleton().handle;
        failure = TheSingleton().openFailure;
    }
    if (!database) {
        return {};
    }
    // The failure of the opening goes first: an index that was never open has written nothing.
    return {StateOf(failure != orvstorage::sqlite::kOk ? failure : database->GetWriteFailure()),
            database->WasSetAside()};
}

void InsertRow(const orvcore::UTF8String& path, const orvcore::UTF8String& text)
{
    Insert(std::nullopt, path, text);
}

void QueryRapidFindDB(const std::vector<orvcore::UTF16String>& terms, std::set<orvcore::UTF16String>& matches)
{
    if (terms.empty()) {
        return;
    }
    OnDatabase(std::nullopt, [&](RapidFindDB& database) {
        std::vector<orvmetadatadb::MatchCondition> conditions;
        conditions.reserve(terms.size());
        for (const orvcore::UTF16String& term : terms) {
            conditions.push_back({term, Tables(), {orvmetadatadb::MatchCondition::kContains}});
        }
        std::vector<orvcore::UTF16String> keys;
        database.Match(conditions, orvmetadatadb::kMatchAll, keys); // none after a failure
        // The keys come in the set's order, so that each finds its place at once.
        for (orvcore::UTF16String& key : keys) {
            matches.insert(matches.end(), std::move(key));
        }
    });
}

void GetTags(const orvcore::UTF16String& prefix, std::set<orvcore::UTF16String>& tags)
{
    OnDatabase(std::nullopt, [&](RapidFindDB& database) {
        std::vector<orvmetadatadb::SimilarItem> items;
        database.GetSimilarList(prefix, kMostTags, Tables(), items, 0); // none after a failure
        for (const orvmetadatadb::SimilarItem& item : items) {
            if (!item.text.empty()) {
                tags.insert(orvcore::ToLowerCase(item.text));
            }
        }
    });
}

void ClearRapidFindDB(const std::vector<orvcore::UTF8String>& paths)
{
    ClearPaths(std::nullopt, paths);
}

void TerminateRapidFindDB()
{
    try {
        Release(ExchangeDatabase(nullptr));
    } catch (...) {
    }
}

} // namespace orvcapsule
