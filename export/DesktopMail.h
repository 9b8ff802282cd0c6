#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

#include <functional>

namespace norvella {

// Hands a message to the desktop's mail client: `xdg-email` when it is
// installed, otherwise a mailto: address opened by the system. Neither can
// tell whether the mail was sent, so success is reported as "saved".
class DesktopMail
{
public:
    // The composer results, numbered as the mail callback reports them.
    enum class Result { Cancelled = 0, Saved = 1, Sent = 2, Failed = 3 };

    struct Message
    {
        QStringList recipients;
        QString subject;
        // Plain text: desktop clients take no markup through these routes.
        QString body;
        QStringList attachments;
    };

    // The system calls this class makes; tests swap them.
    struct Platform
    {
        // Full path of the mail helper, or empty when there is none.
        std::function<QString()> findMailCommand;
        // Starts a program; `done` is called with whether it ended successfully.
        std::function<void(const QString &program, const QStringList &arguments, std::function<void(bool)> done)> run;
        // Hands an address to the system; `done` is called with whether a
        // program took it (not merely whether a helper could be started).
        std::function<void(const QUrl &, std::function<void(bool)> done)> openUrl;
    };
    static Platform &platform();
    static Platform systemPlatform();

    // Calls `done` with Saved once a client has the message, or with Failed
    // when no route to a mail client worked (possibly before returning).
    static void compose(const Message &message, std::function<void(Result)> done);

    static QStringList commandArguments(const Message &message);
    static QUrl mailtoUrl(const Message &message);
};

} // namespace norvella
