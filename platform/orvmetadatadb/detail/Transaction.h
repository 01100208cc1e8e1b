#pragma once

#include <orvmetadatadb/detail/Connection.h>

namespace orvmetadatadb::detail {

/// A writing transaction that is rolled back unless it was committed; the roll-back never throws.
class Transaction {
public:
    /// Begins it, keeping other writers out at once. Throws SQLiteError.
    explicit Transaction(Connection& connection);
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
