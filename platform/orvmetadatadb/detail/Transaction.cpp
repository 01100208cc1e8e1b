#include <orvmetadatadb/detail/Transaction.h>

#include <sqlite3.h>

namespace orvmetadatadb::detail {

Transaction::Transaction(Connection& connection)
    : connection_(connection)
{
    // With the write lock from the start. Asked for only at the first write, it is refused when another process has
    // written since the first read, and the work up to then is lost.
    connection.Execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction()
{
    // After some errors SQLite has rolled back by itself; that it then refuses this one does no harm.
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
