#include "UserMessages.h"

#include "Strings.h"

#include <QMutex>

#include <sqlite3.h>

namespace norvella {

namespace {
struct MessageState
{
    QMutex mutex;
    UserMessages::Listener listener;
    QStringList waiting;
};

MessageState &state()
{
    static MessageState s;
    return s;
}
} // namespace

void UserMessages::post(const QString &text)
{
    if (text.isEmpty())
        return;
    MessageState &s = state();
    Listener listener;
    {
        QMutexLocker lock(&s.mutex);
        if (!s.listener) {
            s.waiting << text;
            return;
        }
        listener = s.listener;
    }
    // Outside the lock: the listener may post again.
    listener(text);
}

void UserMessages::setListener(Listener listener)
{
    MessageState &s = state();
    QStringList waiting;
    {
        QMutexLocker lock(&s.mutex);
        s.listener = listener;
        if (listener)
            waiting.swap(s.waiting);
    }
    for (const QString &text : std::as_const(waiting))
        listener(text);
}

QStringList UserMessages::pending()
{
    MessageState &s = state();
    QMutexLocker lock(&s.mutex);
    return s.waiting;
}

QString UserMessages::saveFailureText(int sqliteCode)
{
    switch (sqliteCode & 0xff) {
    case SQLITE_FULL:
        return Strings::text(QStringLiteral("common.save_failed.full"));
    case SQLITE_READONLY:
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
    case SQLITE_AUTH:
        return Strings::text(QStringLiteral("common.save_failed.readonly"));
    default:
        return Strings::text(QStringLiteral("common.save_failed"));
    }
}

} // namespace norvella
