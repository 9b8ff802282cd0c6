#include "CrashLog.h"
#include "DesktopMail.h"
#include "Settings.h"
#include "ShareSheetController.h"
#include "Strings.h"
#include "VerbRef.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
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
} // namespace

class ShareSheetTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        CrashLog::setLogFilePath(m_dir.filePath("norvella.log"));
        Strings::shared().selectLanguage({"en"});
        PreferredLanguages::setOverride({"en"});
    }

    void init()
    {
        m_settings.reset(new Settings(m_dir.filePath("settings.json")));
        m_settings->clear();
        m_opened.clear();
        DesktopMail::Platform p;
        p.findMailCommand = [] { return QString(); };
        p.run = [](const QString &, const QStringList &, std::function<void(bool)> done) { done(false); };
        p.openUrl = [this](const QUrl &url) {
            m_opened << url;
            return m_openSucceeds;
        };
        DesktopMail::platform() = p;
        m_openSucceeds = true;
    }

    void cleanupTestCase() { DesktopMail::platform() = DesktopMail::systemPlatform(); }

    void exclusionListIsHonoured()
    {
        ShareSheetController sheet;
        QCOMPARE(sheet.excludedActivityTypes(), QStringList{ShareSheetController::PostToSocialNetwork});
        QCOMPARE(sheet.offeredActivityTypes(), (QStringList{"copyText", "saveHtml", "saveText", "savePdf", "mail"}));
        QSignalSpy changed(&sheet, &ShareSheetController::activitiesChanged);
        sheet.setExcludedActivityTypes({"savePdf", "mail"});
        QCOMPARE(changed.count(), 1);
        QCOMPARE(sheet.offeredActivityTypes(), (QStringList{"copyText", "saveHtml", "saveText"}));
        sheet.setDocuments("essere", "<p>x</p>", "x");
        sheet.setSaveFolder(m_dir.filePath("excluded"));
        QVERIFY(!sheet.perform("savePdf"));
        QVERIFY(!QFile::exists(m_dir.filePath("excluded/essere.pdf")));
        QVERIFY(!sheet.perform(ShareSheetController::PostToSocialNetwork));
    }

    void exportVerbRendersAndTitlesTheSheet()
    {
        ShareSheetController sheet;
        sheet.setSettings(m_settings.get());
        VerbRef ref(essere());
        QVERIFY(sheet.exportVerb(&ref));
        QVERIFY(sheet.html().contains("<h1>essere</h1>"));
        QVERIFY(sheet.text().startsWith("essere\nto be\n"));
        QCOMPARE(sheet.title(), Strings::text("export.share.title").arg("essere"));

        ShareSheetController empty;
        QTest::ignoreMessage(QtWarningMsg,
                             "Unable to export verb. Most likely an issue with the template (or no verb, somehow)");
        QVERIFY(!empty.exportVerb(nullptr));
        QVERIFY(empty.html().isNull());
    }

    void fileNamesCarryTheVerb()
    {
        ShareSheetController sheet;
        sheet.setDocuments("andare", "", "");
        QCOMPARE(sheet.fileName("html"), QStringLiteral("andare.html"));
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
        QSignalSpy finished(&sheet, &ShareSheetController::finished);

        QVERIFY(sheet.perform("saveHtml"));
        QFile html(m_dir.filePath("Documents/essere.html"));
        QVERIFY(html.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(html.readAll()), sheet.html());
        QCOMPARE(sheet.lastSavedPath(), html.fileName());

        QVERIFY(sheet.perform("saveText"));
        QFile text(m_dir.filePath("Documents/essere.txt"));
        QVERIFY(text.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(text.readAll()), sheet.text());
        QCOMPARE(sheet.statusMessage(), Strings::text("export.share.saved").arg(QDir::toNativeSeparators(text.fileName())));

        QVERIFY(sheet.perform("savePdf"));
        const QString pdf = m_dir.filePath("Documents/essere.pdf");
        QFile file(pdf);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        QVERIFY(bytes.startsWith("%PDF-"));
        QVERIFY(bytes.trimmed().endsWith("%%EOF"));
        QCOMPARE(bytes.count("/Type /Page\n") + bytes.count("/Type /Page\r") + bytes.count("/Type /Page "), 1);
        // When poppler's tools are installed, a real reader must open it and find the forms.
        const QString pdftotext = QStandardPaths::findExecutable("pdftotext");
        if (!pdftotext.isEmpty()) {
            QProcess process;
            process.start(pdftotext, {pdf, "-"});
            QVERIFY(process.waitForFinished(30000));
            QCOMPARE(process.exitCode(), 0);
            const QString extracted = QString::fromUtf8(process.readAllStandardOutput());
            QVERIFY2(extracted.contains("essere") && extracted.contains("siamo") && extracted.contains("essendo"),
                     qPrintable(extracted));
        }

        QCOMPARE(finished.count(), 3);
        sheet.openLastSavedFile();
        QCOMPARE(m_opened, QList<QUrl>{QUrl::fromLocalFile(pdf)});
    }

    void unwritableFolderReportsFailure()
    {
        ShareSheetController sheet;
        sheet.setDocuments("essere", "<p>x</p>", "x");
        QFile blocker(m_dir.filePath("blocker"));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        sheet.setSaveFolder(m_dir.filePath("blocker/inside"));
        QVERIFY(!sheet.perform("saveText"));
        QCOMPARE(sheet.statusMessage(), Strings::text("export.share.save_failed")
                         .arg(QDir::toNativeSeparators(m_dir.filePath("blocker/inside/essere.txt"))));
    }

    void copyPutsTheTextOnTheClipboard()
    {
        ShareSheetController sheet;
        sheet.setDocuments("essere", "<p>essere</p>", "essere\n\tio\tsono\n");
        QVERIFY(sheet.perform("copyText"));
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("essere\n\tio\tsono\n"));
        QCOMPARE(sheet.statusMessage(), Strings::text("export.share.copied"));
    }

    void mailCarriesTextAndPage()
    {
        ShareSheetController sheet;
        sheet.setDocuments("essere", "<p>essere</p>", "essere\n\tio\tsono\n");
        QList<QStringList> runs;
        DesktopMail::platform().findMailCommand = [] { return QStringLiteral("/usr/bin/xdg-email"); };
        DesktopMail::platform().run = [&](const QString &, const QStringList &arguments, std::function<void(bool)> done) {
            runs << arguments;
            done(true);
        };
        QSignalSpy finished(&sheet, &ShareSheetController::finished);
        QVERIFY(sheet.perform("mail"));
        QCOMPARE(finished.first().at(1).toBool(), true);
        const QStringList arguments = runs.value(0);
        QCOMPARE(arguments.at(arguments.indexOf("--subject") + 1), QStringLiteral("essere"));
        QCOMPARE(arguments.at(arguments.indexOf("--body") + 1), sheet.text());
        QFile attachment(arguments.at(arguments.indexOf("--attach") + 1));
        QVERIFY(attachment.fileName().endsWith("/essere.html"));
        QVERIFY(attachment.open(QIODevice::ReadOnly));
        QCOMPARE(attachment.readAll(), QByteArray("<p>essere</p>"));

        // No client at all: the sheet says so.
        DesktopMail::platform().findMailCommand = [] { return QString(); };
        m_openSucceeds = false;
        QVERIFY(sheet.perform("mail"));
        QCOMPARE(finished.last().at(1).toBool(), false);
        QCOMPARE(sheet.statusMessage(), Strings::text("export.share.mail_unavailable"));
    }

private:
    QTemporaryDir m_dir;
    std::unique_ptr<Settings> m_settings;
    QList<QUrl> m_opened;
    bool m_openSucceeds = true;
};

QTEST_MAIN(ShareSheetTest)
#include "tst_sharesheet.moc"
