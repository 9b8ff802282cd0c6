#include "DesktopMail.h"

#include "LinkOpener.h"

#include <QStandardPaths>

namespace norvella {

DesktopMail::Platform DesktopMail::systemPlatform()
{
    Platform p;
    p.findMailCommand = [] { return QStandardPaths::findExecutable(QStringLiteral("xdg-email")); };
    p.run = [](const QString &program, const QStringList &arguments, std::function<void(bool)> done) {
        LinkOpener::runHelper(program, arguments, std::move(done));
    };
    p.openUrl = [](const QUrl &url, std::function<void(bool)> done) { LinkOpener::openWithSystem(url, std::move(done)); };
    return p;
}

DesktopMail::Platform &DesktopMail::platform()
{
    static Platform current = systemPlatform();
    return current;
}

QStringList DesktopMail::commandArguments(const Message &message)
{
    QStringList arguments{QStringLiteral("--utf8"), QStringLiteral("--subject"), message.subject,
                          QStringLiteral("--body"), message.body};
    for (const QString &file : message.attachments)
        arguments << QStringLiteral("--attach") << file;
    arguments << message.recipients;
    return arguments;
}

QUrl DesktopMail::mailtoUrl(const Message &message)
{
    QByteArray encoded = "mailto:";
    QByteArrayList recipients;
    for (const QString &recipient : message.recipients)
        recipients << QUrl::toPercentEncoding(recipient, "@");
    encoded += recipients.join(',');
    encoded += "?subject=" + QUrl::toPercentEncoding(message.subject);
    encoded += "&body=" + QUrl::toPercentEncoding(message.body);
    return QUrl::fromEncoded(encoded, QUrl::StrictMode);
}

void DesktopMail::compose(const Message &message, std::function<void(Result)> done)
{
    const Platform &p = platform();
    auto viaUrl = [message, done] {
        const QUrl url = mailtoUrl(message);
        if (!url.isValid()) {
            done(Result::Failed);
            return;
        }
        platform().openUrl(url, [done](bool opened) { done(opened ? Result::Saved : Result::Failed); });
    };
    const QString command = p.findMailCommand ? p.findMailCommand() : QString();
    if (command.isEmpty()) {
        viaUrl();
        return;
    }
    p.run(command, commandArguments(message), [done, viaUrl](bool ok) {
        if (ok)
            done(Result::Saved);
        else
            viaUrl();
    });
}

} // namespace norvella
