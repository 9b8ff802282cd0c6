#include "LinkOpener.h"

#include "CrashLog.h"
#include "DesktopMail.h"
#include "Strings.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QFileInfo>
#include <QGuiApplication>
#include <QPointer>
#include <QProcess>
#include <QStandardPaths>
#include <QTimer>

#include <memory>

namespace norvella {

LinkOpener *LinkOpener::instance()
{
    static LinkOpener *shared = new LinkOpener;
    return shared;
}

LinkOpener *LinkOpener::create(QQmlEngine *, QJSEngine *)
{
    LinkOpener *shared = instance();
    // The engine must not delete the object C++ keeps using.
    QJSEngine::setObjectOwnership(shared, QJSEngine::CppOwnership);
    return shared;
}

void LinkOpener::runHelper(const QString &program, const QStringList &arguments, Done done, int patience)
{
    const QString name = QFileInfo(program).fileName();
    auto answered = std::make_shared<bool>(false);
    auto answer = [answered, done](bool ok) {
        if (*answered)
            return;
        *answered = true;
        done(ok);
    };
    // Owned by the opener, which lives as long as the program: a helper still waiting
    // for its browser when the app quits is neither killed nor lost track of.
    auto *process = new QProcess(instance());
    process->setProgram(program);
    process->setArguments(arguments);
    // Nobody reads what the helper prints, and a full pipe would stall it.
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    QObject::connect(process, &QProcess::finished, process,
                     [process, answer, name](int code, QProcess::ExitStatus status) {
                         const bool ok = status == QProcess::NormalExit && code == 0;
                         if (!ok)
                             CrashLog::log(status == QProcess::NormalExit
                                                   ? QStringLiteral("%1 found nothing to open the address with (exit status %2)")
                                                             .arg(name)
                                                             .arg(code)
                                                   : QStringLiteral("%1 stopped before it opened the address").arg(name));
                         answer(ok);
                         process->deleteLater();
                     });
    QObject::connect(process, &QProcess::errorOccurred, process, [process, answer, name](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart)
            return;
        CrashLog::log(QStringLiteral("%1 could not be started: %2").arg(name, process->errorString()));
        answer(false);
        process->deleteLater();
    });
    // Some handlers keep the helper running until their window closes; the
    // process object stays to collect its exit, the caller is answered now.
    QTimer::singleShot(patience, process, [answer] { answer(true); });
    process->start();
}

void LinkOpener::openWithSystem(const QUrl &url, Done done)
{
#if defined(Q_OS_UNIX) && !defined(Q_OS_ANDROID) && !defined(Q_OS_DARWIN)
    const QString helper = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
    if (!helper.isEmpty()) {
        runHelper(helper, {url.toString(QUrl::FullyEncoded)}, std::move(done));
        return;
    }
#endif
    const bool opened = QDesktopServices::openUrl(url);
    if (!opened)
        CrashLog::log(QStringLiteral("The system has nothing to open %1 with").arg(url.scheme()));
    done(opened);
}

void LinkOpener::openOrReport(const QUrl &url, const QString &message)
{
    const QString address = url.toString();
    if (!url.isValid() || url.scheme().isEmpty()) {
        CrashLog::log(QStringLiteral("Not a link that can be opened: ") + address);
        emit instance()->failed(message, address);
        return;
    }
    DesktopMail::platform().openUrl(url, [message, address](bool opened) {
        if (!opened)
            emit instance()->failed(message, address);
    });
}

void LinkOpener::openLink(const QUrl &url)
{
    openOrReport(url, linkFailedText());
}

void LinkOpener::copyText(const QString &text)
{
    if (QClipboard *clipboard = QGuiApplication::clipboard())
        clipboard->setText(text);
}

QString LinkOpener::linkFailedText()
{
    return Strings::text(QStringLiteral("common.link_failed"));
}

} // namespace norvella
