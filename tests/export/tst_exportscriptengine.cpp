#include "ExportScriptEngine.h"
#include "Settings.h"
#include "Strings.h"
#include "VerbExport.h"

#include <QDir>
#include <QFile>
#include <QJSEngine>
#include <QTemporaryDir>
#include <QtTest>

using namespace norvella;

namespace {

QString readAll(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(path));
    return QString::fromUtf8(file.readAll());
}

// What mustache makes of a template: its tokens, or the error it throws.
QString parsed(QJSEngine &engine, const QString &templateText)
{
    engine.globalObject().setProperty(QStringLiteral("probe"), templateText);
    return engine
            .evaluate(QStringLiteral("(function () { try { return JSON.stringify(Mustache.parse(probe)); } "
                                     "catch (e) { return 'threw ' + e.message; } })()"))
            .toString();
}

Verb essere()
{
    Verb verb;
    verb.italian = QStringLiteral("essere");
    verb.english = QStringLiteral("to be");
    verb.indicativoPresente = {{QStringLiteral("io"), QStringLiteral("sono"), QStringLiteral("6"), 1, {}}};
    return verb;
}

} // namespace

class ExportScriptEngineTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QVERIFY(m_dir.isValid());
        m_settings.reset(new Settings(m_dir.filePath(QStringLiteral("settings.json"))));
        m_settings->clear();
        PreferredLanguages::setOverride({QStringLiteral("en-US")});
        Strings::shared().selectLanguage({QStringLiteral("en-US")});
    }

    void fasterScannerGivesMustachesOwnTokens_data()
    {
        QTest::addColumn<QString>("templateText");
        for (const QString name : {"export_html.mustache", "export_txt.mustache"})
            QTest::newRow(qPrintable(name)) << readAll(QStringLiteral(":/norvella/export/") + name);
        QTest::newRow("empty") << QString();
        QTest::newRow("text only") << QStringLiteral("no tags\n at all ");
        QTest::newRow("tag at both ends") << QStringLiteral("{{a}} and {{ b }}");
        QTest::newRow("standalone sections") << QStringLiteral("x\n  {{#list}}\n\t{{name}}\n  {{/list}}\ny{{^none}}-{{/none}}");
        QTest::newRow("triple and ampersand") << QStringLiteral("{{{raw}}} {{& raw }} {{!comment}}");
        QTest::newRow("new delimiters") << QStringLiteral("{{=<% %>=}}<% a %> {{b}} <%={{ }}=%>{{c}}");
        QTest::newRow("slash in text") << QStringLiteral("a/b {{/}} c");
        QTest::newRow("unclosed tag") << QStringLiteral("before {{name");
        QTest::newRow("unclosed section") << QStringLiteral("{{#a}} {{b}}");
        QTest::newRow("wrong closing") << QStringLiteral("{{#a}}{{/b}}");
        QTest::newRow("unopened section") << QStringLiteral("text {{/a}}");
    }

    void fasterScannerGivesMustachesOwnTokens()
    {
        QFETCH(QString, templateText);
        const QString script = readAll(QStringLiteral(":/norvella/export/mustache.min.js"));
        QJSEngine plain;
        QVERIFY(!plain.evaluate(script).isError());
        QJSEngine faster;
        QVERIFY(!faster.evaluate(script).isError());
        ExportScriptEngine::speedUpScanner(faster);
        QVERIFY(faster.evaluate(QStringLiteral("Mustache.Scanner.prototype.scanUntil.name")).toString()
                == QStringLiteral("scanUntil"));
        QCOMPARE(parsed(faster, templateText), parsed(plain, templateText));
        // The scanner's rest of the text stays readable for code that asks for it.
        QCOMPARE(faster.evaluate(QStringLiteral("var s = new Mustache.Scanner('ab{{c}}'); s.scanUntil(/\\{\\{/); s.tail"))
                         .toString(),
                 QStringLiteral("{{c}}"));
    }

    void anEngineWithoutMustacheIsLeftAlone()
    {
        QJSEngine engine;
        ExportScriptEngine::speedUpScanner(engine);
        QVERIFY(engine.evaluate(QStringLiteral("typeof Mustache")).toString() == QStringLiteral("undefined"));
    }

    // The engine is kept between exports; what one export's script or template
    // did must not reach the next.
    void keptEngineFollowsTheScriptAndForgetsFailures()
    {
        const VerbExport::Result bundled = VerbExport(*m_settings).render(essere());
        QCOMPARE(bundled.status, VerbExport::Status::Rendered);

        const QString other = bundleCopy();
        writeFile(other + QStringLiteral("/mustache.min.js"),
                  "var Mustache = {render: function (t, v) { return 'other ' + v.italian; }};");
        const VerbExport::Result replaced = VerbExport(*m_settings, other).render(essere());
        QCOMPARE(replaced.documents.html, QStringLiteral("other essere"));
        QCOMPARE(VerbExport(*m_settings).render(essere()).documents.html, bundled.documents.html);

        const QString broken = bundleCopy();
        writeFile(broken + QStringLiteral("/export_html.mustache"), "{{italian}} ` broken");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^JS Error: SyntaxError")));
        QCOMPARE(VerbExport(*m_settings, broken).render(essere()).status, VerbExport::Status::Nothing);
        QCOMPARE(VerbExport(*m_settings).render(essere()).documents.html, bundled.documents.html);

        const QString throwing = bundleCopy();
        writeFile(throwing + QStringLiteral("/mustache.min.js"), "throw new Error('no engine today');");
        QTest::ignoreMessage(QtWarningMsg, "JS Error: Error: no engine today");
        QTest::ignoreMessage(QtWarningMsg, "JS Error: ReferenceError: Mustache is not defined");
        QTest::ignoreMessage(QtWarningMsg, "JS Error: ReferenceError: Mustache is not defined");
        QCOMPARE(VerbExport(*m_settings, throwing).render(essere()).status, VerbExport::Status::Nothing);
        const VerbExport::Result again = VerbExport(*m_settings).render(essere());
        QCOMPARE(again.documents.html, bundled.documents.html);
        QCOMPARE(again.documents.text, bundled.documents.text);
    }

private:
    QString bundleCopy()
    {
        const QString folder = m_dir.filePath(QStringLiteral("bundle-%1").arg(++m_copies));
        QDir().mkpath(folder);
        for (const QString name : {"mustache.min.js", "export_html.mustache", "export_txt.mustache"}) {
            if (!QFile::copy(QStringLiteral(":/norvella/export/") + name, folder + QLatin1Char('/') + name))
                qFatal("cannot copy %s", qPrintable(name));
            QFile::setPermissions(folder + QLatin1Char('/') + name, QFile::ReadOwner | QFile::WriteOwner);
        }
        return folder;
    }

    static void writeFile(const QString &path, const QByteArray &text)
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(text) != text.size())
            qFatal("cannot write %s", qPrintable(path));
    }

    QTemporaryDir m_dir;
    std::unique_ptr<Settings> m_settings;
    int m_copies = 0;
};

QTEST_GUILESS_MAIN(ExportScriptEngineTest)
#include "tst_exportscriptengine.moc"
