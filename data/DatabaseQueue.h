#pragma once

#include "Database.h"

#include <functional>

namespace norvella {

// The single serial access path to the working database. Turns run
// synchronously on the caller's thread, one at a time; a turn that closes
// the connection gets it reopened at the start of the next turn.
class DatabaseQueue
{
public:
    explicit DatabaseQueue(const QString &path);

    const QString &path() const { return m_database.path(); }
    void inDatabase(const std::function<void(Database &)> &block);
    // Whether the file could be opened on the last turn.
    bool isUsable();

private:
    Database m_database;
    bool m_inTurn = false;
};

} // namespace norvella
