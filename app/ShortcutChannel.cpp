#include "ShortcutChannel.h"

#include "CrashLog.h"

#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QLockFile>
#include <QTimer>

#include <algorithm>

#include <cerrno>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

namespace norvella {

namespace {
const QByteArray QuickActionPrefix = QByteArrayLiteral("com.quorbel.shortcut.");

// Why a folder cannot hold the channel; empty when it is a real folder (not a
// link) of this user that nobody else may enter.
QString folderProblem(const QString &path)
{
    struct stat info {};
    if (::lstat(QFile::encodeName(path).constData(), &info) != 0)
        return QString::fromLocal8Bit(std::strerror(errno));
    if (!S_ISDIR(info.st_mode))
        return QStringLiteral("it is not a folder");
    if (info.st_uid != ::getuid())
        return QStringLiteral("it belongs to user %1").arg(info.st_uid);
    if ((info.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        return QStringLiteral("others may use it (mode %1)").arg(info.st_mode & 0777, 3, 8, QLatin1Char('0'));
    return {};
}

// Bytes from the socket, made short and printable for a log line.
QString excerpt(const QByteArray &bytes)
{
    QString text;
    for (const char c : bytes.left(40))
        text += c >= 0x20 && c < 0x7f ? QLatin1Char(c) : QLatin1Char('?');
    return text;
}
} // namespace

ShortcutChannel::ShortcutChannel(QObject *parent) : QObject(parent)
{
    connect(&m_server, &QLocalServer::newConnection, this, &ShortcutChannel::acceptConnections);
}

ShortcutChannel::~ShortcutChannel()
{
    // The sockets go with the server, after this object has stopped being one.
    for (QLocalSocket *socket : std::as_const(m_clients))
        disconnect(socket, nullptr, this, nullptr);
    m_server.close();
}

QString ShortcutChannel::privateFolder()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty()) {
        const QString problem = folderProblem(runtime);
        if (problem.isEmpty())
            return runtime;
        CrashLog::log(QStringLiteral("Refused the runtime folder %1 for the instance channel: %2").arg(runtime, problem));
    }
    // Made without access for others from the start; a folder already there is
    // used only when it passes the same checks, since anyone can create one.
    const QString own = QDir::tempPath() + QStringLiteral("/norvella-%1").arg(::getuid());
    if (::mkdir(QFile::encodeName(own).constData(), 0700) != 0 && errno != EEXIST) {
        CrashLog::log(QStringLiteral("Unable to create the folder %1 for the instance channel: %2; running without it")
                              .arg(own, QString::fromLocal8Bit(std::strerror(errno))));
        return {};
    }
    const QString problem = folderProblem(own);
    if (!problem.isEmpty()) {
        CrashLog::log(QStringLiteral("Refused the folder %1 for the instance channel: %2; running without it")
                              .arg(own, problem));
        return {};
    }
    return own;
}

QString ShortcutChannel::socketPath(const QString &folder)
{
    return folder + QStringLiteral("/norvella-instance");
}

QByteArray ShortcutChannel::messageFor(const QString &shortcutType)
{
    const QByteArray type = normalisedShortcutType(shortcutType).toUtf8();
    return isQuickActionType(type) ? type : QByteArray(ActivateMessage);
}

bool ShortcutChannel::forward(const QString &socketPath, const QByteArray &message, int timeoutMs)
{
    QLocalSocket socket;
    socket.connectToServer(socketPath);
    if (!socket.waitForConnected(timeoutMs))
        return false;
    socket.write(message + '\n');
    if (!socket.waitForBytesWritten(timeoutMs))
        return false;
    // The running instance answers once it has taken the request.
    while (!socket.canReadLine()) {
        if (!socket.waitForReadyRead(timeoutMs))
            return false;
    }
    return socket.readLine().trimmed() == "ok";
}

ShortcutChannel::Claim ShortcutChannel::claim(const QString &folder)
{
    auto lock = std::make_unique<QLockFile>(folder + QStringLiteral("/norvella-instance.lock"));
    // Held for as long as the instance runs; only a dead holder's lock is stale.
    lock->setStaleLockTime(0);
    if (!lock->tryLock(0)) {
        if (lock->error() == QLockFile::LockFailedError)
            return Claim::Running;
        CrashLog::log(QStringLiteral("Unable to lock %1 for the instance channel; running without it")
                              .arg(lock->fileName()));
        return Claim::Failed;
    }
    // With the lock ours, a socket still there was left by a crashed instance.
    const QString path = socketPath(folder);
    QLocalServer::removeServer(path);
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server.listen(path)) {
        CrashLog::log(QStringLiteral("Unable to listen for quick actions on %1: %2").arg(path, m_server.errorString()));
        return Claim::Failed;
    }
    m_lock = std::move(lock);
    return Claim::Listening;
}

void ShortcutChannel::acceptConnections()
{
    while (QLocalSocket *socket = m_server.nextPendingConnection()) {
        if (m_clients.size() >= MaxClients) {
            if (!m_refusing)
                CrashLog::log(QStringLiteral("Instance channel: %1 connections open, refusing more").arg(MaxClients));
            m_refusing = true;
            socket->abort();
            socket->deleteLater();
            continue;
        }
        m_clients.insert(socket);
        socket->setReadBufferSize(MaxMessageBytes);
        auto *deadline = new QTimer(socket);
        deadline->setSingleShot(true);
        connect(deadline, &QTimer::timeout, this, [this, socket] {
            if (!m_clients.contains(socket))
                return;
            CrashLog::log(QStringLiteral("Instance channel: dropped a connection without a message after %1 ms")
                                  .arg(ClientTimeoutMs));
            drop(socket);
        });
        deadline->start(ClientTimeoutMs);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { readMessage(socket); });
        connect(socket, &QLocalSocket::disconnected, this, [this, socket] { drop(socket); });
        if (socket->bytesAvailable() > 0)
            readMessage(socket);
    }
}

void ShortcutChannel::readMessage(QLocalSocket *socket)
{
    if (!m_clients.contains(socket))
        return;
    if (!socket->canReadLine()) {
        // The read buffer holds no more than this: the line would only go on.
        if (socket->bytesAvailable() >= MaxMessageBytes) {
            CrashLog::log(QStringLiteral("Instance channel: dropped a message longer than %1 bytes").arg(MaxMessageBytes));
            drop(socket);
        }
        return;
    }
    const QByteArray message = socket->readLine().trimmed();
    // One message per connection: whatever follows is not read.
    disconnect(socket, &QLocalSocket::readyRead, this, nullptr);
    if (message == ActivateMessage) {
        emit activationRequested();
    } else if (isQuickActionType(message)) {
        emit shortcutReceived(QString::fromLatin1(message));
    } else {
        CrashLog::log(QStringLiteral("Instance channel: ignored an unknown message \"%1\"").arg(excerpt(message)));
        drop(socket);
        return;
    }
    socket->write("ok\n");
    socket->disconnectFromServer();
}

void ShortcutChannel::drop(QLocalSocket *socket)
{
    if (!m_clients.remove(socket))
        return;
    m_refusing = m_refusing && m_clients.size() >= MaxClients;
    disconnect(socket, nullptr, this, nullptr);
    socket->abort();
    socket->deleteLater();
}

QString normalisedShortcutType(const QString &type)
{
    if (type.isEmpty() || type.contains(QLatin1Char('.')))
        return type;
    return QString::fromLatin1(QuickActionPrefix) + type;
}

bool isQuickActionType(const QByteArray &type)
{
    if (!type.startsWith(QuickActionPrefix))
        return false;
    const QByteArray name = type.mid(QuickActionPrefix.size());
    return !name.isEmpty() && name.size() <= 32
            && std::all_of(name.begin(), name.end(), [](char c) { return c >= 'a' && c <= 'z'; });
}

} // namespace norvella
