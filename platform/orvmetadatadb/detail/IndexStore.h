#pragma once

#include <orvcore/text/Strings.h>
#include <orvmetadatadb/detail/IndexFile.h>
#include <orvmetadatadb/detail/MemoryIndex.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace orvmetadatadb::detail {

/// The index: its rows in memory, where searches run, and in the database file, from which memory is filled and to
/// which changes are written in groups. Operations throw SQLiteError. Not thread-safe, but for `Interrupt`.
///
/// Memory holds what the file held when it was last read, and the changes not yet written. Before a search, and within
/// the transaction that writes a group, what other connections have written meanwhile is read in.
class IndexStore {
public:
    IndexStore() = default;
    ~IndexStore();
    IndexStore(const IndexStore&) = delete;
    IndexStore& operator=(const IndexStore&) = delete;

    /// Opens or creates the file; one that is damaged beyond use or of another version is set aside and made anew.
    void Open(const orvcore::UTF16String& path);
    void SetSynchronous(bool synchronous);
    void SetProgressHandler(int interval, Connection::ProgressCallback callback, void* context);
    void Interrupt() noexcept
    {
        file_.GetConnection().Interrupt();
    }

    void UseTable(const orvcore::UTF16String& table);
    bool HasTable() const noexcept
    {
        return file_.HasTable();
    }
    /// Removes all rows; the table must then be taken into use again. A damaged file is replaced.
    void RemoveTable();

    /// False when the row is there already. An error in writing a group concerns rows given earlier too.
    bool Insert(std::u16string_view key, std::u16string_view text);
    void Delete(std::u16string_view key);
    std::vector<orvcore::UTF16String> Match(const std::vector<orvcore::UTF8String>& terms);
    std::vector<orvcore::UTF16String> Similar(const orvcore::UTF8String& start, std::size_t count);

    bool IsOpen() const noexcept
    {
        return file_.GetConnection().IsOpen();
    }

private:
    // Measured: a group of this size costs little more for each row than one transaction for all, and the rows that
    // another process does not see yet, or that a crash loses, stay few.
    static constexpr std::size_t kGroupSize = 64;

    static constexpr MemoryIndex::KeyId kNoKey = 0xFFFFFFFFU;

    using KeyOfFileId = std::pair<std::int64_t, MemoryIndex::KeyId>;
    using RowText = std::pair<orvcore::UTF16String, orvcore::UTF16String>;

    void OpenOrReplace();
    void Replace();
    void ApplySynchronous();
    void Forget() noexcept;

    /// Brings memory up to date with the file.
    void Refresh();
    void CatchUp();
    void KeepPendingForReplay();
    void ReplayPending();
    void LoadKeys();
    void LoadRows();
    std::vector<KeyOfFileId>::iterator FindFileId(std::int64_t fileId) noexcept;

    void SaveLast() noexcept;
    void SaveWhenDue();
    void SaveIfFree();
    void Save();
    void WriteDeletions();
    void WriteRows();
    std::size_t PendingCount() const noexcept
    {
        return newRows_.size() + goneKeys_.size();
    }

    orvcore::UTF16String path_;
    IndexFile file_;
    bool synchronous_ = true;
    int failure_ = 0; ///< why nothing more is written; 0: nothing failed

    MemoryIndex memory_;
    bool loaded_ = false;
    std::int64_t dataVersion_ = 0;
    std::int64_t generation_ = 0;
    std::int64_t lastKey_ = 0;
    std::int64_t lastRow_ = 0;
    std::vector<KeyOfFileId> keyOfFileId_; ///< ascending; kNoKey: the key waits for its deletion

    std::vector<MemoryIndex::RowId> newRows_;
    /// Keys to delete, each with its number in the file as far as that is known, otherwise 0. What the file holds of
    /// them is not read in any more.
    std::map<orvcore::UTF16String, std::int64_t, std::less<>> goneKeys_;
    std::size_t saveAt_ = kGroupSize;
    std::vector<RowText> replayRows_;
};

} // namespace orvmetadatadb::detail
