#include "ShortcutChannel.h"

#include "CrashLog.h"

#include <QLocalSocket>

namespace norvella {

ShortcutChannel::ShortcutChannel(QObject *parent) : QObject(parent)
{
    connect(&m_server, &QLocalServer::newConnection, this, &ShortcutChannel::acceptConnections);
}

QString ShortcutChannel::defaultServerName()
{
    QString user = qEnvironmentVariable("USER");
    if (user.isEmpty())
        user = QStringLiteral("default");
    return QStringLiteral("norvella-shortcuts-") + user;
}

bool ShortcutChannel::forward(const QString &serverName, const QString &type, int timeoutMs)
{
    QLocalSocket socket;
    socket.connectToServer(serverName);
    if (!socket.waitForConnected(timeoutMs))
        return false;
    socket.write(type.toUtf8() + '\n');
    if (!socket.waitForBytesWritten(timeoutMs))
        return false;
    // The running instance answers once it has taken the action.
    if (!socket.waitForReadyRead(timeoutMs))
        return false;
    return socket.readLine().trimmed() == "ok";
}

bool ShortcutChannel::listen(const QString &serverName)
{
    if (m_server.listen(serverName))
        return true;
    // A crashed instance leaves its socket file behind; nobody answers on it.
    QLocalSocket probe;
    probe.connectToServer(serverName);
    if (probe.waitForConnected(300))
        return false;
    QLocalServer::removeServer(serverName);
    if (m_server.listen(serverName))
        return true;
    CrashLog::log(QStringLiteral("Unable to listen for quick actions on %1: %2").arg(serverName, m_server.errorString()));
    return false;
}

void ShortcutChannel::acceptConnections()
{
    while (QLocalSocket *socket = m_server.nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            if (!socket->canReadLine())
                return;
            const QString type = QString::fromUtf8(socket->readLine().trimmed());
            emit shortcutReceived(type);
            socket->write("ok\n");
            socket->flush();
        });
    }
}

QString normalisedShortcutType(const QString &type)
{
    static const QString prefix = QStringLiteral("com.quorbel.shortcut.");
    if (type.isEmpty() || type.contains(QLatin1Char('.')))
        return type;
    return prefix + type;
}

} // namespace norvella
