#include "BuildInfo.h"
#include "CrashLog.h"
#include "DesktopMail.h"
#include "Settings.h"
#include "ShareSheetController.h"
#include "Strings.h"
#include "SupportEmailSender.h"
#include "VerbRef.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QUrlQuery>
#include <QtTest>

using namespace norvella;

namespace {
VerbPtr essere()
{
    auto verb = std::make_shared<Verb>();
    verb->italian = "essere";
    verb->english = "to be";
    const QStringList pronouns{"io", "tu", "lui/lei", "noi", "voi", "loro"};
    const QStringList forms{"sono", "sei", "è", "siamo", "siete", "sono"};
    for (int i = 0; i < 6; ++i)
        verb->indicativoPresente.append({pronouns[i], forms[i], "6", i + 1, {}});
    verb->gerundio.append({{}, "essendo", "3", 0, {}});
    return verb;
}

SupportEmailSender::Environment environment()
{
    return {"Laptop", "ThinkPad X13", "Debian GNU/Linux 12 (bookworm)", "1.2.0", "42"};
}

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

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
        p.openUrl = [this](const QUrl &url, std::function<void(bool)> done) {
            openedUrls.append(url);
            done(openUrlSucceeds);
        };
        DesktopMail::platform() = p;
    }
};
} // namespace

// The share sheet's documents and actions, and the support mail: both go out
// through the desktop's mail helper, faked here.
class SharingTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        CrashLog::setLogFilePath(m_dir.filePath("norvella.log"));
        PreferredLanguages::setOverride({"en"});
    }

    void init()
    {
        Strings::shared().selectLanguage({"en"});
        m_settings.reset(new Settings(m_dir.filePath("settings.json")));
        m_settings->clear();
        m_desktop = FakeDesktop();
        m_desktop.install();
        SupportEmailSender::setEnvironmentOverride(environment());
    }

    void cleanupTestCase()
    {
        DesktopMail::platform() = DesktopMail::systemPlatform();
        SupportEmailSender::clearEnvironmentOverride();
    }

    void exclusionListIsHonoured()
    {
        ShareSheetController sheet;
        QCOMPARE(sheet.offeredActivityTypes(), (QStringList{"copyText", "saveHtml", "saveText", "savePdf", "mail"}));
        sheet.setExcludedActivityTypes({"savePdf", "mail"});
        QCOMPARE(sheet.offeredActivityTypes(), (QStringList{"copyText", "saveHtml", "saveText"}));
        sheet.setDocuments("essere", "<p>x</p>", "x");
        sheet.setSaveFolder(m_dir.filePath("excluded"));
        QVERIFY(!sheet.perform("savePdf"));
        QVERIFY(!QFile::exists(m_dir.filePath("excluded/essere.pdf")));

        ShareSheetController empty;
        QTest::ignoreMessage(QtWarningMsg,
                             "Unable to export verb. Most likely an issue with the template (or no verb, somehow)");
        QVERIFY(!empty.exportVerb(nullptr));
        QVERIFY(empty.html().isNull());

        // Files are named after the verb, made safe.
        sheet.setDocuments("a/b:c", "", "");
        QCOMPARE(sheet.fileName("pdf"), QStringLiteral("a-b-c.pdf"));
        sheet.setDocuments("..", "", "");
        QCOMPARE(sheet.fileName("txt"), QStringLiteral("verb...txt"));
    }

    void savesEachDocument()
    {
        ShareSheetController sheet;
        sheet.setSettings(m_settings.get());
        sheet.setSaveFolder(m_dir.filePath("Documents"));
        VerbRef ref(essere());
        QVERIFY(sheet.exportVerb(&ref));
        QCOMPARE(sheet.title(), Strings::text("export.share.title").arg("essere"));
        QVERIFY(sheet.html().contains("<h1>essere</h1>"));
        QSignalSpy finished(&sheet, &ShareSheetController::finished);

        QVERIFY(sheet.perform("saveHtml"));
        QCOMPARE(read(m_dir.filePath("Documents/essere.html")), sheet.html().toUtf8());
        QVERIFY(sheet.perform("saveText"));
        const QString text = m_dir.filePath("Documents/essere.txt");
        QCOMPARE(read(text), sheet.text().toUtf8());
        QCOMPARE(sheet.statusMessage(), Strings::text("export.share.saved").arg(QDir::toNativeSeparators(text)));

        QVERIFY(sheet.perform("savePdf"));
        const QString pdf = m_dir.filePath("Documents/essere.pdf");
        const QByteArray bytes = read(pdf);
        QVERIFY(bytes.startsWith("%PDF-") && bytes.trimmed().endsWith("%%EOF"));
        // When poppler's tools are installed, a real reader must open it and find the forms.
        const QString pdftotext = QStandardPaths::findExecutable("pdftotext");
        if (!pdftotext.isEmpty()) {
            QProcess process;
            process.start(pdftotext, {pdf, "-"});
            QVERIFY(process.waitForFinished(30000));
            const QString extracted = QString::fromUtf8(process.readAllStandardOutput());
            QVERIFY2(extracted.contains("essere") && extracted.contains("siamo") && extracted.contains("essendo"),
                     qPrintable(extracted));
        }
        QCOMPARE(finished.count(), 3);
        sheet.openLastSavedFile();
        QCOMPARE(m_desktop.openedUrls, QList<QUrl>{QUrl::fromLocalFile(pdf)});

        // A folder that cannot be made: the sheet says where it failed.
        QFile blocker(m_dir.filePath("blocker"));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        sheet.setSaveFolder(m_dir.filePath("blocker/inside"));
        QVERIFY(!sheet.perform("saveText"));
        QCOMPARE(sheet.statusMessage(), Strings::text("export.share.save_failed")
                         .arg(QDir::toNativeSeparators(m_dir.filePath("blocker/inside/essere.txt"))));
    }

    void copyAndMailCarryTextAndPage()
    {
        ShareSheetController sheet;
        sheet.setDocuments("essere", "<p>essere</p>", "essere\n\tio\tsono\n");
        QVERIFY(sheet.perform("copyText"));
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("essere\n\tio\tsono\n"));
        m_desktop.mailCommand = "/usr/bin/xdg-email";
        QSignalSpy finished(&sheet, &ShareSheetController::finished);
        QVERIFY(sheet.perform("mail"));
        QCOMPARE(finished.first().at(1).toBool(), true);
        const QStringList arguments = m_desktop.runs.value(0);
        QCOMPARE(arguments.at(arguments.indexOf("--subject") + 1), QStringLiteral("essere"));
        QCOMPARE(arguments.at(arguments.indexOf("--body") + 1), sheet.text());
        QCOMPARE(read(arguments.at(arguments.indexOf("--attach") + 1)), QByteArray("<p>essere</p>"));

        QVERIFY(sheet.statusCopyText().isEmpty());

        // No client at all: the sheet says so and offers the text to copy.
        m_desktop.mailCommand.clear();
        m_desktop.openUrlSucceeds = false;
        QVERIFY(sheet.perform("mail"));
        QCOMPARE(finished.last().at(1).toBool(), false);
        QCOMPARE(sheet.statusMessage(), Strings::text("export.share.mail_unavailable"));
        QCOMPARE(sheet.statusCopyText(), sheet.text());
        QGuiApplication::clipboard()->clear();
        sheet.copyStatusText();
        QCOMPARE(QGuiApplication::clipboard()->text(), sheet.text());
    }

    void bodyAndItsPlainText()
    {
        const QString html = SupportEmailSender::htmlBody("Norvella", environment());
        QCOMPARE(html, QStringLiteral("<br /><br /><br /><hr />App: Norvella<br />Device: Laptop (ThinkPad X13)"
                                      "<br />iOS: Debian GNU/Linux 12 (bookworm)<br />App: 1.2.0 (42)"));
        QCOMPARE(SupportEmailSender::plainTextBody(html),
                 QStringLiteral("\n\n\n----------\nApp: Norvella\nDevice: Laptop (ThinkPad X13)\n"
                                "iOS: Debian GNU/Linux 12 (bookworm)\nApp: 1.2.0 (42)"));
        // Gaps: a machine that names no model, and no version line at all without a build number.
        auto gaps = environment();
        gaps.hardwareIdentifier.clear();
        gaps.buildVersion.clear();
        QVERIFY(SupportEmailSender::htmlBody("Norvella", gaps)
                        .endsWith("Laptop (Unknown Platform)<br />iOS: Debian GNU/Linux 12 (bookworm)<br />App: "));
        // Without the override, the real machine fills it.
        SupportEmailSender::clearEnvironmentOverride();
        const auto e = SupportEmailSender::Environment::current();
        QVERIFY(!e.deviceModel.isEmpty() && !e.systemVersion.isEmpty());
        QCOMPARE(e.shortVersion, BuildInfo::shortVersion());
    }

    void mailGoesToTheClientThenTheContactPage()
    {
        m_desktop.mailCommand = "/usr/bin/xdg-email";
        QObject screen;
        SupportEmailSender sender(&screen, nullptr);
        QSignalSpy alerts(&sender, &SupportEmailSender::alertRequested);
        QSignalSpy contact(&sender, &SupportEmailSender::contactPageOpened);
        sender.sendEmail();
        const QStringList run = m_desktop.runs.value(0);
        QCOMPARE(run.last(), Strings::text("support.email"));
        QCOMPARE(run.at(run.indexOf("--subject") + 1), Strings::text("app.title"));
        QVERIFY(run.at(run.indexOf("--body") + 1).endsWith("\nApp: 1.2.0 (42)"));
        // A mail handed to the client counts as saved: nothing to tell.
        QVERIFY(m_desktop.openedUrls.isEmpty());
        QCOMPARE(alerts.count(), 0);

        // No client: mailto is refused, the contact page then also: the error alert.
        m_desktop.commandSucceeds = false;
        m_desktop.openUrlSucceeds = false;
        sender.sendEmail();
        QCOMPARE(m_desktop.openedUrls.size(), 2);
        const QUrl mailto = m_desktop.openedUrls.first();
        QCOMPARE(mailto.scheme() + ':' + mailto.path(), "mailto:" + Strings::text("support.email"));
        QVERIFY(QUrlQuery(mailto).queryItemValue("body", QUrl::FullyDecoded).contains("\nDevice: Laptop (ThinkPad X13)\n"));
        QCOMPARE(m_desktop.openedUrls.last(), QUrl(BuildInfo::contactUrl()));
        QCOMPARE(alerts.count(), 1);
        QCOMPARE(alerts.first().at(0).toString(), Strings::text("export.email.error"));
        QCOMPARE(sender.alertMessage(), Strings::text("export.email.message"));
        // The alert gives the support address to write from elsewhere.
        QCOMPARE(sender.alertAddress(), Strings::text("support.email"));

        // When the system takes the contact page, the user sees the page and no alert.
        DesktopMail::platform().openUrl = [](const QUrl &url, std::function<void(bool)> done) {
            done(url.scheme() != "mailto");
        };
        sender.sendEmail();
        QCOMPARE(contact.count(), 1);
        QCOMPARE(alerts.count(), 1);
    }

    // A mail about one table names it: the topic follows the app title in the
    // subject, the details open the body above the room for the user's words.
    void aReportNamesWhatItIsAbout()
    {
        m_desktop.mailCommand = "/usr/bin/xdg-email";
        QObject screen;
        SupportEmailSender sender(&screen, nullptr);
        QSignalSpy context(&sender, &SupportEmailSender::contextChanged);
        sender.setTopic("Mistake in “vigere”");
        sender.setDetails("Verb: vigere\nMood: Subjunctive\nTense: Present");
        sender.setDetails("Verb: vigere\nMood: Subjunctive\nTense: Present");
        QCOMPARE(context.count(), 2);
        sender.sendEmail();
        const QStringList run = m_desktop.runs.value(0);
        QCOMPARE(run.at(run.indexOf("--subject") + 1), Strings::text("app.title") + ": Mistake in “vigere”");
        const QString body = run.at(run.indexOf("--body") + 1);
        QVERIFY2(body.startsWith("Verb: vigere\nMood: Subjunctive\nTense: Present\n\n\n----------\nApp: "),
                 qPrintable(body));
        QVERIFY(body.endsWith("\nApp: 1.2.0 (42)"));

        // Blank context is no context: the plain support mail.
        sender.setTopic("  ");
        sender.setDetails("\n");
        QCOMPARE(sender.subject(), Strings::text("app.title"));
        QCOMPARE(SupportEmailSender::htmlBody("Norvella", environment(), " \n"),
                 SupportEmailSender::htmlBody("Norvella", environment()));
    }

    void composerOutcomes()
    {
        // The outcome arrives while the composer is still up; only sent and failed mail tell the user.
        m_desktop.mailCommand = "/usr/bin/xdg-email";
        DesktopMail::platform().run = [](const QString &, const QStringList &, std::function<void(bool)>) {};
        for (const auto &[result, alertTitle] : QList<std::pair<int, QString>>{
                     {1, QString()}, {2, "support.emailsuccess.title"}, {3, "export.email.error"}}) {
            QObject screen;
            SupportEmailSender sender(&screen, nullptr);
            QSignalSpy alerts(&sender, &SupportEmailSender::alertRequested);
            sender.sendEmail();
            QVERIFY(sender.composerPresented());
            sender.mailComposeFinished(result);
            QVERIFY(!sender.composerPresented());
            // A failure is asked for twice but shown once, after the composer has gone.
            QCOMPARE(alerts.count(), alertTitle.isEmpty() ? 0 : 1);
            if (!alertTitle.isEmpty())
                QCOMPARE(alerts.first().at(0).toString(), Strings::text(alertTitle));
        }
    }

    void mailtoEncodesEveryCharacter()
    {
        DesktopMail::Message message{{"a@b.example", "c@d.example"}, "Hi & bye?", "x=1&y=2\n#3 +4 è", {}};
        const QUrl url = DesktopMail::mailtoUrl(message);
        QCOMPARE(url.path(), QStringLiteral("a@b.example,c@d.example"));
        const QUrlQuery query(url);
        QCOMPARE(query.queryItemValue("subject", QUrl::FullyDecoded), QStringLiteral("Hi & bye?"));
        QCOMPARE(query.queryItemValue("body", QUrl::FullyDecoded), QStringLiteral("x=1&y=2\n#3 +4 è"));
    }

private:
    QTemporaryDir m_dir;
    std::unique_ptr<Settings> m_settings;
    FakeDesktop m_desktop;
};

QTEST_MAIN(SharingTest)
#include "tst_sharing.moc"
