#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>

namespace norvella {

// Hands a quick action from a newly started process to the instance that is
// already running, so a desktop action never opens a second window.
class ShortcutChannel : public QObject
{
    Q_OBJECT
public:
    explicit ShortcutChannel(QObject *parent = nullptr);

    static QString defaultServerName();
    // True when a running instance took the action.
    static bool forward(const QString &serverName, const QString &type, int timeoutMs = 1500);
    bool listen(const QString &serverName);
    QString serverName() const { return m_server.serverName(); }

signals:
    void shortcutReceived(const QString &type);

private:
    void acceptConnections();

    QLocalServer m_server;
};

// Desktop actions may name the short form ("search"); the app speaks in the
// full quick-action types.
QString normalisedShortcutType(const QString &type);

} // namespace norvella
