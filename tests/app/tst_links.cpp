// Links and mail that leave the app, through the system's own helpers: a PATH
// whose xdg-open and xdg-email find no program (exit status 3, as xdg-utils
// answers then) must make every way out say so and offer the address, never
// claim success. Each helper here is a script that records its arguments.
#include "BuildInfo.h"
#include "CrashLog.h"
#include "DesktopMail.h"
#include "LinkOpener.h"
#include "MoreAppsTableViewController.h"
#include "OptionsTableViewController.h"
#include "ShareSheetController.h"
#include "Strings.h"
#include "SupportEmailSender.h"
#include "TestSupport.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QtTest>

using namespace norvella;

class LinksTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QByteArray m_path;

    QString helperLog(const QString &name) const { return m_dir.filePath(name + QStringLiteral(".log")); }

    // A helper that records its arguments, one per line, and ends with `status`
    // after `seconds`.
    void writeHelper(const QString &name, int status, int seconds = 0)
    {
        QFile script(m_dir.filePath(QStringLiteral("bin/") + name));
        QVERIFY(script.open(QIODevice::WriteOnly | QIODevice::Truncate));
        script.write(QStringLiteral("#!/bin/sh\nprintf '%s\\n' \"$@\" >> '%1'\nsleep %2\nexit %3\n")
                             .arg(helperLog(name))
                             .arg(seconds)
                             .arg(status)
                             .toUtf8());
        script.close();
        QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QFile::remove(helperLog(name));
    }

    QStringList helperArguments(const QString &name) const
    {
        QFile log(helperLog(name));
        if (!log.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(log.readAll()).split(u'\n', Qt::SkipEmptyParts);
    }

    QByteArray logText() const { return test::readFile(CrashLog::logFilePath()); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(QDir(m_dir.path()).mkpath(QStringLiteral("bin")));
        QStandardPaths::setTestModeEnabled(true);
        CrashLog::setLogFilePath(m_dir.filePath(QStringLiteral("norvella.log")));
        Strings::shared().selectLanguage({QStringLiteral("en")});
        // Only the helpers written here: a real xdg-open would start a browser.
        m_path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(m_dir.filePath(QStringLiteral("bin"))) + ":/usr/bin:/bin");
        DesktopMail::platform() = DesktopMail::systemPlatform();
    }

    void cleanupTestCase() { qputenv("PATH", m_path); }

    void init()
    {
        writeHelper(QStringLiteral("xdg-open"), 3);
        writeHelper(QStringLiteral("xdg-email"), 3);
    }

    void theHelpersExitStatusDecides()
    {
        const QUrl page(QStringLiteral("https://quorbel.example/a page?x=1"));
        QList<bool> answers;
        LinkOpener::openWithSystem(page, [&](bool opened) { answers << opened; });
        QTRY_COMPARE(answers.size(), 1);
        QCOMPARE(answers.first(), false);
        QCOMPARE(helperArguments(QStringLiteral("xdg-open")), QStringList{page.toString(QUrl::FullyEncoded)});
        QVERIFY(logText().contains("xdg-open found nothing to open the address with (exit status 3)"));

        writeHelper(QStringLiteral("xdg-open"), 0);
        LinkOpener::openWithSystem(page, [&](bool opened) { answers << opened; });
        QTRY_COMPARE(answers.size(), 2);
        QCOMPARE(answers.last(), true);

        // A helper that waits for its browser has handed the page on: opened.
        writeHelper(QStringLiteral("xdg-open"), 0, 5);
        LinkOpener::runHelper(m_dir.filePath(QStringLiteral("bin/xdg-open")), {page.toString()},
                              [&](bool opened) { answers << opened; }, 200);
        QTRY_COMPARE(answers.size(), 3);
        QCOMPARE(answers.last(), true);

        // A helper that cannot be started at all.
        LinkOpener::runHelper(m_dir.filePath(QStringLiteral("bin/missing")), {}, [&](bool opened) { answers << opened; });
        QTRY_COMPARE(answers.size(), 4);
        QCOMPARE(answers.last(), false);
    }

    // Privacy page, other apps, the website: each failure reaches the window
    // with the message and the address to copy.
    void everyLinkThatFailsIsReportedWithItsAddress()
    {
        QSignalSpy failed(LinkOpener::instance(), &LinkOpener::failed);

        const QUrl privacy(QStringLiteral("https://norvella.example/privacy"));
        LinkOpener::instance()->openLink(privacy);
        QTRY_COMPARE(failed.count(), 1);
        QCOMPARE(failed.last().at(0).toString(), Strings::text(QStringLiteral("common.link_failed")));
        QCOMPARE(failed.last().at(1).toString(), privacy.toString());

        MoreAppsTableViewController apps;
        apps.setCountryCode(QStringLiteral("IT"));
        apps.setOtherApps({{{"appid", "7"}, {"storedesc", "one"}, {"name", "One"}}});
        apps.selectRow(0);
        QTRY_COMPARE(failed.count(), 2);
        QVERIFY(failed.last().at(1).toString().contains(QStringLiteral("/it/app/one/id7")));
        QCOMPARE(helperArguments(QStringLiteral("xdg-open")).size(), 2);

        OptionsTableViewController options;
        options.openWebsite();
        QTRY_COMPARE(failed.count(), 3);
        QCOMPARE(failed.last().at(1).toString(), BuildInfo::webUrl());

        // A link that opens says nothing.
        writeHelper(QStringLiteral("xdg-open"), 0);
        options.openWebsite();
        QTRY_COMPARE(helperArguments(QStringLiteral("xdg-open")).size(), 1);
        QTest::qWait(100);
        QCOMPARE(failed.count(), 3);

        LinkOpener::copyText(privacy.toString());
        QCOMPARE(QGuiApplication::clipboard()->text(), privacy.toString());
    }

    // Contact: xdg-email, then a mailto: address, then the contact page; when
    // none is taken, the alert gives the support address.
    void supportMailFallsBackThenGivesTheAddress()
    {
        QObject screen;
        SupportEmailSender sender(&screen, nullptr);
        QSignalSpy alerts(&sender, &SupportEmailSender::alertRequested);
        QSignalSpy contact(&sender, &SupportEmailSender::contactPageOpened);
        sender.sendEmail();
        QTRY_COMPARE(alerts.count(), 1);
        QCOMPARE(contact.count(), 0);
        QCOMPARE(sender.alertTitle(), Strings::text(QStringLiteral("export.email.error")));
        QCOMPARE(sender.alertAddress(), Strings::text(QStringLiteral("support.email")));
        QVERIFY(helperArguments(QStringLiteral("xdg-email")).contains(Strings::text(QStringLiteral("support.email"))));
        const QStringList opened = helperArguments(QStringLiteral("xdg-open"));
        QCOMPARE(opened.size(), 2);
        QVERIFY(opened.first().startsWith(QStringLiteral("mailto:")));
        QCOMPARE(opened.last(), BuildInfo::contactUrl());

        // Only the contact page can be opened: it opens, and no alert.
        writeHelper(QStringLiteral("xdg-open"), 0);
        QFile::remove(m_dir.filePath(QStringLiteral("bin/xdg-email")));
        QFile mailtoRefused(m_dir.filePath(QStringLiteral("bin/xdg-open")));
        QVERIFY(mailtoRefused.open(QIODevice::WriteOnly | QIODevice::Truncate));
        mailtoRefused.write(QStringLiteral("#!/bin/sh\ncase \"$1\" in mailto:*) exit 3;; esac\nexit 0\n").toUtf8());
        mailtoRefused.close();
        sender.sendEmail();
        QTRY_COMPARE(contact.count(), 1);
        QCOMPARE(alerts.count(), 1);
    }

    void sendByMailSaysNoClientTookIt()
    {
        ShareSheetController sheet;
        sheet.setDocuments(QStringLiteral("essere"), QStringLiteral("<p>essere</p>"), QStringLiteral("essere\n\tio\tsono\n"));
        QSignalSpy finished(&sheet, &ShareSheetController::finished);
        QVERIFY(sheet.perform(QStringLiteral("mail")));
        QTRY_COMPARE(finished.count(), 1);
        QCOMPARE(finished.first().at(1).toBool(), false);
        QCOMPARE(sheet.statusMessage(), Strings::text(QStringLiteral("export.share.mail_unavailable")));
        QCOMPARE(sheet.statusCopyText(), sheet.text());
        // The mailto: fallback was tried after xdg-email, and failed too.
        QVERIFY(helperArguments(QStringLiteral("xdg-open")).value(0).startsWith(QStringLiteral("mailto:")));
    }

    // The machine named in support mail: its model where the firmware gives
    // one, never a placeholder, and the processor architecture otherwise.
    void hardwareIdentifier()
    {
        QTemporaryDir sys;
        QVERIFY(QDir(sys.path()).mkpath(QStringLiteral("class/dmi/id")));
        QVERIFY(QDir(sys.path()).mkpath(QStringLiteral("firmware/devicetree/base")));
        const QString arch = QSysInfo::currentCpuArchitecture();
        QCOMPARE(SupportEmailSender::Environment::hardwareIdentifierFrom(sys.path(), arch), arch);

        auto write = [&](const QString &file, const QByteArray &text) {
            QFile f(sys.filePath(file));
            QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
            f.write(text);
        };
        write(QStringLiteral("firmware/devicetree/base/model"), QByteArray("PINE64 PinePhone\0", 17));
        QCOMPARE(SupportEmailSender::Environment::hardwareIdentifierFrom(sys.path(), arch), QStringLiteral("PINE64 PinePhone"));
        write(QStringLiteral("class/dmi/id/board_name"), "LNVNB161216\n");
        write(QStringLiteral("class/dmi/id/product_name"), "To Be Filled By O.E.M.\n");
        QCOMPARE(SupportEmailSender::Environment::hardwareIdentifierFrom(sys.path(), arch), QStringLiteral("LNVNB161216"));
        write(QStringLiteral("class/dmi/id/product_name"), "ThinkPad X13 Gen 2i\n");
        QCOMPARE(SupportEmailSender::Environment::hardwareIdentifierFrom(sys.path(), arch), QStringLiteral("ThinkPad X13 Gen 2i"));

        // On this machine, whatever it reports, the body names it.
        SupportEmailSender::clearEnvironmentOverride();
        const auto current = SupportEmailSender::Environment::current();
        QVERIFY(!current.hardwareIdentifier.isEmpty());
        QVERIFY(!SupportEmailSender::htmlBody(QStringLiteral("Norvella"), current).contains(QStringLiteral("Unknown Platform")));
    }
};

QTEST_MAIN(LinksTest)
#include "tst_links.moc"
