#include "DatabaseQueue.h"

#include <QtGlobal>

namespace norvella {

DatabaseQueue::DatabaseQueue(const QString &path) : m_database(path) {}

void DatabaseQueue::inDatabase(const std::function<void(Database &)> &block)
{
    // A nested turn would let two statements interleave on one connection.
    Q_ASSERT_X(!m_inTurn, "DatabaseQueue::inDatabase", "turns must not nest");
    m_inTurn = true;
    m_database.open();
    block(m_database);
    m_inTurn = false;
}

bool DatabaseQueue::isUsable()
{
    return m_database.open();
}

} // namespace norvella
