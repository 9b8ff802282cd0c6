#include "ExportScriptEngine.h"

#include <QFile>
#include <QJSEngine>
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

} // namespace

class ExportScriptEngineTest : public QObject
{
    Q_OBJECT

private slots:
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
};

QTEST_GUILESS_MAIN(ExportScriptEngineTest)
#include "tst_exportscriptengine.moc"
