#include <orvmetadatadb/detail/Transaction.h>

#include <sqlite3.h>

namespace orvmetadatadb::detail {

Transaction::Transaction(Connection& connection)
    : connection_(connection)
{
    connection.Execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction()
{
    if (open_) {
        sqlite3_exec(connection_.Handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void Transaction::Commit()
{
    connection_.Execute("COMMIT");
    open_ = false;
}

} // namespace orvmetadatadb::detail
