#include <orvmetadatadb/detail/Transaction.h>

#include <sqlite3.h>

namespace orvmetadatadb::detail {

Transaction::Transaction(Connection& connection, Kind kind)
    : m_connection(connection)
{
    connection.Execute(kind == Kind::Write ? "BEGIN IMMEDIATE" : "BEGIN");
}

Transaction::~Transaction()
{
    if (m_open) {
        sqlite3_exec(m_connection.Handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void Transaction::Commit()
{
    m_connection.Execute("COMMIT");
    m_open = false;
}

} // namespace orvmetadatadb::detail
