#pragma once

#include <QByteArray>
#include <QLocalServer>
#include <QObject>
#include <QSet>
#include <QString>

#include <memory>

class QLocalSocket;
class QLockFile;

namespace norvella {

// Keeps the app to one running instance, as on a phone: a later launch hands
// its request (show the window, or a quick action) to the instance that runs,
// over a local socket in a folder only this user can enter, and exits.
//
// Whoever can reach the socket can only ask for those two things: a message is
// one short line, a connection carries one message and lives at most
// ClientTimeoutMs, and at most MaxClients connections are served at once.
class ShortcutChannel : public QObject
{
    Q_OBJECT
public:
    // Longest message, its newline included.
    static constexpr qint64 MaxMessageBytes = 256;
    static constexpr int MaxClients = 8;
    static constexpr int ClientTimeoutMs = 2000;
    // What a launch without a quick action asks for.
    static constexpr char ActivateMessage[] = "activate";

    enum class Claim {
        Listening, // this process is the one instance and takes requests
        Running,   // another instance runs: forward to it
        Failed,    // no channel (logged): run on alone
    };

    explicit ShortcutChannel(QObject *parent = nullptr);
    ~ShortcutChannel() override;

    // The folder of the channel: $XDG_RUNTIME_DIR when it is this user's alone,
    // otherwise a private folder of this user in the temporary folder. Empty,
    // with the reason logged, when neither can be trusted.
    static QString privateFolder();
    static QString socketPath(const QString &folder);

    // The line a launch sends: its quick action, or the window request.
    static QByteArray messageFor(const QString &shortcutType);
    // True once the running instance has taken the message.
    static bool forward(const QString &socketPath, const QByteArray &message, int timeoutMs = 3000);

    // Becomes the one instance in `folder` (a lock held for the life of the
    // process; one left by a crashed instance is taken over, with its socket).
    Claim claim(const QString &folder);
    QString serverName() const { return m_server.fullServerName(); }

signals:
    void activationRequested();
    void shortcutReceived(const QString &type);

private:
    void acceptConnections();
    void readMessage(QLocalSocket *socket);
    void drop(QLocalSocket *socket);

    std::unique_ptr<QLockFile> m_lock;
    QSet<QLocalSocket *> m_clients;
    bool m_refusing = false;
    QLocalServer m_server;
};

// Desktop actions may name the short form ("search"); the app speaks in the
// full quick-action types.
QString normalisedShortcutType(const QString &type);
// A full quick-action type as the channel carries it: the prefix and a word.
bool isQuickActionType(const QByteArray &type);

} // namespace norvella
