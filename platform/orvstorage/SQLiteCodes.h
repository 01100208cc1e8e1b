#pragma once

/// The result codes of SQLite that callers of the storage libraries tell apart. The values are SQLite's own, so that a
/// code read from `RapidFindDB::GetSQLiteErrorCode` compares directly.
namespace orvstorage::sqlite {

inline constexpr int kOk = 0;
inline constexpr int kBusy = 5;          ///< another connection holds the lock
inline constexpr int kReadOnly = 8;      ///< the file cannot be written
inline constexpr int kInterrupted = 9;   ///< the progress handler ended the operation
inline constexpr int kIOError = 10;      ///< the system refused to read or write
inline constexpr int kCorrupt = 11;      ///< the file's content is damaged
inline constexpr int kFull = 13;         ///< no space is left
inline constexpr int kCannotOpen = 14;   ///< the file cannot be opened or created
inline constexpr int kNotADatabase = 26; ///< the file is something else

} // namespace orvstorage::sqlite
