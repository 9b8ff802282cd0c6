// The PDF export read back by a real PDF reader (poppler's pdftotext): every
// tense, its heading with all its persons, lands on one page, for real verbs of
// the built master at A4 and Letter. Writing on a full disk and into a folder
// that cannot be written fails cleanly: a log line, the sheet's message, and
// no file left that could pass for a good export.
#include "CrashLog.h"
#include "DatabaseQueue.h"
#include "Settings.h"
#include "ShareSheetController.h"
#include "Strings.h"
#include "VerbExport.h"
#include "VerbLookup.h"
#include "VerbViewBookkeeping.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextDocumentFragment>
#include <QtTest>

#include <cstdio>

using namespace norvella;

namespace {
const char *const ChildVariable = "NORVELLA_PDF_ON_FULL_DISK";

struct Tense
{
    // The mood's heading when this tense is the first under it.
    QString mood;
    QString heading;
    // One entry per person row: its pronoun and forms as a reader sees them.
    QStringList rows;
};

// Text compared without its spaces: a reader may or may not put one between two table cells.
QString folded(const QString &text)
{
    QString result = text;
    result.remove(QRegularExpression(QStringLiteral("\\s+")));
    return result;
}

QString plain(const QString &html)
{
    return folded(QTextDocumentFragment::fromHtml(html).toPlainText());
}

// The tenses of an HTML export in document order, each with the text of its rows.
QList<Tense> tensesOf(const QString &html)
{
    QList<Tense> tenses;
    static const QRegularExpression part(QStringLiteral("<h2>(.*?)</h2>|<h3>(.*?)</h3><table>(.*?)</table>"));
    static const QRegularExpression row(QStringLiteral("<tr>(.*?)</tr>"));
    QString mood;
    for (const auto &match : part.globalMatch(html)) {
        if (match.capturedLength(1) > 0) {
            mood = plain(match.captured(1));
            continue;
        }
        Tense tense{mood, plain(match.captured(2)), {}};
        for (const auto &cells : row.globalMatch(match.captured(3)))
            tense.rows << plain(cells.captured(1));
        tenses << tense;
        mood.clear();
    }
    return tenses;
}

// Each page's text in drawing order, folded.
QStringList pagesOf(const QString &pdf, QString *error)
{
    QProcess process;
    process.start(QStringLiteral("pdftotext"), {QStringLiteral("-raw"), QStringLiteral("-enc"), QStringLiteral("UTF-8"),
                                                pdf, QStringLiteral("-")});
    if (!process.waitForFinished(60000) || process.exitCode() != 0) {
        *error = QString::fromUtf8(process.readAllStandardError());
        return {};
    }
    QStringList pages = QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\f'));
    // pdftotext ends the last page with a form feed too.
    if (!pages.isEmpty() && pages.last().trimmed().isEmpty())
        pages.removeLast();
    for (QString &page : pages)
        page = folded(page);
    return pages;
}

QString pdfInfo(const QString &pdf)
{
    QProcess process;
    process.start(QStringLiteral("pdfinfo"), {pdf});
    process.waitForFinished(60000);
    return QString::fromUtf8(process.readAllStandardOutput());
}

// The PDF of `essere` written into a tmpfs far too small for it, inside a
// user and mount namespace; says on stderr what the sheet said and what the
// folder holds afterwards.
int writeOnFullDisk(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    const QString folder = qEnvironmentVariable(ChildVariable);
    CrashLog::setLogFilePath(QDir(folder).filePath(QStringLiteral("../norvella.log")));
    PreferredLanguages::setOverride({QStringLiteral("en")});
    Strings::shared().selectLanguage({QStringLiteral("en")});
    ShareSheetController sheet;
    sheet.setSaveFolder(folder);
    // Some fifty pages: far more than the disk holds.
    QString html = QStringLiteral("<h1>essere</h1>");
    for (int line = 1; line <= 2000; ++line)
        html += QStringLiteral("<p>%1. sono sei è siamo siete sono</p>").arg(line);
    sheet.setDocuments(QStringLiteral("essere"), html, QStringLiteral("essere"));
    const bool ok = sheet.perform(ShareSheetController::SavePdf);
    std::fprintf(stderr, "child: saved=%d\nchild: status=%s\nchild: files=%s\n", ok ? 1 : 0,
                 qPrintable(sheet.statusMessage()), qPrintable(QDir(folder).entryList(QDir::Files | QDir::Hidden).join(',')));
    return 0;
}

} // namespace

class PdfExportTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QVERIFY(m_dir.isValid());
        CrashLog::setLogFilePath(m_dir.filePath(QStringLiteral("norvella.log")));
        PreferredLanguages::setOverride({QStringLiteral("en")});
        Strings::shared().selectLanguage({QStringLiteral("en")});
        const QString db = m_dir.filePath(QStringLiteral("verbs.db"));
        QVERIFY(QFile::copy(QStringLiteral(NORVELLA_MASTER_DB), db));
        QVERIFY(QFile::setPermissions(db, QFile::ReadOwner | QFile::WriteOwner));
        m_queue = std::make_shared<DatabaseQueue>(db);
        m_settings = std::make_unique<Settings>(m_dir.filePath(QStringLiteral("settings.json")));
        m_settings->clear();
        if (QStandardPaths::findExecutable(QStringLiteral("pdftotext")).isEmpty())
            QSKIP("pdftotext (poppler-utils, installed by scripts/packages.txt) is needed to read the PDF back");
    }

    void everyTenseStaysOnOnePage_data()
    {
        QTest::addColumn<QString>("verb");
        QTest::addColumn<int>("pageSize");
        QTest::addColumn<QString>("paperName");
        const QList<std::pair<QString, QString>> verbs{
                {"parlare", "short regular"},
                {"essere", "auxiliary"},
                {"andarsene", "long pronominal"},
                {"appartenere", "both auxiliaries"},
        };
        for (const auto &[verb, kind] : verbs) {
            QTest::addRow("%s (%s), A4", qPrintable(verb), qPrintable(kind)) << verb << int(QPageSize::A4) << "A4";
            QTest::addRow("%s (%s), Letter", qPrintable(verb), qPrintable(kind))
                    << verb << int(QPageSize::Letter) << "letter";
        }
    }

    void everyTenseStaysOnOnePage()
    {
        QFETCH(QString, verb);
        QFETCH(int, pageSize);
        QFETCH(QString, paperName);
        const QString html = exportOf(verb);
        const QList<Tense> tenses = tensesOf(html);
        // Eighteen tenses in four moods, each with at least one row.
        QCOMPARE(tenses.size(), 18);

        const QString pdf = m_dir.filePath(QStringLiteral("%1-%2.pdf").arg(verb, paperName));
        QVERIFY(ShareSheetController::writePdf(html, pdf, QPageSize(QPageSize::PageSizeId(pageSize))));
        QVERIFY2(pdfInfo(pdf).contains(QRegularExpression(QStringLiteral("Page size:.*\\(%1\\)").arg(paperName))),
                 qPrintable(pdfInfo(pdf)));
        QString error;
        const QStringList pages = pagesOf(pdf, &error);
        QVERIFY2(pages.size() >= 2, qPrintable(error));
        // A page that holds nothing but its number would be a break too many.
        for (int page = 0; page < pages.size(); ++page)
            QVERIFY2(pages[page] != QString::number(page + 1), qPrintable(QStringLiteral("page %1 is blank").arg(page + 1)));
        QVERIFY2(pages.first().startsWith(verb), qPrintable(pages.first().left(80)));

        // Walk the tenses in order: heading, then every row, each found after the last.
        int page = 0;
        qsizetype at = 0;
        auto find = [&](const QString &what) {
            for (; page < pages.size(); ++page, at = 0) {
                const qsizetype found = pages[page].indexOf(what, at);
                if (found >= 0) {
                    at = found + what.size();
                    return page;
                }
            }
            return -1;
        };
        int moods = 0;
        for (const Tense &tense : tenses) {
            // A mood's heading stays with its first tense.
            const int moodPage = tense.mood.isEmpty() ? -1 : find(tense.mood);
            moods += tense.mood.isEmpty() ? 0 : 1;
            const int headingPage = find(tense.heading);
            if (!tense.mood.isEmpty())
                QVERIFY2(moodPage == headingPage, qPrintable(QStringLiteral("%1 on page %2, its first tense on page %3")
                                                                     .arg(tense.mood)
                                                                     .arg(moodPage + 1)
                                                                     .arg(headingPage + 1)));
            QVERIFY2(headingPage >= 0, qPrintable("no heading " + tense.heading));
            QVERIFY(!tense.rows.isEmpty());
            if (&tense == &tenses.first())
                QVERIFY2(headingPage == 0, "the first tense left the verb's first page");
            for (const QString &row : tense.rows) {
                const int rowPage = find(row);
                QVERIFY2(rowPage == headingPage, qPrintable(QStringLiteral("%1: \"%2\" on page %3, its heading on page %4")
                                                                    .arg(tense.heading, row)
                                                                    .arg(rowPage + 1)
                                                                    .arg(headingPage + 1)));
            }
        }
        QCOMPARE(moods, 4);
    }

    // A tense taller than any page still prints whole, split between its rows.
    void aTenseTallerThanAPageIsSplitNotLost()
    {
        QString rows;
        for (int i = 1; i <= 120; ++i)
            rows += QStringLiteral("<tr><td class=p>p%1</td><td class=v>form%1.</td></tr>").arg(i);
        const QString html = QStringLiteral("<h1>lungo</h1><h2>Indicative</h2><table width=100%><tr><td class=t width=50%>"
                                            "<h3>Present</h3><table>%1</table></td><td class=t width=50%><h3>Past</h3>"
                                            "<table><tr><td class=p>io</td><td class=v>x</td></tr></table></td></tr></table>")
                                     .arg(rows);
        const QString pdf = m_dir.filePath(QStringLiteral("tall.pdf"));
        QVERIFY(ShareSheetController::writePdf(html, pdf, QPageSize(QPageSize::A4)));
        QString error;
        const QStringList pages = pagesOf(pdf, &error);
        QVERIFY2(pages.size() >= 3, qPrintable(error));
        // Starts under the verb, on the first page; no row is lost or cut in two.
        QVERIFY(pages.first().contains(QStringLiteral("Presentp1form1.")));
        const QString all = pages.join(QString());
        for (int i = 1; i <= 120; ++i)
            QVERIFY2(all.contains(QStringLiteral("p%1form%1.").arg(i)), qPrintable(QString::number(i)));
    }

    void theRegionChoosesThePaper()
    {
        QCOMPARE(ShareSheetController::paperFor(QLocale(QLocale::English, QLocale::UnitedStates)).id(), QPageSize::Letter);
        QCOMPARE(ShareSheetController::paperFor(QLocale(QLocale::French, QLocale::Canada)).id(), QPageSize::Letter);
        QCOMPARE(ShareSheetController::paperFor(QLocale(QLocale::Spanish, QLocale::Mexico)).id(), QPageSize::Letter);
        QCOMPARE(ShareSheetController::paperFor(QLocale(QLocale::English, QLocale::UnitedKingdom)).id(), QPageSize::A4);
        QCOMPARE(ShareSheetController::paperFor(QLocale(QLocale::Italian, QLocale::Italy)).id(), QPageSize::A4);
        QCOMPARE(ShareSheetController::paperFor(QLocale::c()).id(), QPageSize::A4);
    }

    void aFolderThatCannotBeMadeKeepsNoFile()
    {
        ShareSheetController sheet;
        sheet.setSettings(m_settings.get());
        // A file where the folder should be: no user, root included, can save under it.
        QFile blocker(m_dir.filePath(QStringLiteral("blocker")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        const QString folder = m_dir.filePath(QStringLiteral("blocker/inside"));
        sheet.setSaveFolder(folder);
        sheet.setDocuments(QStringLiteral("essere"), QStringLiteral("<h1>essere</h1>"), QStringLiteral("essere"));
        QVERIFY(!sheet.perform(ShareSheetController::SavePdf));
        const QString path = QDir(folder).filePath(QStringLiteral("essere.pdf"));
        QCOMPARE(sheet.statusMessage(), Strings::text("export.share.save_failed").arg(QDir::toNativeSeparators(path)));
        QVERIFY(sheet.lastSavedPath().isEmpty());
        QVERIFY2(log().contains(QStringLiteral("Unable to save the export to %1: ").arg(path)), qPrintable(log()));
    }

    void aFullDiskKeepsNoHalfFile()
    {
        if (QProcess::execute(QStringLiteral("unshare"), {QStringLiteral("-rm"), QStringLiteral("true")}) != 0)
            QSKIP("no user and mount namespaces here for a small tmpfs (unshare -rm)");
        const QString disk = m_dir.filePath(QStringLiteral("disk"));
        QVERIFY(QDir().mkpath(disk));
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QString::fromLatin1(ChildVariable), disk);
        env.insert(QStringLiteral("SELF"), QCoreApplication::applicationFilePath());
        env.insert(QStringLiteral("DISK"), disk);
        QProcess run;
        run.setProcessEnvironment(env);
        run.start(QStringLiteral("unshare"), {QStringLiteral("-rm"), QStringLiteral("sh"), QStringLiteral("-c"),
                                              QStringLiteral("mount -t tmpfs -o size=16k tmpfs \"$DISK\" || exit 77; "
                                                             "exec \"$SELF\"")});
        QVERIFY(run.waitForFinished(120000));
        const QByteArray err = run.readAllStandardError();
        if (run.exitCode() == 77)
            QSKIP("no tmpfs can be mounted here");
        QVERIFY2(run.exitStatus() == QProcess::NormalExit && run.exitCode() == 0, err.constData());
        const QString path = QDir(disk).filePath(QStringLiteral("essere.pdf"));
        QVERIFY2(err.contains("child: saved=0\n"), err.constData());
        QVERIFY2(err.contains(("child: status=" + Strings::text("export.share.save_failed")
                                                          .arg(QDir::toNativeSeparators(path)) + "\n").toUtf8()),
                 err.constData());
        QVERIFY2(err.contains("child: files=\n"), err.constData());
        QVERIFY2(log().contains(QStringLiteral("Unable to save the export to %1").arg(path)), qPrintable(log()));
    }

private:
    QString exportOf(const QString &italian)
    {
        const VerbPtr verb = verbByInfinitive(*m_queue, italian);
        if (!verb)
            return {};
        bool read = false;
        m_queue->inDatabase([&](Database &db) { read = VerbViewBookkeeping::readConjugations(db, *verb); });
        if (!read)
            return {};
        return VerbExport(*m_settings).render(*verb).documents.html;
    }

    QString log() const
    {
        QFile file(CrashLog::logFilePath());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    QTemporaryDir m_dir;
    std::shared_ptr<DatabaseQueue> m_queue;
    std::unique_ptr<Settings> m_settings;
};

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsSet(ChildVariable))
        return writeOnFullDisk(argc, argv);
    QGuiApplication app(argc, argv);
    PdfExportTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_pdfexport.moc"
