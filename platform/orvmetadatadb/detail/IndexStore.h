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
/// The file is a list of changes (IndexFile) to which every process appends. Memory is the result of the changes read
/// so far, followed by this object's own changes that are not written yet (`pending_`). Before a search and before a
/// write, new changes of other processes are read; the pending ones are then applied once more, because they will come
/// after those in the file. To apply a change twice is harmless: a row exists once, and only what follows the last
/// removal of a key counts. So memory and file agree even after a failed write or with other writers.
class IndexStore {
public:
    IndexStore() = default;
    ~IndexStore();
    IndexStore(const IndexStore&) = delete;
    IndexStore& operator=(const IndexStore&) = delete;

    /// Opens or creates the file; one that is damaged beyond use or of another version is renamed and replaced by an
    /// empty one.
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
    /// The table that was selected last.
    const orvcore::UTF16String& Table() const noexcept
    {
        return table_;
    }
    /// Removes all rows; a table must then be selected again. While another process locks the file, the removal waits
    /// like any other change. A damaged file is replaced.
    void RemoveTable();

    /// False when the row exists already. An error in writing a group may concern earlier rows, too.
    bool Insert(std::u16string_view key, std::u16string_view text);
    void Delete(std::u16string_view key);

    std::vector<orvcore::UTF16String> Match(const std::vector<orvcore::UTF8String>& terms);
    std::vector<orvcore::UTF16String> Similar(const orvcore::UTF8String& start, std::size_t count);

    /// Why nothing more is written: SQLite's code; 0 while that goes well.
    int WriteFailure() const noexcept
    {
        return failure_;
    }
    /// Whether the file that was found was renamed, since it was opened.
    bool WasSetAside() const noexcept
    {
        return wasSetAside_;
    }

private:
    /// How many changes one transaction writes. A smaller group costs more time per row; with a larger one other
    /// processes see changes later.
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
    /// A removal of all rows drops what was pending before it, so it can only be the first pending change.
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
    bool wasSetAside_ = false;
};

} // namespace orvmetadatadb::detail
