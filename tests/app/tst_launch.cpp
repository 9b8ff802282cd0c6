#include "Analytics.h"
#include "AppDelegate.h"
#include "Appearance.h"
#include "CrashLog.h"
#include "NotificationCenter.h"
#include "Settings.h"
#include "ShortcutChannel.h"
#include "TestSupport.h"
#include "VerbStore.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <plist/plist.h>

#include <tuple>

using namespace norvella;

class LaunchTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_dir.reset(new QTemporaryDir);
        QVERIFY(m_dir->isValid());
        m_env.documentsDirectory = m_dir->filePath(QStringLiteral("docs"));
        m_env.masterPath = m_dir->filePath(QStringLiteral("master.db"));
        m_env.appVersion = QStringLiteral("3.0");
        QVERIFY(test::createFixtureDatabase(m_env.masterPath));
        QVERIFY(QDir().mkpath(m_env.documentsDirectory));
        m_settings.reset(new Settings(m_dir->filePath(QStringLiteral("settings.json"))));
        CrashLog::setLogFilePath(m_dir->filePath(QStringLiteral("norvella.log")));
    }

    void launchPreparesDatabaseAndFirstRunSettings()
    {
        AppDelegate delegate(m_env, *m_settings);
        int windowsBuilt = 0;
        delegate.setWindowFactory([&](AppDelegate &d) {
            // The home screen is built with the queue already open.
            QVERIFY(d.queue());
            ++windowsBuilt;
        });
        QVERIFY(delegate.didFinishLaunching());
        QCOMPARE(windowsBuilt, 1);
        QCOMPARE(delegate.status(), AppDelegate::Status::Running);
        QCOMPARE(m_settings->stringForKey(SettingsKeys::InstalledVersion), QStringLiteral("3.0"));
        QCOMPARE(m_settings->objectForKey(SettingsKeys::IncludeEnglish), QVariant(true));
        QCOMPARE(Analytics::shared().userProperty(QStringLiteral("is_interstitial_ads")), QStringLiteral("false"));
        QCOMPARE(Analytics::shared().userProperty(QStringLiteral("is_native_ads")), QStringLiteral("false"));
    }

    void missingMasterIsFatalWithAClearMessage()
    {
        m_env.masterPath.clear();
        AppDelegate delegate(m_env, *m_settings);
        delegate.didFinishLaunching();
        QCOMPARE(delegate.status(), AppDelegate::Status::FatalError);
        QVERIFY(delegate.fatalError().contains(QStringLiteral("verbs.db")));
    }

    void failedPreparationRunsWithoutQueue()
    {
        m_env.documentsDirectory = QStringLiteral("/proc/norvella-test");
        AppDelegate delegate(m_env, *m_settings);
        QVERIFY(delegate.didFinishLaunching());
        QCOMPARE(delegate.status(), AppDelegate::Status::Running);
        QVERIFY(!delegate.queue());
        QFile log(CrashLog::logFilePath());
        QVERIFY(log.open(QIODevice::ReadOnly));
        QVERIFY(log.readAll().contains("Unable to initialise database "));
    }

    // The old settings file wins over the first-run values and is deleted; a
    // malformed one is logged and kept.
    void legacySettingsFile_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<bool>("used");
        QTest::newRow("xml") << "xml" << true;
        QTest::newRow("binary") << "binary" << true;
        QTest::newRow("malformed") << "malformed" << false;
    }

    void legacySettingsFile()
    {
        QFETCH(QString, format);
        QFETCH(bool, used);
        const QString path = m_env.documentsDirectory + QStringLiteral("/norvella.plist");
        writeLegacyPlist(path, format);
        AppDelegate delegate(m_env, *m_settings);
        QVERIFY(delegate.didFinishLaunching());
        QCOMPARE(QFile::exists(path), !used);
        QCOMPARE(m_settings->objectForKey(SettingsKeys::IncludeEnglish), QVariant(!used));
        if (used) {
            QCOMPARE(m_settings->objectForKey(SettingsKeys::SearchFrom), QVariant(QStringLiteral("W")));
            QCOMPARE(m_settings->objectForKey(SettingsKeys::SortByLang), QVariant(false));
            // Keys absent from the old file keep their first-run values.
            QCOMPARE(m_settings->objectForKey(SettingsKeys::SearchConjugations), QVariant(false));
        }
    }

    void quickActionAtColdLaunchIsHandledOnce()
    {
        QStringList tabs;
        ObserverSet observers;
        observers.add(Notifications::TabOpenEvent, [&](const Notification &n) {
            tabs << n.userInfo.value(QStringLiteral("SelectedTab")).toString();
        });
        AppDelegate delegate(m_env, *m_settings);
        QVERIFY(!delegate.didFinishLaunching(QStringLiteral("com.quorbel.shortcut.favourite")));
        QCOMPARE(tabs, QStringList{QStringLiteral("Favourites")});

        QVERIFY(delegate.performActionForShortcutItem(QStringLiteral("history")));
        QVERIFY(delegate.performActionForShortcutItem(QStringLiteral("com.quorbel.shortcut.list")));
        QVERIFY(delegate.performActionForShortcutItem(QStringLiteral("com.quorbel.shortcut.unknown")));
        QCOMPARE(tabs, (QStringList{QStringLiteral("Favourites"), QStringLiteral("History"), QStringLiteral("List")}));
    }

    void searchActionOnlyActsOnThePhoneLayout()
    {
        AppDelegate delegate(m_env, *m_settings);
        delegate.didFinishLaunching();
        QSignalSpy focus(&delegate, &AppDelegate::focusSearchRequested);
        delegate.performActionForShortcutItem(QStringLiteral("com.quorbel.shortcut.search"));
        QCOMPARE(focus.count(), 0);
        delegate.setCollapsed(true);
        delegate.performActionForShortcutItem(QStringLiteral("com.quorbel.shortcut.search"));
        QCOMPARE(focus.count(), 1);
        QVERIFY(AppDelegate::shouldCollapseSecondary(true, false));
        QVERIFY(!AppDelegate::shouldCollapseSecondary(true, true));
        QVERIFY(!AppDelegate::shouldCollapseSecondary(false, false));
    }

    void secondProcessForwardsItsActionAndExits()
    {
        // The real binary, started as a desktop action would start it.
        const QString user = QStringLiteral("t%1").arg(QCoreApplication::applicationPid());
        ShortcutChannel running;
        QVERIFY(running.listen(QStringLiteral("norvella-shortcuts-") + user));
        QSignalSpy received(&running, &ShortcutChannel::shortcutReceived);

        QProcess second;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("USER"), user);
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        env.insert(QStringLiteral("HOME"), m_dir->path());
        second.setProcessEnvironment(env);
        second.start(QStringLiteral(NORVELLA_BINARY), {QStringLiteral("--shortcut"), QStringLiteral("favourite")});
        QVERIFY(second.waitForStarted());
        QTRY_COMPARE_WITH_TIMEOUT(received.count(), 1, 10000);
        QCOMPARE(received.first().first().toString(), QStringLiteral("com.quorbel.shortcut.favourite"));
        QTRY_COMPARE_WITH_TIMEOUT(second.state(), QProcess::NotRunning, 10000);
        QCOMPARE(second.exitCode(), 0);
        // With nobody listening, forwarding gives up.
        QVERIFY(!ShortcutChannel::forward(QStringLiteral("norvella-nobody-") + user, QStringLiteral("list"), 200));
    }

    // Text (and the play icon) on each background the screens put it on.
    void themeColoursKeepTextReadable()
    {
        Appearance &theme = Appearance::shared();
        QVERIFY(theme.load());
        QCOMPARE(Appearance::contrastRatio(Qt::black, Qt::white), 21.0);
        const QList<std::tuple<const char *, QColor, QColor>> pairs{
                {"bar title", theme.barText(), theme.primary()},
                {"selected mood", theme.barText(), theme.secondary()},
                {"secondary text", theme.secondaryText(), theme.background()},
                {"tense title", theme.primary(), theme.groupedBackground()},
                {"text on the grouped page", theme.text(), theme.groupedBackground()},
                {"pressed mood", theme.segmentTint(), theme.pressed()},
                {"verb prompt", theme.secondaryText(), theme.placeholderBackground()},
                {"play icon", theme.progressTint(), theme.background()},
                {"pressed play icon", theme.progressTint(), theme.pressed()},
        };
        for (const auto &[what, text, background] : pairs) {
            const double ratio = Appearance::contrastRatio(text, background);
            QVERIFY2(ratio >= 4.5, qPrintable(QStringLiteral("%1: contrast %2").arg(what).arg(ratio)));
        }
    }

private:
    static void writeLegacyPlist(const QString &path, const QString &format)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        if (format == QLatin1String("malformed")) {
            file.write("<plist><dict><key>IncludeEnglish</key>");
            return;
        }
        plist_t dict = plist_new_dict();
        plist_dict_set_item(dict, "IncludeEnglish", plist_new_bool(0));
        plist_dict_set_item(dict, "SearchFrom", plist_new_string("W"));
        plist_dict_set_item(dict, "SortByLang", plist_new_bool(0));
        char *data = nullptr;
        uint32_t length = 0;
        if (format == QLatin1String("binary"))
            plist_to_bin(dict, &data, &length);
        else
            plist_to_xml(dict, &data, &length);
        file.write(data, length);
        free(data);
        plist_free(dict);
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<Settings> m_settings;
    LaunchEnvironment m_env;
};

QTEST_MAIN(LaunchTest)
#include "tst_launch.moc"
