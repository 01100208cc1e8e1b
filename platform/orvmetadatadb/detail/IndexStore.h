#pragma once

#include <orvcore/text/Strings.h>
#include <orvmetadatadb/detail/IndexFile.h>
#include <orvmetadatadb/detail/MemoryIndex.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvmetadatadb::detail {

/// The index: its rows in memory, where searches run, and in the database file, from which memory is filled and to
/// which changes are written in groups. Operations throw SQLiteError. Not thread-safe, but for `Interrupt`.
///
/// The file is a list of changes, to which every process on it adds (IndexFile). Memory is what that list makes as far
/// as it has been read, with this object's own changes applied that are not in it yet. Before those are written, and
/// before a search, what others have added is read; then the own ones are applied once more, because they will come
/// last in the file. Applying a change twice does no harm: a row exists once, and what counts for a key is what follows
/// its last removal. So neither a write that failed nor another writer brings memory and file apart.
class IndexStore {
public:
    IndexStore() = default;
    ~IndexStore();
    IndexStore(const IndexStore&) = delete;
    IndexStore& operator=(const IndexStore&) = delete;

    /// Opens or creates the file; one that is damaged beyond use or of another version is set aside and made anew.
    void Open(const orvcore::UTF16String& path);
    bool IsOpen() const noexcept
    {
        return file_.GetConnection().IsOpen();
    }
    void SetSynchronous(bool synchronous);
    void SetProgressHandler(int interval, Connection::ProgressCallback callback, void* context);
    void Interrupt() noexcept
    {
        file_.GetConnection().Interrupt();
    }

    void UseTable(const orvcore::UTF16String& table);
    bool HasTable() const noexcept
    {
        return isTableInUse_;
    }
    /// The table that was taken into use last.
    const orvcore::UTF16String& Table() const noexcept
    {
        return table_;
    }
    /// Removes all rows; the table must then be taken into use again. While another process keeps the file, the removal
    /// waits like any other change. A damaged file is replaced.
    void RemoveTable();

    /// False when the row is there already. An error in writing a group concerns rows given earlier too.
    bool Insert(std::u16string_view key, std::u16string_view text);
    void Delete(std::u16string_view key);

    std::vector<orvcore::UTF16String> Match(const std::vector<orvcore::UTF8String>& terms);
    std::vector<orvcore::UTF16String> Similar(const orvcore::UTF8String& start, std::size_t count);

private:
    /// As many changes are written in one transaction: fewer cost time, more are unknown to other processes for longer.
    static constexpr std::size_t kGroupSize = 64;

    struct Change {
        enum class Kind { Add, RemoveKey, RemoveAll };
        Kind kind;
        orvcore::UTF16String key;
        orvcore::UTF16String text;
    };

    void OpenOrReplace();
    void Replace();
    void ApplySynchronous();
    void Forget() noexcept;

    void PrepareChange();
    void Note(Change change);
    void SaveLast() noexcept;
    void SaveIfFree();
    void Save();
    std::int64_t WriteChanges(std::int64_t last);
    std::int64_t WriteAnew(std::int64_t last);
    bool IsWorthWritingAnew(std::int64_t last);
    /// It is the first of what is pending then.
    bool IsRemovalPending() const noexcept
    {
        return !pending_.empty() && pending_.front().kind == Change::Kind::RemoveAll;
    }

    void Refresh();
    /// Reads what the file has beyond what was read.
    void CatchUp();
    void ReadChanges();
    void Apply(const Change& change);

    orvcore::UTF16String path_;
    IndexFile file_;
    bool isSynchronous_ = true;
    orvcore::UTF16String table_;
    bool isTableInUse_ = false;

    MemoryIndex memory_;
    std::int64_t lastRead_ = 0;    ///< the number of the last change in the file that memory has
    orvcore::UTF16String lastKey_; ///< of that change, for a reading that was ended between two of one key
    std::vector<Change> pending_;  ///< not written yet
    std::size_t saveAt_ = kGroupSize;
    int failure_ = 0; ///< why nothing more is written; 0: nothing failed
};

} // namespace orvmetadatadb::detail
