#include "VerbExport.h"

#include "ExportScriptEngine.h"
#include "IrregularMarks.h"
#include "Settings.h"
#include "Strings.h"
#include "VerbUsage.h"

#include <QFile>
#include <QFileInfo>
#include <QJSEngine>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStringDecoder>

#include <array>

namespace norvella {

namespace {

struct TenseTitle
{
    const char *viewKey;
    const char *titleKey;
};

// The subjunctive trapassato prossimo keeps "_italian" in its view key in both
// states, and the conditional uses English words: templates depend on both.
constexpr std::array<TenseTitle, 18> tenseTitles{{
    {"tense_ind_presente", "tense.ind.presente"},
    {"tense_ind_imperfetto", "tense.ind.imperfetto"},
    {"tense_ind_passatoremoto", "tense.ind.passatoremoto"},
    {"tense_ind_futuro", "tense.ind.futuro"},
    {"tense_ind_futuroanteriore", "tense.ind.futuroanteriore"},
    {"tense_ind_passatoprossimo", "tense.ind.passatoprossimo"},
    {"tense_ind_trapassatoprossimo", "tense.ind.trapassatoprossimo"},
    {"tense_ind_trapassatoremoto", "tense.ind.trapassatoremoto"},
    {"tense_sub_presente", "tense.sub.presente"},
    {"tense_sub_imperfetto", "tense.sub.imperfetto"},
    {"tense_sub_passatoprossimo", "tense.sub.passatoprossimo"},
    {"tense_sub_trapassatoprossimo_italian", "tense.sub.trapassatoprossimo"},
    {"tense_con_present", "tense.con.present"},
    {"tense_con_past", "tense.con.past"},
    {"tense_other_imperative", "tense.other.imperative"},
    {"tense_other_participiopresente", "tense.other.participiopresente"},
    {"tense_other_pastparticiple", "tense.other.pastparticiple"},
    {"tense_other_gerund", "tense.other.gerund"},
}};

struct FormList
{
    const char *viewKey;
    ConjugationList Verb::*list;
    const char *typeId;
};

// The infinitive and the catch-all list are not part of an export.
const std::array<FormList, 18> formLists{{
    {"IndicativoPresente", &Verb::indicativoPresente, "6"},
    {"IndicativoImperfetto", &Verb::indicativoImperfetto, "8"},
    {"IndicativoPassatoRemoto", &Verb::indicativoPassatoRemoto, "12"},
    {"IndicativoFuturo", &Verb::indicativoFuturo, "10"},
    {"IndicativoFuturoAnteriore", &Verb::indicativoFuturoAnteriore, "11"},
    {"IndicativoPassatoProssimo", &Verb::indicativoPassatoProssimo, "7"},
    {"IndicativoTrapassatoProssimo", &Verb::indicativoTrapassatoProssimo, "9"},
    {"IndicativoTrapassatoRemoto", &Verb::indicativoTrapassatoRemoto, "13"},
    {"CongiuntivoPresente", &Verb::congiuntivoPresente, "15"},
    {"CongiuntivoImperfetto", &Verb::congiuntivoImperfetto, "17"},
    {"CongiuntivoPassatoProssimo", &Verb::congiuntivoPassatoProssimo, "16"},
    {"CongiuntivoTrapassatoProssimo", &Verb::congiuntivoTrapassatoProssimo, "18"},
    {"CondizionalePresente", &Verb::condizionalePresente, "19"},
    {"CondizionalePassato", &Verb::condizionalePassato, "20"},
    {"Imperativo", &Verb::imperativo, "14"},
    {"ParticipioPresente", &Verb::participioPresente, "2"},
    {"ParticipioPassato", &Verb::participioPassato, "4"},
    {"Gerundio", &Verb::gerundio, "3"},
}};

struct ResourceName
{
    const char *base;
    const char *extension;
};
constexpr std::array<ResourceName, 3> resources{{
    {"mustache.min", "js"},
    {"export_html", "mustache"},
    {"export_txt", "mustache"},
}};

bool readText(const QString &path, QString *text, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("%1: %2").arg(path, file.errorString());
        return false;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        *error = QStringLiteral("%1: %2").arg(path, file.errorString());
        return false;
    }
    // A byte-order mark decides the encoding; without one the text is UTF-8.
    const auto encoding = QStringConverter::encodingForData(bytes).value_or(QStringConverter::Utf8);
    QStringDecoder decoder(encoding);
    *text = decoder.decode(bytes);
    if (decoder.hasError()) {
        *error = QStringLiteral("%1: not readable as text").arg(path);
        return false;
    }
    return true;
}

// The document a render call produced, or a null string when it gave none.
QString evaluateDocument(QJSEngine &engine, const QString &call)
{
    const QJSValue value = engine.evaluate(call);
    if (value.isError()) {
        qWarning().noquote() << QStringLiteral("JS Error: ") + value.toString();
        return {};
    }
    if (value.isUndefined() || value.isNull())
        return {};
    const QString text = value.toString();
    // A render of an empty template is still a document.
    return text.isNull() ? QStringLiteral("") : text;
}

// The HTML marks variant by variant, so a cell such as "devo / debbo" is
// split here once rather than in every template.
QJsonArray variantsArray(const QString &cell, int mask)
{
    QJsonArray variants;
    bool first = true;
    for (const IrregularMarks::Variant &variant : IrregularMarks::variants(cell, mask)) {
        variants.append(QJsonObject{{QStringLiteral("text"), variant.text},
                                    {QStringLiteral("irregular"), variant.irregular},
                                    {QStringLiteral("first"), first}});
        first = false;
    }
    return variants;
}

} // namespace

VerbExport::VerbExport(const Settings &settings, QString resourceDirectory)
    : m_settings(settings), m_resourceDirectory(std::move(resourceDirectory))
{
}

QJsonObject VerbExport::viewModel(const Verb &verb, const Settings &settings, bool showTranslated)
{
    QJsonObject model;
    model.insert(QStringLiteral("german"), verb.german);
    model.insert(QStringLiteral("french"), verb.french);
    model.insert(QStringLiteral("spanish"), verb.spanish);
    model.insert(QStringLiteral("italian"), verb.italian);
    model.insert(QStringLiteral("english"), verb.english);
    model.insert(QStringLiteral("portuguese"), verb.portuguese);
    // Blank counts as none, so the templates leave the translation line out.
    model.insert(QStringLiteral("translated"), verb.translation(settings).trimmed());
    model.insert(QStringLiteral("no_forms"), VerbUsageNotes::dash);
    model.insert(QStringLiteral("no_forms_note"), Strings::text(QStringLiteral("conjugation.noforms")));
    // The imperative of a verb used only in the third person says why it is empty.
    model.insert(QStringLiteral("no_imperative_note"), VerbUsageNotes::noFormsNote(verb, QStringLiteral("14")));
    QJsonArray notes;
    for (const QString &note : VerbUsageNotes::notes(verb))
        notes.append(QJsonObject{{QStringLiteral("note"), note}});
    model.insert(QStringLiteral("usage_notes"), notes);

    model.insert(QStringLiteral("indicative"), Strings::text(QStringLiteral("tense.ind")));
    model.insert(QStringLiteral("subjunctive"), Strings::text(QStringLiteral("tense.sub")));
    model.insert(QStringLiteral("conditional"), Strings::text(QStringLiteral("tense.con")));
    model.insert(QStringLiteral("other"), Strings::text(QStringLiteral("tense.other")));

    const QString suffix = showTranslated ? QStringLiteral("_italian") : QString();
    for (const auto &title : tenseTitles)
        model.insert(QLatin1String(title.viewKey), Strings::text(QLatin1String(title.titleKey) + suffix));

    bool anyIrregular = false;
    for (const auto &entry : formLists) {
        QJsonArray forms;
        const bool che = takesChe(QLatin1String(entry.typeId));
        // Persons a verb is not used in print as a dash, as on the screen.
        for (const auto &row : VerbUsageNotes::rows(verb, QLatin1String(entry.typeId), verb.*entry.list)) {
            const QString pronoun = che ? withChe(row.pronoun) : row.pronoun;
            const int mask = row.index < 0 ? 0 : (verb.*entry.list).at(row.index).irregular;
            anyIrregular = anyIrregular || mask != 0;
            forms.append(QJsonObject{{QStringLiteral("pronoun"), pronoun}, {QStringLiteral("verb"), row.form},
                                     {QStringLiteral("verb_marked"), IrregularMarks::starred(row.form, mask)},
                                     {QStringLiteral("variants"), variantsArray(row.form, mask)}});
        }
        model.insert(QLatin1String(entry.viewKey), forms);
    }
    model.insert(QStringLiteral("pattern"), IrregularMarks::patternLine(verb.pattern).sentence);
    // The legend only where there is something to explain; empty hides it.
    model.insert(QStringLiteral("irregular_legend"),
                 anyIrregular ? Strings::text(QStringLiteral("export.irregular.legend")) : QString());
    model.insert(QStringLiteral("irregular_legend_text"),
                 anyIrregular ? Strings::text(QStringLiteral("export.irregular.legend.text")).arg(QChar(IrregularMarks::Star))
                              : QString());
    return model;
}

QString VerbExport::renderCall(const QString &templateText, const QString &json)
{
    return QStringLiteral("Mustache.render(`") + templateText + QStringLiteral("`, ") + json + QStringLiteral(");");
}

VerbExport::Result VerbExport::render(const Verb &verb) const
{
    Result result;
    QStringList paths;
    for (const auto &resource : resources) {
        const QString path = QStringLiteral("%1/%2.%3").arg(m_resourceDirectory, QLatin1String(resource.base),
                                                             QLatin1String(resource.extension));
        if (!QFileInfo::exists(path)) {
            // The same words whichever file is missing.
            qWarning("Unable to find mustache JS file");
            return result;
        }
        paths << path;
    }

    const bool showTranslated = Preferences::showTranslated(m_settings);

    QString script, htmlTemplate, textTemplate;
    for (auto [path, text] : {std::pair{paths[0], &script}, {paths[1], &htmlTemplate}, {paths[2], &textTemplate}}) {
        if (!readText(path, text, &result.error)) {
            result.status = Status::Failed;
            return result;
        }
    }

    const QByteArray jsonBytes = QJsonDocument(viewModel(verb, m_settings, showTranslated)).toJson(QJsonDocument::Compact);
    if (jsonBytes.isEmpty()) {
        result.status = Status::Failed;
        result.error = QStringLiteral("the view model could not be serialised");
        return result;
    }
    QStringDecoder utf8(QStringConverter::Utf8);
    const QString json = utf8.decode(jsonBytes);
    if (utf8.hasError()) {
        qWarning("Unable to create json string");
        return result;
    }

    // A fresh engine each time: nothing a template did survives into the next export.
    ExportScriptEngine scripts(script);
    const QString html = evaluateDocument(scripts.engine(), renderCall(htmlTemplate, json));
    const QString text = evaluateDocument(scripts.engine(), renderCall(textTemplate, json));
    if (html.isNull() || text.isNull())
        return result;
    result.status = Status::Rendered;
    result.documents = {html, text};
    return result;
}

} // namespace norvella
