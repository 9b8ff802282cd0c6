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

ConjugationList persons(const QStringList &forms)
{
    static const QStringList pronouns{"io", "tu", "lui/lei", "noi", "voi", "loro"};
    ConjugationList list;
    for (int i = 0; i < forms.size(); ++i)
        list.append({pronouns.value(i), forms[i], QString(), i + 1, QString()});
    return list;
}

Verb essere()
{
    Verb verb;
    verb.id = 2;
    verb.italian = "essere";
    verb.english = "to be";
    verb.german = "sein";
    verb.french = "être";
    verb.spanish = "ser, estar";
    verb.portuguese = "ser, estar";
    verb.dutch = "zijn";
    verb.turkish = "olmak";
    verb.simplified_french = "etre";
    verb.infinito = {{QString(), "essere", "1", 0, QString()}};
    verb.indicativoPresente = persons({"sono", "sei", "è", "siamo", "siete", "sono"});
    verb.indicativoImperfetto = persons({"ero", "eri", "era", "eravamo", "eravate", "erano"});
    verb.indicativoPassatoProssimo = persons({"sono stato/a", "sei stato/a", "è stato/a", "siamo stati/e",
                                              "siete stati/e", "sono stati/e"});
    verb.congiuntivoTrapassatoProssimo = persons({"fossi stato/a", "fossi stato/a", "fosse stato/a",
                                                  "fossimo stati/e", "foste stati/e", "fossero stati/e"});
    verb.condizionalePresente = persons({"sarei", "saresti", "sarebbe", "saremmo", "sareste", "sarebbero"});
    verb.imperativo = {{"tu", "sii", "14", 2, {}}, {"lui/lei", "sia", "14", 3, {}}};
    verb.gerundio = {{QString(), "essendo", "3", 0, {}}};
    verb.participioPassato = {{QString(), "stato", "4", 0, {}}, {QString(), "stata", "4", 0, {}}};
    verb.other = {{QString(), "unused", "5", 0, {}}};
    return verb;
}

const QStringList titleViewKeys{
        "tense_ind_presente", "tense_ind_imperfetto", "tense_ind_passatoremoto", "tense_ind_futuro",
        "tense_ind_futuroanteriore", "tense_ind_passatoprossimo", "tense_ind_trapassatoprossimo",
        "tense_ind_trapassatoremoto", "tense_sub_presente", "tense_sub_imperfetto", "tense_sub_passatoprossimo",
        "tense_sub_trapassatoprossimo_italian", "tense_con_present", "tense_con_past", "tense_other_imperative",
        "tense_other_participiopresente", "tense_other_pastparticiple", "tense_other_gerund"};
const QStringList titleKeys{
        "tense.ind.presente", "tense.ind.imperfetto", "tense.ind.passatoremoto", "tense.ind.futuro",
        "tense.ind.futuroanteriore", "tense.ind.passatoprossimo", "tense.ind.trapassatoprossimo",
        "tense.ind.trapassatoremoto", "tense.sub.presente", "tense.sub.imperfetto", "tense.sub.passatoprossimo",
        "tense.sub.trapassatoprossimo", "tense.con.present", "tense.con.past", "tense.other.imperative",
        "tense.other.participiopresente", "tense.other.pastparticiple", "tense.other.gerund"};
const QStringList listKeys{
        "IndicativoPresente", "IndicativoImperfetto", "IndicativoPassatoRemoto", "IndicativoFuturo",
        "IndicativoFuturoAnteriore", "IndicativoPassatoProssimo", "IndicativoTrapassatoProssimo",
        "IndicativoTrapassatoRemoto", "CongiuntivoPresente", "CongiuntivoImperfetto", "CongiuntivoPassatoProssimo",
        "CongiuntivoTrapassatoProssimo", "CondizionalePresente", "CondizionalePassato", "Imperativo",
        "ParticipioPresente", "ParticipioPassato", "Gerundio"};

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

    void viewModelHasExactlyTheTemplateKeys()
    {
        const QJsonObject model = VerbExport::viewModel(essere(), *m_settings, false);
        QStringList expected{"german", "french", "spanish", "italian", "english", "portuguese", "translated",
                             "indicative", "subjunctive", "conditional", "other"};
        expected << titleViewKeys << listKeys;
        QStringList actual = model.keys();
        expected.sort();
        actual.sort();
        QCOMPARE(actual, expected);
        // The irregular title key stands alone: there is no plain variant.
        QVERIFY(!model.contains("tense_sub_trapassatoprossimo"));
        QVERIFY(!model.contains("dutch") && !model.contains("turkish") && !model.contains("Infinito"));
    }

    void viewModelValues_data()
    {
        QTest::addColumn<bool>("showTranslated");
        QTest::addColumn<QString>("suffix");
        QTest::newRow("plain titles") << false << QString();
        QTest::newRow("italian titles") << true << QStringLiteral("_italian");
    }

    void viewModelValues()
    {
        QFETCH(bool, showTranslated);
        QFETCH(QString, suffix);
        m_settings->setString(SettingsKeys::TranslationLanguage, "de");
        const QJsonObject model = VerbExport::viewModel(essere(), *m_settings, showTranslated);
        QCOMPARE(model["italian"].toString(), QStringLiteral("essere"));
        QCOMPARE(model["french"].toString(), QStringLiteral("être"));
        QCOMPARE(model["spanish"].toString(), QStringLiteral("ser, estar"));
        QCOMPARE(model["translated"].toString(), QStringLiteral("sein"));
        QCOMPARE(model["indicative"].toString(), Strings::text("tense.ind"));
        QCOMPARE(model["other"].toString(), Strings::text("tense.other"));
        for (int i = 0; i < titleViewKeys.size(); ++i) {
            const QString key = titleKeys[i] + suffix;
            QVERIFY2(Strings::text(key) != key, qPrintable("missing string " + key));
            QCOMPARE(model[titleViewKeys[i]].toString(), Strings::text(key));
        }
        const QJsonArray presente = model["IndicativoPresente"].toArray();
        QCOMPARE(presente.size(), 6);
        QCOMPARE(presente[2].toObject(), (QJsonObject{{"pronoun", "lui/lei"}, {"verb", "è"}}));
        QCOMPARE(model["Gerundio"].toArray()[0].toObject(), (QJsonObject{{"pronoun", ""}, {"verb", "essendo"}}));
        QCOMPARE(model["IndicativoFuturo"].toArray(), QJsonArray());
    }

    void plainAndItalianTitlesDifferInEnglish()
    {
        const QJsonObject plain = VerbExport::viewModel(essere(), *m_settings, false);
        const QJsonObject italian = VerbExport::viewModel(essere(), *m_settings, true);
        QCOMPARE(plain["tense_ind_passatoprossimo"].toString(), QStringLiteral("Present Perfect"));
        QCOMPARE(italian["tense_ind_passatoprossimo"].toString(), QStringLiteral("Passato prossimo"));
    }

    void renderThroughMustacheFollowsTheSetting()
    {
        m_settings->setBool(SettingsKeys::ShowTranslated, true);
        const VerbExport exporter(*m_settings);
        const VerbExport::Result result = exporter.render(essere());
        QCOMPARE(result.status, VerbExport::Status::Rendered);
        QVERIFY(result.documents.html.startsWith("<!DOCTYPE html>"));
        QVERIFY(result.documents.html.contains("<h1>essere</h1>"));
        QVERIFY(result.documents.html.contains("Passato prossimo"));
        QVERIFY(!result.documents.html.contains("Present Perfect"));
        QVERIFY(result.documents.text.contains("\tlui/lei\tè\n"));
        QVERIFY(result.documents.text.contains("\tio\tfossi stato/a\n"));
    }

    void formsWithABackquoteAndMarkupRenderIntact()
    {
        Verb verb = essere();
        verb.indicativoPresente[0].verb = "so`no ${x} \\n <b>&";
        verb.italian = "es`sere";
        const VerbExport::Result result = VerbExport(*m_settings).render(verb);
        QCOMPARE(result.status, VerbExport::Status::Rendered);
        // Plain text carries the form as it is; the page escapes it for HTML.
        QVERIFY(result.documents.text.contains("\tio\tso`no ${x} \\n <b>&\n"));
        QVERIFY(result.documents.text.startsWith("es`sere\n"));
        QVERIFY(result.documents.html.contains("so&#x60;no ${x} \\n &lt;b&gt;&amp;"));
    }

    void textKeepsApostrophesUnescaped()
    {
        Verb verb = essere();
        verb.imperativo = {{"tu", "va'", "14", 2, {}}};
        const VerbExport::Result result = VerbExport(*m_settings).render(verb);
        QVERIFY(result.documents.text.contains("\ttu\tva'\n"));
        QVERIFY(result.documents.html.contains("va&#39;"));
    }

    void emptyTenseRendersNothing()
    {
        Verb verb;
        verb.italian = "piovere";
        verb.english = "to rain";
        verb.indicativoPresente = {{"lui/lei", "piove", "6", 3, {}}};
        const VerbExport::Result result = VerbExport(*m_settings).render(verb);
        QCOMPARE(result.status, VerbExport::Status::Rendered);
        // Only the one filled tense has a title and rows; empty tenses leave no trace.
        for (const QString &title : {"Imperfect", "Past Historic", "Future", "Past Perfect", "Gerund",
                                     "Imperative", "Past Participle"}) {
            QVERIFY2(!result.documents.text.contains(title), qPrintable(title));
            QVERIFY2(!result.documents.html.contains(">" + title + "<"), qPrintable(title));
        }
        QCOMPARE(result.documents.text.count('\t'), 2);
        QCOMPARE(result.documents.html.count("<tr><td class=\"pronoun\">"), 1);
        QVERIFY(result.documents.text.contains("Present\n\tlui/lei\tpiove\n"));
    }

    void templatesSurviveTheRenderCall()
    {
        // The templates travel inside a template literal: these would change the script.
        for (const QString name : {"export_html.mustache", "export_txt.mustache"}) {
            QFile file(QStringLiteral(NORVELLA_EXPORT_TEMPLATES "/") + name);
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QString text = QString::fromUtf8(file.readAll());
            QVERIFY2(!text.contains('`') && !text.contains('\\') && !text.contains("${"), qPrintable(name));
        }
    }

    void renderCallIsPlainConcatenation()
    {
        QCOMPARE(VerbExport::renderCall("<p>{{italian}}</p>", "{\"italian\":\"a`b\"}"),
                 QStringLiteral("Mustache.render(`<p>{{italian}}</p>`, {\"italian\":\"a`b\"});"));
    }

    void eachMissingResourceGivesNoExport_data()
    {
        QTest::addColumn<QString>("missing");
        QTest::newRow("script") << "mustache.min.js";
        QTest::newRow("html") << "export_html.mustache";
        QTest::newRow("text") << "export_txt.mustache";
    }

    void eachMissingResourceGivesNoExport()
    {
        QFETCH(QString, missing);
        const QString folder = bundleCopy();
        QVERIFY(QFile::remove(folder + "/" + missing));
        QTest::ignoreMessage(QtWarningMsg, "Unable to find mustache JS file");
        const VerbExport::Result result = VerbExport(*m_settings, folder).render(essere());
        QCOMPARE(result.status, VerbExport::Status::Nothing);
        QVERIFY(result.documents.html.isNull() && result.documents.text.isNull());
    }

    void unreadableResourceIsAnError()
    {
        const QString folder = bundleCopy();
        QFile::remove(folder + "/export_txt.mustache");
        QVERIFY(QDir().mkdir(folder + "/export_txt.mustache"));
        const VerbExport::Result result = VerbExport(*m_settings, folder).render(essere());
        QCOMPARE(result.status, VerbExport::Status::Failed);
        QVERIFY(result.error.contains("export_txt.mustache"));
    }

    void templateWithABackquoteBreaksTheRender()
    {
        const QString folder = bundleCopy();
        QFile html(folder + "/export_html.mustache");
        QVERIFY(html.open(QIODevice::WriteOnly | QIODevice::Truncate));
        html.write("<p>{{italian}}</p> ` broken");
        html.close();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^JS Error: SyntaxError"));
        const VerbExport::Result result = VerbExport(*m_settings, folder).render(essere());
        QCOMPARE(result.status, VerbExport::Status::Nothing);
    }

    void templateUsingTheMissingPlainKeyRendersItEmpty()
    {
        const QString folder = bundleCopy();
        QFile html(folder + "/export_html.mustache");
        QVERIFY(html.open(QIODevice::WriteOnly | QIODevice::Truncate));
        html.write("[{{tense_sub_trapassatoprossimo}}][{{tense_sub_trapassatoprossimo_italian}}]");
        html.close();
        const VerbExport::Result result = VerbExport(*m_settings, folder).render(essere());
        QCOMPARE(result.documents.html, QStringLiteral("[][Past Perfect]"));
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
