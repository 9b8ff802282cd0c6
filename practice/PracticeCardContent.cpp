#include "PracticeCardContent.h"

#include "CrashLog.h"
#include "Database.h"
#include "FormAnalysis.h"
#include "Settings.h"
#include "Verb.h"

#include <QRandomGenerator>
#include <QSet>

#include <algorithm>

namespace norvella::PracticeCards {

namespace {
constexpr char ReadingCard[] = "An error occurred when reading a practice card: %@ (%d)";

struct TenseName
{
    int type;
    const char *mood;
    const char *tense;
};
// In the order of the conjugation screen's groups.
constexpr TenseName tenseNames[] = {
    {6, "tense.ind", "tense.ind.presente"},
    {7, "tense.ind", "tense.ind.passatoprossimo"},
    {8, "tense.ind", "tense.ind.imperfetto"},
    {9, "tense.ind", "tense.ind.trapassatoprossimo"},
    {12, "tense.ind", "tense.ind.passatoremoto"},
    {13, "tense.ind", "tense.ind.trapassatoremoto"},
    {10, "tense.ind", "tense.ind.futuro"},
    {11, "tense.ind", "tense.ind.futuroanteriore"},
    {15, "tense.sub", "tense.sub.presente"},
    {17, "tense.sub", "tense.sub.imperfetto"},
    {16, "tense.sub", "tense.sub.passatoprossimo"},
    {18, "tense.sub", "tense.sub.trapassatoprossimo"},
    {19, "tense.con", "tense.con.present"},
    {20, "tense.con", "tense.con.past"},
    {14, "tense.other", "tense.other.imperative"},
};

const TenseName *nameOf(int tense)
{
    const auto found = std::find_if(std::begin(tenseNames), std::end(tenseNames),
                                    [&](const TenseName &n) { return n.type == tense; });
    return found == std::end(tenseNames) ? nullptr : found;
}
} // namespace

QList<int> practisableTenses()
{
    QList<int> tenses;
    for (const TenseName &name : tenseNames)
        tenses << name.type;
    return tenses;
}

QString moodKey(int tense)
{
    const TenseName *name = nameOf(tense);
    return name ? QLatin1String(name->mood) : QString();
}

QString tenseKey(int tense)
{
    const TenseName *name = nameOf(tense);
    return name ? QLatin1String(name->tense) : QString();
}

QString personName(int person)
{
    static const char *const names[] = {"", "io", "tu", "lui/lei", "noi", "voi", "loro"};
    return person >= 0 && person <= 6 ? QLatin1String(names[person]) : QString();
}

PracticeCardContent load(Database &db, const PracticeCard &card, const Settings &settings)
{
    PracticeCardContent content;
    auto verb = db.executeQuery(QStringLiteral("SELECT _id, italian, english, german, french, spanish, dutch, "
                                               "portuguese, turkish FROM verb WHERE _id = ?"),
                                {card.verbId});
    if (verb && verb->next()) {
        const VerbPtr record = verbFromRow(*verb, VerbRowFields::Shown);
        content.infinitive = record->italian;
        content.translation = record->translation(settings);
    }
    const bool verbRead = verb && !verb->failed();
    verb.reset();
    auto form = db.executeQuery(QStringLiteral("SELECT conjugation.verb AS verb, conjugation.irregular AS irregular, "
                                               "pronoun.pronoun AS pronoun FROM conjugation LEFT OUTER JOIN pronoun "
                                               "ON conjugation.pronounid = pronoun._id WHERE conjugation.verbid = ? "
                                               "AND conjugation.conjugation_type_id = ? "
                                               "AND ifnull(conjugation.pronounid, 0) = ? ORDER BY conj_order LIMIT 1"),
                                {card.verbId, card.tense, card.person});
    if (form && form->next()) {
        content.cell = form->stringForColumn(QStringLiteral("verb"));
        content.irregular = form->intForColumn(QStringLiteral("irregular"));
        content.pronoun = form->stringForColumn(QStringLiteral("pronoun"));
        content.found = !content.infinitive.isEmpty() && !content.cell.isEmpty();
    }
    if (!verbRead || !form || form->failed())
        reportDatabaseError(ReadingCard, db);
    else if (!content.found)
        CrashLog::log(QStringLiteral("A practice card names a form the verb database does not have: verb %1, "
                                     "type %2, person %3")
                              .arg(card.verbId)
                              .arg(card.tense)
                              .arg(card.person));
    return content;
}

QString markedCell(const QString &cell, int irregular)
{
    QStringList parts = cell.split(QStringLiteral(" / "));
    for (int i = 0; i < parts.size(); ++i) {
        parts[i] = parts.at(i).toHtmlEscaped();
        if (i < 31 && (irregular & (1 << i)))
            parts[i] = QStringLiteral("<b><u>%1</u></b>").arg(parts.at(i));
    }
    return parts.join(QStringLiteral(" / "));
}

QList<RecogniseOption> recogniseOptions(Database &db, const FormAnalysis &analysis, const PracticeCard &card,
                                        const QString &infinitive, const QString &shown, quint32 seed)
{
    QSet<QPair<int, int>> readings; // (tense, person) of this verb the form can be
    for (const FormReading &reading : analysis.analyse(shown)) {
        if (reading.verbId == card.verbId)
            readings.insert({reading.type, reading.pronoun});
    }
    readings.insert({card.tense, card.person});

    QSet<QPair<int, int>> exists;
    auto rows = db.executeQuery(QStringLiteral("SELECT DISTINCT conjugation_type_id AS type, ifnull(pronounid, 0) AS "
                                               "person FROM conjugation WHERE verbid = ?"),
                                {card.verbId});
    while (rows && rows->next())
        exists.insert({rows->intForColumn(QStringLiteral("type")), rows->intForColumn(QStringLiteral("person"))});
    if (!rows || rows->failed())
        reportDatabaseError(ReadingCard, db);

    QList<RecogniseOption> options{{card.verbId, infinitive, card.tense, card.person, true}};
    auto offer = [&](int tense, int person) {
        if (options.size() >= 4 || readings.contains({tense, person}) || !exists.contains({tense, person}))
            return;
        for (const RecogniseOption &option : options) {
            if (option.tense == tense && option.person == person)
                return;
        }
        options << RecogniseOption{card.verbId, infinitive, tense, person, false};
    };
    // The nearest confusions first: a neighbouring tense in the same person,
    // then the same tense in a neighbouring person.
    const QList<int> tenses = practisableTenses();
    const qsizetype at = tenses.indexOf(card.tense);
    for (qsizetype step = 1; step < tenses.size() && options.size() < 4; ++step) {
        if (at - step >= 0)
            offer(tenses.at(at - step), card.person);
        if (at + step < tenses.size())
            offer(tenses.at(at + step), card.person);
        for (int person : {card.person - 1, card.person + 1})
            offer(card.tense, person);
    }
    QRandomGenerator random(seed);
    std::shuffle(options.begin(), options.end(), random);
    return options;
}

} // namespace norvella::PracticeCards
