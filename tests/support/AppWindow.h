#pragma once

// The app's whole window in this process, as its start builds it: a fresh
// documents folder, the fixture master (with extra rows a suite needs),
// cleared standard settings and the log in the same folder.
// Header only: the suites that include it link the app and its QML modules.

#include "AppDelegate.h"
#include "CrashLog.h"
#include "HomeViewController.h"
#include "QmlLoadHarness.h"
#include "Settings.h"
#include "TestSupport.h"
#include "VerbRef.h"

#include <QTemporaryDir>

#include <memory>

namespace norvella::test {

class AppWindow
{
public:
    explicit AppWindow(const QString &extraSql = {})
        : environment{dir.filePath(QStringLiteral("docs")), dir.filePath(QStringLiteral("master.db")),
                      QStringLiteral("1.0")}
    {
        m_ready = dir.isValid() && QDir().mkpath(environment.documentsDirectory)
                && createFixtureDatabase(environment.masterPath, extraSql);
        CrashLog::setLogFilePath(dir.filePath(QStringLiteral("norvella.log")));
        Settings::standard().clear();
    }
    // The window goes before the delegate it shows.
    ~AppWindow() { close(); }

    // Launches the app into a window of that size; false if the fixture or the window failed.
    bool launch(const QSize &size)
    {
        if (!m_ready)
            return false;
        delegate = std::make_unique<AppDelegate>(environment, Settings::standard());
        delegate->setWindowFactory([this, size](AppDelegate &d) {
            qml.show(QUrl(QStringLiteral("qrc:/qt/qml/Norvella/App/Main.qml")), size,
                     {{QStringLiteral("appDelegate"), QVariant::fromValue(&d)}});
        });
        delegate->didFinishLaunching();
        return qml.window != nullptr;
    }

    // Ends window and delegate; true if no warning was printed meanwhile.
    bool close()
    {
        qml.window.reset();
        delegate.reset();
        return qml.clean();
    }

    QQuickWindow *window() const { return qml.window.get(); }
    HomeViewController *home() const { return qml.find<HomeViewController>(QStringLiteral("homeViewController")); }

    // Page transitions block input until they end.
    bool waitForPages(int pauseMs = 0) const
    {
        auto *stack = qml.find<QQuickItem>(QStringLiteral("stack"));
        if (!stack)
            return false;
        for (int waited = 0; stack->property("busy").toBool() && waited < 5000; waited += 20)
            QTest::qWait(20);
        return !stack->property("busy").toBool() && qml.settle(pauseMs);
    }

    // The conjugation screen shows the verb, in the detail column or on the pushed page.
    bool detailShows(const QString &italian) const
    {
        for (QObject *object : qml.window->findChildren<QObject *>()) {
            const VerbPtr verb = VerbRef::from(object->property("verb").value<QObject *>());
            if (object->objectName().startsWith(QLatin1String("detail")) && verb && verb->italian == italian
                && object->property("visible").toBool())
                return true;
        }
        return false;
    }

    QTemporaryDir dir;
    LaunchEnvironment environment;
    std::unique_ptr<AppDelegate> delegate;
    QmlScreen qml;

private:
    bool m_ready = false;
};

} // namespace norvella::test
