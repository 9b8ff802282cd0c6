#include "DesktopMail.h"

#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>

namespace norvella {

DesktopMail::Platform DesktopMail::systemPlatform()
{
    Platform p;
    p.findMailCommand = [] { return QStandardPaths::findExecutable(QStringLiteral("xdg-email")); };
    p.run = [](const QString &program, const QStringList &arguments, std::function<void(bool)> done) {
        auto *process = new QProcess;
        process->setProgram(program);
        process->setArguments(arguments);
        // Some clients keep the helper running until the compose window closes;
        // the app never waits for that on its own thread.
        QObject::connect(process, &QProcess::finished, process, [process, done](int code, QProcess::ExitStatus status) {
            done(status == QProcess::NormalExit && code == 0);
            process->deleteLater();
        });
        QObject::connect(process, &QProcess::errorOccurred, process, [process, done](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart) {
                done(false);
                process->deleteLater();
            }
        });
        process->start();
    };
    p.openUrl = [](const QUrl &url) { return QDesktopServices::openUrl(url); };
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
        done(url.isValid() && platform().openUrl(url) ? Result::Saved : Result::Failed);
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
