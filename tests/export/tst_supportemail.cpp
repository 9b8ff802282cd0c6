#include "BuildInfo.h"
#include "DesktopMail.h"
#include "Strings.h"
#include "SupportEmailSender.h"

#include <QSignalSpy>
#include <QUrlQuery>
#include <QtTest>

using namespace norvella;

namespace {

// Stands in for the desktop: records what was started and opened, and answers as told.
struct FakeDesktop
{
    QString mailCommand;
    bool commandSucceeds = true;
    bool openUrlSucceeds = true;
    QList<QStringList> runs;
    QList<QUrl> openedUrls;

    void install()
    {
        DesktopMail::Platform p;
        p.findMailCommand = [this] { return mailCommand; };
        p.run = [this](const QString &program, const QStringList &arguments, std::function<void(bool)> done) {
            runs.append(QStringList{program} + arguments);
            done(commandSucceeds);
        };
        p.openUrl = [this](const QUrl &url) {
            openedUrls.append(url);
            return openUrlSucceeds;
        };
        DesktopMail::platform() = p;
    }
};

SupportEmailSender::Environment environment()
{
    SupportEmailSender::Environment e;
    e.deviceModel = "Laptop";
    e.hardwareIdentifier = "ThinkPad X13";
    e.systemVersion = "Debian GNU/Linux 12 (bookworm)";
    e.shortVersion = "1.2.0";
    e.buildVersion = "42";
    return e;
}

} // namespace

class SupportEmailTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        Strings::shared().selectLanguage({"en"});
        m_desktop = FakeDesktop();
        m_desktop.install();
        SupportEmailSender::setEnvironmentOverride(environment());
    }

    void cleanupTestCase()
    {
        DesktopMail::platform() = DesktopMail::systemPlatform();
        SupportEmailSender::clearEnvironmentOverride();
    }

    void bodyAndItsPlainText()
    {
        const QString html = SupportEmailSender::htmlBody("Norvella", environment());
        QCOMPARE(html, QStringLiteral("<br /><br /><br /><hr />App: Norvella<br />Device: Laptop (ThinkPad X13)"
                                      "<br />iOS: Debian GNU/Linux 12 (bookworm)<br />App: 1.2.0 (42)"));
        QCOMPARE(SupportEmailSender::plainTextBody(html),
                 QStringLiteral("\n\n\n----------\nApp: Norvella\nDevice: Laptop (ThinkPad X13)\n"
                                "iOS: Debian GNU/Linux 12 (bookworm)\nApp: 1.2.0 (42)"));
    }

    void gapsInTheEnvironment_data()
    {
        QTest::addColumn<QString>("hardware");
        QTest::addColumn<QString>("shortVersion");
        QTest::addColumn<QString>("buildVersion");
        QTest::addColumn<QString>("tail");
        QTest::newRow("no build number") << "X13" << "1.2.0" << "" << "(X13)<br />iOS: Debian GNU/Linux 12 (bookworm)<br />App: ";
        QTest::newRow("no version") << "X13" << "" << "42" << "(bookworm)<br />App: ";
        QTest::newRow("no hardware") << "" << "1" << "2" << "Laptop (Unknown Platform)<br />iOS: Debian GNU/Linux 12 (bookworm)<br />App: 1 (2)";
    }

    void gapsInTheEnvironment()
    {
        QFETCH(QString, hardware);
        QFETCH(QString, shortVersion);
        QFETCH(QString, buildVersion);
        QFETCH(QString, tail);
        auto e = environment();
        e.hardwareIdentifier = hardware;
        e.shortVersion = shortVersion;
        e.buildVersion = buildVersion;
        const QString html = SupportEmailSender::htmlBody("Norvella", e);
        QVERIFY2(html.endsWith(tail), qPrintable(html));
    }

    void realEnvironmentIsFilled()
    {
        SupportEmailSender::clearEnvironmentOverride();
        const auto e = SupportEmailSender::Environment::current();
        QVERIFY(!e.deviceModel.isEmpty());
        QVERIFY(!e.systemVersion.isEmpty());
        QCOMPARE(e.shortVersion, BuildInfo::shortVersion());
        SupportEmailSender::setEnvironmentOverride(environment());
    }

    void mailGoesThroughTheMailHelper()
    {
        m_desktop.mailCommand = "/usr/bin/xdg-email";
        QObject screen;
        SupportEmailSender sender(&screen, nullptr);
        QSignalSpy alerts(&sender, &SupportEmailSender::alertRequested);
        sender.sendEmail();
        QCOMPARE(m_desktop.runs.size(), 1);
        const QStringList run = m_desktop.runs.first();
        QCOMPARE(run.last(), Strings::text("support.email"));
        QCOMPARE(run.at(run.indexOf("--subject") + 1), Strings::text("app.title"));
        QVERIFY(run.at(run.indexOf("--body") + 1).endsWith("\nApp: 1.2.0 (42)"));
        QVERIFY(m_desktop.openedUrls.isEmpty());
        // A mail handed to the client counts as saved: nothing to tell.
        QCOMPARE(alerts.count(), 0);
    }

    void noMailClientOpensTheContactPageWithoutAlert()
    {
        m_desktop.mailCommand = "/usr/bin/xdg-email";
        m_desktop.commandSucceeds = false;
        m_desktop.openUrlSucceeds = false;
        QObject screen;
        SupportEmailSender sender(&screen, nullptr);
        QSignalSpy alerts(&sender, &SupportEmailSender::alertRequested);
        QSignalSpy contact(&sender, &SupportEmailSender::contactPageOpened);
        // mailto is refused, the contact page then also: the error alert.
        sender.sendEmail();
        QCOMPARE(m_desktop.openedUrls.size(), 2);
        const QUrl mailto = m_desktop.openedUrls.first();
        QCOMPARE(mailto.scheme() + ':' + mailto.path(), "mailto:" + Strings::text("support.email"));
        QCOMPARE(QUrlQuery(mailto).queryItemValue("subject", QUrl::FullyDecoded), Strings::text("app.title"));
        QVERIFY(QUrlQuery(mailto).queryItemValue("body", QUrl::FullyDecoded).contains("\nDevice: Laptop (ThinkPad X13)\n"));
        QCOMPARE(m_desktop.openedUrls.last(), QUrl(BuildInfo::contactUrl()));
        QCOMPARE(contact.count(), 0);
        QCOMPARE(alerts.count(), 1);
        QCOMPARE(alerts.first().at(0).toString(), Strings::text("export.email.error"));
        QCOMPARE(sender.alertMessage(), Strings::text("export.email.message"));

        // When the system takes the contact page, the user sees the page and no alert.
        m_desktop.openedUrls.clear();
        int opened = 0;
        DesktopMail::platform().openUrl = [&](const QUrl &url) {
            m_desktop.openedUrls.append(url);
            return url.scheme() != "mailto" && ++opened > 0;
        };
        sender.sendEmail();
        QCOMPARE(contact.count(), 1);
        QCOMPARE(alerts.count(), 1);
    }

    void composerOutcomes_data()
    {
        QTest::addColumn<int>("result");
        QTest::addColumn<QString>("alertTitle");
        QTest::newRow("cancelled") << 0 << QString();
        QTest::newRow("saved") << 1 << QString();
        QTest::newRow("sent") << 2 << "support.emailsuccess.title";
        QTest::newRow("failed") << 3 << "export.email.error";
    }

    void composerOutcomes()
    {
        QFETCH(int, result);
        QFETCH(QString, alertTitle);
        QObject screen;
        SupportEmailSender sender(&screen, nullptr);
        QSignalSpy alerts(&sender, &SupportEmailSender::alertRequested);
        // The outcome arrives while the composer is still up.
        m_desktop.mailCommand = "/usr/bin/xdg-email";
        DesktopMail::platform().run = [](const QString &, const QStringList &, std::function<void(bool)>) {};
        sender.sendEmail();
        QVERIFY(sender.composerPresented());
        sender.mailComposeFinished(result);
        QVERIFY(!sender.composerPresented());
        // A failure is asked for twice but shown once, after the composer has gone.
        QCOMPARE(alerts.count(), alertTitle.isEmpty() ? 0 : 1);
        if (!alertTitle.isEmpty())
            QCOMPARE(alerts.first().at(0).toString(), Strings::text(alertTitle));
        if (result == 2)
            QCOMPARE(sender.alertMessage(), Strings::text("support.emailsuccess.subject"));
    }

    void withoutSenderNothingAppears()
    {
        m_desktop.openUrlSucceeds = false;
        SupportEmailSender sender;
        QSignalSpy alerts(&sender, &SupportEmailSender::alertRequested);
        sender.sendEmail();
        sender.mailComposeFinished(3);
        QCOMPARE(alerts.count(), 0);
        QVERIFY(m_desktop.runs.isEmpty() && m_desktop.openedUrls.isEmpty());
    }

    void mailtoEncodesEveryCharacter()
    {
        DesktopMail::Message message{{"a@b.example", "c@d.example"}, "Hi & bye?", "x=1&y=2\n#3 +4 è", {}};
        const QUrl url = DesktopMail::mailtoUrl(message);
        QVERIFY(url.isValid());
        QCOMPARE(url.path(), QStringLiteral("a@b.example,c@d.example"));
        const QUrlQuery query(url);
        QCOMPARE(query.queryItemValue("subject", QUrl::FullyDecoded), QStringLiteral("Hi & bye?"));
        QCOMPARE(query.queryItemValue("body", QUrl::FullyDecoded), QStringLiteral("x=1&y=2\n#3 +4 è"));
        QCOMPARE(DesktopMail::commandArguments({{"a@b.example"}, "S", "B", {"/tmp/x.html"}}),
                 (QStringList{"--utf8", "--subject", "S", "--body", "B", "--attach", "/tmp/x.html", "a@b.example"}));
    }

private:
    FakeDesktop m_desktop;
};

QTEST_GUILESS_MAIN(SupportEmailTest)
#include "tst_supportemail.moc"
