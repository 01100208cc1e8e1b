#pragma once

#include <orvcore/text/Strings.h>

#include <atomic>
#include <exception>

struct sqlite3;

namespace orvmetadatadb::detail {

/// A refusal by SQLite; `Code` is its primary result code.
class SQLiteError : public std::exception {
public:
    explicit SQLiteError(int code) noexcept
        : code_(code)
    {
    }
    int Code() const noexcept
    {
        return code_;
    }
    const char* what() const noexcept override
    {
        return "SQLite refused an operation";
    }

private:
    int code_;
};

/// One connection to one database file. Not thread-safe, but for `Interrupt`.
class Connection {
public:
    using ProgressCallback = int (*)(void*);

    Connection() = default;
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Opens or creates the file, closing what was open. Throws SQLiteError.
    void Open(const orvcore::UTF16String& path);
    void Close() noexcept;
    bool IsOpen() const noexcept
    {
        return handle_ != nullptr;
    }

    /// Throws SQLiteError unless `result` is success, a row or the end of the rows.
    static void Check(int result);
    /// Runs statements that give no rows. Throws SQLiteError.
    void Execute(const char* sql);
    /// How long an operation waits for another connection's lock.
    void SetBusyTimeout(int milliseconds) noexcept;

    /// Asks every `interval` SQLite steps whether to go on; an interval below 1 asks never. `callback` may be null.
    void SetProgressHandler(int interval, ProgressCallback callback, void* context) noexcept;
    /// Ends the running statement at the next question, and every later one. From any thread.
    void Interrupt() noexcept
    {
        interrupted_.store(true, std::memory_order_relaxed);
    }
    bool IsInterrupted() const noexcept
    {
        return interrupted_.load(std::memory_order_relaxed);
    }

    sqlite3* Handle() const noexcept
    {
        return handle_;
    }

private:
    static int OnProgress(void* self);

    sqlite3* handle_ = nullptr;
    int interval_ = 0;
    ProgressCallback callback_ = nullptr;
    void* context_ = nullptr;
    std::atomic<bool> interrupted_ = false;
};

} // namespace orvmetadatadb::detail
