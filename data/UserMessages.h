#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace norvella {

// Short notices for the user, such as a change that could not be saved. The
// window shows them one at a time; until it listens they wait, so a notice
// posted during the launch, before there is a window, is not lost.
class UserMessages
{
public:
    using Listener = std::function<void(const QString &text)>;

    // Already-localised text. Any thread; the listener runs on the caller's.
    static void post(const QString &text);
    // From now on every message goes to the listener, the waiting ones first,
    // oldest first. An empty listener makes messages wait again.
    static void setListener(Listener listener);
    // The messages nobody has shown yet.
    static QStringList pending();

    // What the user reads when SQLite refused a write with this result code:
    // a full disk, a database that cannot be written, or anything else.
    static QString saveFailureText(int sqliteCode);
    static void postSaveFailure(int sqliteCode) { post(saveFailureText(sqliteCode)); }
};

} // namespace norvella
