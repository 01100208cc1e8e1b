#pragma once

#include <orvmetadatadb/detail/Connection.h>

namespace orvmetadatadb::detail {

/// A transaction that is rolled back unless it was committed; the roll-back never throws.
class Transaction {
public:
    enum class Kind { Read, Write };

    /// Begins it: a reader sees one state of the file throughout, a writer keeps other writers out at once. Throws
    /// SQLiteError.
    Transaction(Connection& connection, Kind kind);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    /// Throws SQLiteError; the transaction is then rolled back.
    void Commit();

private:
    Connection& connection_;
    bool open_ = true;
};

} // namespace orvmetadatadb::detail
