#pragma once

#include <orvcore/Export.h>
#include <orvcore/ResultCode.h>
#include <orvcore/text/Strings.h>
#include <orvmetadatadb/MatchCondition.h>

#include <memory>
#include <vector>

namespace orvmetadatadb {

/// What an operation answers.
using orvcore::ResultCode;

inline constexpr ResultCode kSuccess = 0;
/// The row to insert is there already: nothing had to be done. Negative, but no failure.
inline constexpr ResultCode kRowExists = static_cast<ResultCode>(0xA00F0007);
/// The call does not fit the object: no file is open, no table is in use, or an argument is out of range.
inline constexpr ResultCode kBadCall = static_cast<ResultCode>(0xA00F0101);
/// SQLite refused; `GetSQLiteErrorCode` says why.
inline constexpr ResultCode kStorageFailed = static_cast<ResultCode>(0xA00F0102);

/// Where the last failure came from.
enum class DBErrorCode : int {
    None = 0,    ///< nothing has failed
    Call = 1,    ///< the caller's: `kBadCall`
    Storage = 2, ///< SQLite's: `GetSQLiteErrorCode` tells which
};

/// A search index over rows (key, text) in one database file: finds the keys of the texts that contain a term, in any
/// script and ignoring case, accents and width, and the texts that begin like what a user has typed.
///
/// Terms and texts are compared after `orvcore::FoldText`: "okland" finds "Økland", "ＡＢＣ" finds "abc", and a single
/// letter or a two-letter Chinese word finds every text that holds it. No character has a special meaning. Only the
/// first 4,096 code units of a text are searched.
///
/// All searches run in memory, which is filled from the file by the first operation that needs it (about half a second
/// for half a million rows) and follows it from then on. Rows are written in groups of 64; a search sees every earlier
/// insert and deletion of its own object at once, and those of other objects and processes on the same file as soon as
/// their group is written. The last group is written by the next search, or when the object is destroyed; that waits at
/// most 10 ms for a lock held elsewhere, and gives up what it cannot write.
///
/// The file is a cache. One that is damaged beyond use, or of another version, is renamed to the same name with
/// ".damaged" appended and replaced by an empty one: by `Open` when that shows on opening, else by `DeleteTable`. A
/// file that was never a search index is left as it is, and cannot be opened.
///
/// Thread-safe: calls on one object run one at a time. Nothing is thrown but `std::bad_alloc` and `std::length_error`.
class ORVPLATFORM_API RapidFindDB {
public:
    /// Asked during long operations; anything but 0 ends the operation with `orvstorage::sqlite::kInterrupted`. Rows
    /// that were being written then are written later.
    using ProgressCallback = int (*)(void* context);

    RapidFindDB();
    /// Writes what is not written yet and closes the file.
    ~RapidFindDB();
    RapidFindDB(const RapidFindDB&) = delete;
    RapidFindDB& operator=(const RapidFindDB&) = delete;

    /// Opens or creates the file at `path`; its folder must exist. A file already open is closed. Waits at most half a
    /// second for a file that another process has locked.
    ResultCode Open(const orvcore::UTF16String& path);

    /// True (the default): the file is whole after a power failure, though the last groups may be missing. False:
    /// writing does not wait for the disk, and a power failure may damage the file. A crash of the process never does.
    ResultCode SetSynchronousMode(bool synchronous);

    /// Calls `callback` (may be null) every `interval` SQLite steps; a call of `Interrupt` is noticed at the same time.
    /// An interval below 1 ends both. The callback runs on the thread of the operation and must not call this object.
    ResultCode RegisterSQLiteProgressHandler(int interval, ProgressCallback callback, void* context);

    /// Takes the named table into use, creating it if it is missing. The list holds one name; rows, deletions and
    /// searches go to this table from now on.
    ResultCode UpdateTable(const std::vector<orvcore::UTF16String>& tables);

    /// Adds the row (key, values[0]). `values` holds one text, for the one table. Rows are written in groups: a failure
    /// to write concerns the whole group that this row completes. After a failure other than a lock held elsewhere or
    /// an interrupt the index takes no more rows until `DeleteTable` or `Open`; searches go on with the rows it has.
    /// @return kSuccess, kRowExists or a failure; an empty key or text is kBadCall
    ResultCode InsertRow(const orvcore::UTF16String& key, const std::vector<orvcore::UTF16String>& values);

    /// Removes all rows of `key`, which need not have any.
    ResultCode DeleteRow(const orvcore::UTF16String& key);

    /// Removes the table in use with all its rows; `UpdateTable` selects one again. No search finds the rows from then
    /// on, even if the file cannot be written: while another process locks it, the removal waits as inserts do, and
    /// after another failure until a new call or the end of the object. It also repairs a damaged file, see above. (In
    /// the file an empty table stays, so that no other process finds it missing.)
    ResultCode DeleteTable();

    /// Sets `keys` to the keys that fulfil the conditions combined by `matchOperator` (a MatchOperator), without
    /// duplicates, in order of code units. A term that is empty, or folds to nothing, holds for every key; white space
    /// is a character like others; without conditions there are no keys. On failure `keys` is empty.
    ResultCode Match(const std::vector<MatchCondition>& conditions, int matchOperator,
                     std::vector<orvcore::UTF16String>& keys);

    /// Sets `items` to the first `count` texts with a word that begins with `text`: those that begin with it as a whole
    /// before others, then shorter ones, then in order of code units. An empty text is the beginning of every text.
    /// Each text comes once, as it was inserted. `mode` is 0. On failure `items` is empty.
    ResultCode GetSimilarList(const orvcore::UTF16String& text, int count,
                              const std::vector<orvcore::UTF16String>& tables, std::vector<SimilarItem>& items,
                              int mode);

    /// Ends the running operation, and every later one, when the progress handler is called next. From any thread; does
    /// not wait.
    void Interrupt() noexcept;

    /// Of the last operation that failed, on whatever thread.
    DBErrorCode GetDBErrorCode() const;
    /// One of `orvstorage::sqlite`'s codes, or another primary result code of SQLite; kOk when the last failure was not
    /// SQLite's.
    int GetSQLiteErrorCode() const;

    /// Why rows are not written any more: one of the same codes; kOk while they are.
    int GetWriteFailure() const;
    /// Whether the file that was found was renamed (".damaged") and replaced by an empty one, since `Open`.
    bool WasSetAside() const;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace orvmetadatadb
