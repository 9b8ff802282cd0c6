#include "Settings.h"
#include "Strings.h"
#include "VerbExport.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

using namespace norvella;

namespace {

Verb essere()
{
    Verb verb;
    verb.id = 2;
    verb.italian = "essere";
    verb.english = "to be";
    verb.german = "sein";
    const QStringList pronouns{"io", "tu", "lui/lei", "noi", "voi", "loro"};
    const QStringList forms{"sono", "sei", "è", "siamo", "siete", "sono"};
    for (int i = 0; i < 6; ++i)
        verb.indicativoPresente.append({pronouns[i], forms[i], "6", i + 1, {}});
    verb.infinito = {{QString(), "essere", "1", 0, QString()}};
    verb.other = {{QString(), "unused", "5", 0, {}}};
    return verb;
}

// One form per exported tense, named after its type id, so a title can be matched to its forms.
Verb everyTense()
{
    Verb verb = essere();
    for (int type = 2; type <= 20; ++type) {
        if (type != 5)
            *verb.listForType(QString::number(type)) = {{QString(), QStringLiteral("f%1").arg(type), {}, 0, {}}};
    }
    return verb;
}

// The text export reduced to its headings and forms, one per line.
QStringList outline(const QString &text)
{
    QStringList lines;
    for (const QString &line : text.split('\n')) {
        if (!line.isEmpty() && !line.startsWith('='))
            lines << line.section('\t', -1);
    }
    return lines;
}

// The source templates, by name.
QHash<QString, QString> templates()
{
    QHash<QString, QString> texts;
    for (const QString name : {"export_html.mustache", "export_txt.mustache"}) {
        QFile file(QStringLiteral(NORVELLA_EXPORT_TEMPLATES "/") + name);
        if (file.open(QIODevice::ReadOnly))
            texts.insert(name, QString::fromUtf8(file.readAll()));
    }
    return texts;
}

} // namespace

class VerbExportTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QVERIFY(m_dir.isValid());
        m_settings.reset(new Settings(m_dir.filePath("settings.json")));
        m_settings->clear();
        PreferredLanguages::setOverride({"en-US"});
        Strings::shared().selectLanguage({"en-US"});
    }

    void viewModelHasTheTemplateKeysAndTheLanguages()
    {
        m_settings->setString(SettingsKeys::TranslationLanguage, "de");
        const QJsonObject model = VerbExport::viewModel(essere(), *m_settings, false);
        const QStringList keys = model.keys();
        static const QRegularExpression tag(QStringLiteral("\\{\\{\\{?[#/^]?([A-Za-z_]+)"));
        QSet<QString> expected;
        const auto texts = templates();
        QCOMPARE(texts.size(), 2);
        for (auto it = texts.cbegin(); it != texts.cend(); ++it) {
            for (auto match = tag.globalMatch(it.value()); match.hasNext();)
                expected << match.next().captured(1);
            // The templates travel inside a JS template literal: these would change the script.
            QVERIFY2(!it->contains('`') && !it->contains('\\') && !it->contains("${"), qPrintable(it.key()));
        }
        // Inside the form and note sections: the fields of each form and note.
        expected.remove("pronoun");
        expected.remove("verb");
        expected.remove("verb_marked");
        expected.remove("note");
        // Inside a form's variants.
        expected.remove("variants");
        expected.remove("text");
        expected.remove("irregular");
        expected.remove("first");
        QVERIFY(expected.contains("tense_sub_trapassatoprossimo_italian"));
        expected += QSet<QString>{"german", "french", "spanish", "english", "portuguese"};
        QCOMPARE(QSet<QString>(keys.begin(), keys.end()), expected);
        QCOMPARE(model["translated"].toString(), QStringLiteral("sein"));
        const QJsonObject is = model["IndicativoPresente"].toArray()[2].toObject();
        QCOMPARE(is["pronoun"].toString(), QStringLiteral("lui/lei"));
        QCOMPARE(is["verb"].toString(), QStringLiteral("è"));
        QCOMPARE(model["IndicativoFuturo"].toArray(), QJsonArray());
    }

    void everyTenseIsTitledAndFilledInTemplateOrder_data()
    {
        QTest::addColumn<bool>("showTranslated");
        QTest::addColumn<QString>("expected");
        QTest::newRow("english titles") << false << QStringLiteral(
                "essere|to be|Indicative|Present|f6|Present Perfect|f7|Imperfect|f8|Past Perfect|f9|Past Historic|f12|"
                "Past Anterior|f13|Future|f10|Future Perfect|f11|Subjunctive|Present|f15|Imperfect|f17|Past|f16|"
                "Past Perfect|f18|Conditional|Present|f19|Past|f20|Other forms|Imperative|f14|"
                "Present Participle|f2|Past Participle|f4|Gerund|f3");
        QTest::newRow("italian titles") << true << QStringLiteral(
                "essere|to be|Indicative|Presente|f6|Passato prossimo|f7|Imperfetto|f8|Trapassato prossimo|f9|"
                "Passato remoto|f12|Trapassato remoto|f13|Futuro semplice|f10|Futuro anteriore|f11|Subjunctive|"
                "Presente|f15|Imperfetto|f17|Passato|f16|Trapassato|f18|Conditional|Presente|f19|Passato|f20|"
                "Other forms|Imperativo|f14|Participio presente|f2|Participio passato|f4|Gerundio|f3");
    }

    void everyTenseIsTitledAndFilledInTemplateOrder()
    {
        QFETCH(bool, showTranslated);
        QFETCH(QString, expected);
        m_settings->setBool(SettingsKeys::ShowTranslated, showTranslated);
        const VerbExport::Result result = VerbExport(*m_settings).render(everyTense());
        QCOMPARE(result.status, VerbExport::Status::Rendered);
        QCOMPARE(outline(result.documents.text).join('|'), expected);
        // The page shows the same headings around the same forms.
        QVERIFY(result.documents.html.startsWith("<!DOCTYPE html>"));
        QVERIFY(result.documents.html.contains("<h1>essere</h1>"));
        for (const QString &line : expected.split('|'))
            QVERIFY2(result.documents.html.contains(line), qPrintable(line));
        QVERIFY(!result.documents.html.contains(showTranslated ? "Present Perfect" : "Passato prossimo"));
    }

    void formsWithABackquoteAndMarkupRenderIntact()
    {
        Verb verb = essere();
        verb.indicativoPresente[0].verb = "so`no ${x} \\n <b>&";
        verb.indicativoPresente[1].verb = "va'";
        verb.italian = "es`sere";
        const VerbExport::Result result = VerbExport(*m_settings).render(verb);
        QCOMPARE(result.status, VerbExport::Status::Rendered);
        // Plain text carries the form as it is; the page escapes it for HTML.
        QVERIFY(result.documents.text.contains("\tio\tso`no ${x} \\n <b>&\n"));
        QVERIFY(result.documents.text.contains("\ttu\tva'\n"));
        QVERIFY(result.documents.text.startsWith("es`sere\n"));
        QVERIFY(result.documents.html.contains("so&#x60;no ${x} \\n &lt;b&gt;&amp;"));
        QVERIFY(result.documents.html.contains("va&#39;"));

    }

    // A tense the verb lacks keeps its heading, with a dash and the note, in both documents.
    void emptyTensesShowADashAndANote()
    {
        Verb piovere;
        piovere.italian = "piovere";
        piovere.indicativoPresente = {{"lui/lei", "piove", "6", 3, {}}};
        const VerbExport::Result rain = VerbExport(*m_settings).render(piovere);
        QCOMPARE(rain.status, VerbExport::Status::Rendered);
        const QString note = Strings::text("conjugation.noforms");
        const QStringList lines = rain.documents.text.split('\n');
        QCOMPARE(lines.count("\t—\t" + note), 17);
        const qsizetype heading = lines.indexOf("Imperfect");
        QVERIFY(heading > 0);
        QCOMPARE(lines.value(heading + 1), "\t—\t" + note);
        QCOMPARE(outline(rain.documents.text).mid(0, 4), (QStringList{"piovere", "Indicative", "Present", "piove"}));
        QCOMPARE(rain.documents.html.count(note), 17);
        QCOMPARE(rain.documents.html.count("<h3>"), 18);
        QVERIFY(rain.documents.html.contains("<h3>Gerund</h3><table><tr><td class=v>—</td><td class=p>" + note));
    }

    // How the verb is used prints under its name in both documents; the persons a verb
    // is not used in print as a dash, and its missing imperative says why.
    void usageNotesAndDashesReachBothDocuments()
    {
        Verb piovere;
        piovere.italian = "piovere";
        piovere.usage.thirdPersonOnly = true;
        piovere.usage.auxiliaryNote = "weather";
        piovere.usage.alsoSpelled = "piovare";
        piovere.indicativoPresente = {{"lui/lei", "piove", "6", 3, {}}, {"loro", "piovono", "6", 6, {}}};
        piovere.indicativoPassatoProssimo = {{"lui/lei", "è piovuto / ha piovuto", "7", 3, {}}};
        const QJsonObject model = VerbExport::viewModel(piovere, *m_settings, false);
        QStringList notes;
        for (const QJsonValue &note : model["usage_notes"].toArray())
            notes << note.toObject()["note"].toString();
        QCOMPARE(notes, (QStringList{"Used only in the third person.",
                                     "Weather verb, both auxiliaries are correct: è piovuto, ha piovuto.",
                                     "Also spelled piovare."}));
        QCOMPARE(model["IndicativoPresente"].toArray().size(), 6);
        QCOMPARE(model["IndicativoPresente"].toArray()[0].toObject()["verb"].toString(), QStringLiteral("—"));

        const VerbExport::Result result = VerbExport(*m_settings).render(piovere);
        QCOMPARE(result.status, VerbExport::Status::Rendered);
        const QString &text = result.documents.text;
        QVERIFY2(text.startsWith("piovere\n- Used only in the third person.\n- Weather verb, both auxiliaries are correct:"
                                 " è piovuto, ha piovuto.\n- Also spelled piovare.\n"), qPrintable(text.left(200)));
        QVERIFY(text.contains("\tio\t—\n\ttu\t—\n\tlui/lei\tpiove\n\tnoi\t—\n\tvoi\t—\n\tloro\tpiovono\n"));
        QVERIFY(text.contains("\tio\t—\n\ttu\t—\n\tlui/lei\tè piovuto / ha piovuto\n"));
        const QString noImperative = "No imperative: the verb is used only in the third person.";
        QCOMPARE(text.count(noImperative), 1);
        const QString &html = result.documents.html;
        QVERIFY(html.contains("<ul class=n><li>Used only in the third person.</li><li>Weather verb"));
        QVERIFY(html.contains("<td class=p>io</td><td class=v>—</td>"));
        QCOMPARE(html.count(noImperative), 1);

        // A verb with nothing to say about its use prints no list and no dashes.
        const VerbExport::Result plain = VerbExport(*m_settings).render(essere());
        QVERIFY(!plain.documents.html.contains("<ul") && !plain.documents.text.contains("\n- "));
        QVERIFY(!plain.documents.text.contains(noImperative));
    }

    // Subjunctive pronouns read "che io sia" in both documents; other tenses keep theirs.
    // Without a translation there is no empty line or markup where it would go.
    void documentsReadAsAGrammarPrintsThem()
    {
        Verb verb = essere();
        verb.english.clear();
        verb.congiuntivoPresente = {{"io", "sia", "15", 1, {}}, {"", "sia", "15", 2, {}}};
        verb.congiuntivoTrapassatoProssimo = {{"io", "mi fossi alzato", "18", 1, {}}};
        verb.condizionalePresente = {{"io", "sarei", "19", 1, {}}};
        verb.imperativo = {{"tu", "sii", "14", 1, {}}};
        const QJsonObject model = VerbExport::viewModel(verb, *m_settings, false);
        QCOMPARE(model["translated"].toString(), QString());
        const VerbExport::Result result = VerbExport(*m_settings).render(verb);
        QCOMPARE(result.status, VerbExport::Status::Rendered);
        const QString &text = result.documents.text;
        QVERIFY(text.contains("\tche io\tsia\n"));
        QVERIFY(text.contains("\t\tsia\n")); // a form without a pronoun gets no "che"
        QVERIFY(text.contains("\tche io\tmi fossi alzato\n"));
        QVERIFY(text.contains("\tio\tsarei\n") && text.contains("\ttu\tsii\n"));
        QVERIFY(text.contains("\tio\tsono\n"));
        QCOMPARE(text.count("che "), 2);
        QVERIFY(text.startsWith("essere\n\nIndicative"));
        const QString &html = result.documents.html;
        QVERIFY(html.contains("<td class=p>che io</td><td class=v>sia</td>"));
        QCOMPARE(html.count("che "), 2);
        QVERIFY(!html.contains("<p></p>") && !html.contains("()"));
    }

    void faultyResources()
    {
        for (const QString missing : {"mustache.min.js", "export_txt.mustache"}) {
            const QString folder = bundleCopy();
            QVERIFY(QFile::remove(folder + "/" + missing));
            QTest::ignoreMessage(QtWarningMsg, "Unable to find mustache JS file");
            const VerbExport::Result result = VerbExport(*m_settings, folder).render(essere());
            QCOMPARE(result.status, VerbExport::Status::Nothing);
            QVERIFY(result.documents.html.isNull() && result.documents.text.isNull());
        }
        // One that is there but cannot be read is an error.
        const QString folder = bundleCopy();
        QFile::remove(folder + "/export_txt.mustache");
        QVERIFY(QDir().mkdir(folder + "/export_txt.mustache"));
        const VerbExport::Result result = VerbExport(*m_settings, folder).render(essere());
        QCOMPARE(result.status, VerbExport::Status::Failed);
        QVERIFY(result.error.contains("export_txt.mustache"));
    }

    void brokenOrOddTemplates()
    {
        const QString folder = bundleCopy();
        auto writeHtml = [&](const QByteArray &text) {
            QFile html(folder + "/export_html.mustache");
            QVERIFY(html.open(QIODevice::WriteOnly | QIODevice::Truncate));
            html.write(text);
        };
        // The irregular title key has no plain variant: a template asking for it gets nothing.
        writeHtml("[{{tense_sub_trapassatoprossimo}}][{{tense_sub_trapassatoprossimo_italian}}]");
        QCOMPARE(VerbExport(*m_settings, folder).render(essere()).documents.html, QStringLiteral("[][Past Perfect]"));

        writeHtml("<p>{{italian}}</p> ` broken");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^JS Error: SyntaxError"));
        QCOMPARE(VerbExport(*m_settings, folder).render(essere()).status, VerbExport::Status::Nothing);
    }

private:
    QString bundleCopy()
    {
        const QString folder = m_dir.filePath(QString("bundle-%1").arg(++m_copies));
        QDir().mkpath(folder);
        for (const QString name : {"mustache.min.js", "export_html.mustache", "export_txt.mustache"}) {
            if (!QFile::copy(":/norvella/export/" + name, folder + "/" + name))
                qFatal("cannot copy %s", qPrintable(name));
            QFile::setPermissions(folder + "/" + name, QFile::ReadOwner | QFile::WriteOwner);
        }
        return folder;
    }

    QTemporaryDir m_dir;
    std::unique_ptr<Settings> m_settings;
    int m_copies = 0;
};

QTEST_GUILESS_MAIN(VerbExportTest)
#include "tst_verbexport.moc"
