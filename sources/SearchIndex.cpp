#include <sources/SearchIndex.h>

#include <orvcore/DebugSettings.h>
#include <orvcore/TextFold.h>
#include <orvmetadatadb/EscapeSequences.h>
#include <orvmetadatadb/RapidFindDB.h>
#include <orvstorage/SQLiteCodes.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <utility>

namespace orvcapsule {

namespace {

using orvmetadatadb::RapidFindDB;
using Handle = std::shared_ptr<RapidFindDB>;

constexpr int kMostTags = 100;

struct Singleton {
    std::mutex mutex;
    Handle handle;
};

Singleton& TheSingleton()
{
    static Singleton singleton;
    return singleton;
}

// Each call works on a copy: the database closes when the last one goes, never under a running call.
Handle TheDatabase()
{
    const std::lock_guard lock(TheSingleton().mutex);
    return TheSingleton().handle;
}

Handle ExchangeDatabase(Handle handle)
{
    const std::lock_guard lock(TheSingleton().mutex);
    return std::exchange(TheSingleton().handle, std::move(handle));
}

const std::vector<orvcore::UTF16String>& Tables()
{
    static const std::vector<orvcore::UTF16String> tables = {u"nametable"};
    return tables;
}

int ProgressInterval()
{
    const std::int64_t interval = orvcore::DebugSettings::GetInt("ORV.graphicfindinterval", 50000);
    return static_cast<int>(std::clamp<std::int64_t>(interval, 0, std::numeric_limits<int>::max()));
}

bool Succeeded(orvmetadatadb::ResultCode code) noexcept
{
    return code >= 0 || code == orvmetadatadb::kRowExists;
}

enum class Health { Healthy, Damaged };

Health CheckHealth(const RapidFindDB& database, bool succeeded)
{
    const bool damaged = !succeeded && database.GetDBErrorCode() == orvmetadatadb::DBErrorCode::Storage &&
                         database.GetSQLiteErrorCode() == orvstorage::sqlite::kCorrupt;
    return damaged ? Health::Damaged : Health::Healthy;
}

// Runs `operation` on the database, if there is one. Searching is a convenience: whatever goes wrong in it (memory
// running out, say) ends the operation and not the host.
template <class Operation>
void OnDatabase(Operation&& operation) noexcept
{
    try {
        if (const Handle database = TheDatabase()) {
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

void Prepare(RapidFindDB& database, const orvcore::UTF16String& path)
{
    const bool opened = Succeeded(database.Open(path));
    if (!opened || CheckHealth(database, opened) == Health::Damaged) {
        return;
    }
    database.SetSynchronousMode(false);
    database.RegisterSQLiteProgressHandler(ProgressInterval(), nullptr, nullptr);
    database.UpdateTable(Tables());
}

} // namespace

void InitializeRapidFindDB(const orvcore::UTF16String& path)
{
    try {
        auto database = std::make_shared<RapidFindDB>();
        Release(ExchangeDatabase(database));
        Prepare(*database, path);
    } catch (...) {
    }
}

void InsertRow(const orvcore::UTF8String& path, const orvcore::UTF8String& text)
{
    if (path.empty() || text.empty()) {
        return;
    }
    OnDatabase([&](RapidFindDB& database) {
        const auto key = orvmetadatadb::FixEscapeSequences(orvcore::ToUTF16(path));
        const bool inserted = Succeeded(database.InsertRow(key, {orvcore::ToUTF16(text)}));
        if (!inserted) {
            CheckHealth(database, inserted);
        }
    });
}

void QueryRapidFindDB(const std::vector<orvcore::UTF16String>& terms, std::set<orvcore::UTF16String>& matches)
{
    if (terms.empty()) {
        return;
    }
    OnDatabase([&](RapidFindDB& database) {
        std::vector<orvmetadatadb::MatchCondition> conditions;
        conditions.reserve(terms.size());
        for (const orvcore::UTF16String& term : terms) {
            conditions.push_back({term, Tables(), {orvmetadatadb::MatchCondition::kContains}});
        }
        std::vector<orvcore::UTF16String> keys;
        const bool matched = Succeeded(database.Match(conditions, orvmetadatadb::kMatchAll, keys));
        if (CheckHealth(database, matched) == Health::Damaged) {
            return;
        }
        // The keys come in the set's order, so that each finds its place at once.
        for (orvcore::UTF16String& key : keys) {
            matches.insert(matches.end(), std::move(key));
        }
    });
}

void GetTags(const orvcore::UTF16String& prefix, std::set<orvcore::UTF16String>& tags)
{
    OnDatabase([&](RapidFindDB& database) {
        std::vector<orvmetadatadb::SimilarItem> items;
        const bool found = Succeeded(database.GetSimilarList(prefix, kMostTags, Tables(), items, 0));
        for (const orvmetadatadb::SimilarItem& item : items) {
            if (!item.text.empty()) {
                tags.insert(orvcore::ToLowerCase(item.text));
            }
        }
        CheckHealth(database, found);
    });
}

void ClearRapidFindDB(const std::vector<orvcore::UTF8String>& paths)
{
    OnDatabase([&](RapidFindDB& database) {
        if (paths.empty()) {
            database.DeleteTable();
            database.UpdateTable(Tables());
        }
        for (const orvcore::UTF8String& path : paths) {
            database.DeleteRow(orvmetadatadb::FixEscapeSequences(orvcore::ToUTF16(path)));
        }
    });
}

void TerminateRapidFindDB()
{
    try {
        Release(ExchangeDatabase(nullptr));
    } catch (...) {
    }
}

} // namespace orvcapsule
