#include <orvmetadatadb/RapidFindDB.h>

#include <orvcore/text/shared/TextFold.h>
#include <orvmetadatadb/detail/IndexStore.h>
#include <orvstorage/SQLiteCodes.h>

#include <algorithm>
#include <mutex>
#include <string_view>

// The lock of the index and the translation of failures; what the operations do is IndexStore's. One mutex serialises
// all calls of an object, because one connection of SQLite is for one thread at a time and memory is changed by
// searches, too (they read what other processes have written). Interrupt alone goes past the lock: it must reach a call
// that holds it.

namespace orvmetadatadb {

namespace {

// A bound for what one hostile package can put into the text that every search goes through.
constexpr std::size_t kSearchedUnits = 4096;

bool IsOnly(const orvcore::UTF16String& table, const std::vector<orvcore::UTF16String>& tables)
{
    return tables.size() == 1 && tables[0] == table;
}

std::u16string_view Searched(std::u16string_view text) noexcept
{
    if (text.size() > kSearchedUnits) {
        // The cut parts no surrogate pair.
        const char16_t last = text[kSearchedUnits - 1];
        text = text.substr(0, last >= 0xD800 && last <= 0xDBFF ? kSearchedUnits - 1 : kSearchedUnits);
    }
    return text;
}

} // namespace

class RapidFindDB::Impl {
public:
    /// Runs `operation` on the store under the lock, turning its refusal into a result code.
    template <class Operation>
    ResultCode Run(Operation&& operation)
    {
        const std::lock_guard lock(mutex_);
        try {
            return operation(store_);
        } catch (const detail::SQLiteError& error) {
            error_ = DBErrorCode::Storage;
            sqliteError_ = error.Code();
            return kStorageFailed;
        }
    }

    /// The same for an operation that needs the file or the table, and whose arguments are `valid`.
    template <class Operation>
    ResultCode RunOpen(bool valid, Operation&& operation)
    {
        return Run([&](detail::IndexStore& store) { return valid && store.IsOpen() ? operation(store) : Refuse(); });
    }
    template <class Operation>
    ResultCode RunOnTable(bool valid, Operation&& operation)
    {
        return RunOnTable(
            valid, [](const auto&) { return true; }, operation);
    }
    /// The same for one that is meant for certain tables: `isMeant` judges the one in use under the same lock, so no
    /// other can take its place before `operation`.
    template <class Judge, class Operation>
    ResultCode RunOnTable(bool valid, Judge&& isMeant, Operation&& operation)
    {
        return Run([&](detail::IndexStore& store) {
            return valid && store.HasTable() && isMeant(store.Table()) ? operation(store) : Refuse();
        });
    }

    void Interrupt() noexcept
    {
        store_.Interrupt();
    }

    DBErrorCode Error() const
    {
        const std::lock_guard lock(mutex_);
        return error_;
    }
    int SQLiteErrorCode() const
    {
        const std::lock_guard lock(mutex_);
        return sqliteError_;
    }
    int WriteFailure() const
    {
        const std::lock_guard lock(mutex_);
        return store_.WriteFailure();
    }
    bool WasSetAside() const
    {
        const std::lock_guard lock(mutex_);
        return store_.WasSetAside();
    }

private:
    // The codes stay until the next failure: a caller asks for them after it was refused.
    ResultCode Refuse() noexcept
    {
        error_ = DBErrorCode::Call;
        sqliteError_ = orvstorage::sqlite::kOk;
        return kBadCall;
    }

    mutable std::mutex mutex_;
    detail::IndexStore store_;
    DBErrorCode error_ = DBErrorCode::None;
    int sqliteError_ = orvstorage::sqlite::kOk;
};

RapidFindDB::RapidFindDB()
    : impl_(std::make_unique<Impl>())
{
}

RapidFindDB::~RapidFindDB() = default;

ResultCode RapidFindDB::Open(const orvcore::UTF16String& path)
{
    return impl_->Run([&](detail::IndexStore& store) {
        store.Open(path);
        return kSuccess;
    });
}

ResultCode RapidFindDB::SetSynchronousMode(bool synchronous)
{
    return impl_->RunOpen(true, [&](detail::IndexStore& store) {
        store.SetSynchronous(synchronous);
        return kSuccess;
    });
}

ResultCode RapidFindDB::RegisterSQLiteProgressHandler(int interval, ProgressCallback callback, void* context)
{
    return impl_->RunOpen(true, [&](detail::IndexStore& store) {
        store.SetProgressHandler(interval, callback, context);
        return kSuccess;
    });
}

ResultCode RapidFindDB::UpdateTable(const std::vector<orvcore::UTF16String>& tables)
{
    const bool valid = tables.size() == 1 && !tables[0].empty();
    return impl_->RunOpen(valid, [&](detail::IndexStore& store) {
        store.UseTable(tables[0]);
        return kSuccess;
    });
}

ResultCode RapidFindDB::InsertRow(const orvcore::UTF16String& key, const std::vector<orvcore::UTF16String>& values)
{
    const bool valid = !key.empty() && values.size() == 1 && !values[0].empty();
    return impl_->RunOnTable(valid, [&](detail::IndexStore& store) {
        return store.Insert(key, Searched(values[0])) ? kSuccess : kRowExists;
    });
}

ResultCode RapidFindDB::DeleteRow(const orvcore::UTF16String& key)
{
    return impl_->RunOnTable(true, [&](detail::IndexStore& store) {
        store.Delete(key);
        return kSuccess;
    });
}

ResultCode RapidFindDB::DeleteTable()
{
    return impl_->RunOpen(true, [&](detail::IndexStore& store) {
        store.RemoveTable();
        return kSuccess;
    });
}

ResultCode RapidFindDB::Match(const std::vector<MatchCondition>& conditions, int matchOperator,
                              std::vector<orvcore::UTF16String>& keys)
{
    keys.clear();
    std::vector<orvcore::UTF8String> terms;
    // Terms are folded before the lock is taken: an insert does not wait for that.
    const bool valid =
        matchOperator == kMatchAll && std::all_of(conditions.begin(), conditions.end(), [&](const auto& condition) {
            terms.push_back(orvcore::FoldText(condition.term));
            return condition.modes == std::vector<int>{MatchCondition::kContains};
        });
    const auto isMeant = [&](const orvcore::UTF16String& table) {
        return std::all_of(conditions.begin(), conditions.end(),
                           [&](const auto& condition) { return IsOnly(table, condition.tables); });
    };
    return impl_->RunOnTable(valid, isMeant, [&](detail::IndexStore& store) {
        if (!terms.empty()) {
            keys = store.Match(terms);
        }
        return kSuccess;
    });
}

ResultCode RapidFindDB::GetSimilarList(const orvcore::UTF16String& text, int count,
                                       const std::vector<orvcore::UTF16String>& tables, std::vector<SimilarItem>& items,
                                       int mode)
{
    items.clear();
    const auto isMeant = [&](const orvcore::UTF16String& table) { return IsOnly(table, tables); };
    return impl_->RunOnTable(count >= 0 && mode == 0, isMeant, [&](detail::IndexStore& store) {
        for (auto& similar : store.Similar(orvcore::FoldText(text), static_cast<std::size_t>(count))) {
            items.push_back({std::move(similar)});
        }
        return kSuccess;
    });
}

void RapidFindDB::Interrupt() noexcept
{
    impl_->Interrupt();
}

DBErrorCode RapidFindDB::GetDBErrorCode() const
{
    return impl_->Error();
}

int RapidFindDB::GetSQLiteErrorCode() const
{
    return impl_->SQLiteErrorCode();
}

int RapidFindDB::GetWriteFailure() const
{
    return impl_->WriteFailure();
}

bool RapidFindDB::WasSetAside() const
{
    return impl_->WasSetAside();
}

} // namespace orvmetadatadb
