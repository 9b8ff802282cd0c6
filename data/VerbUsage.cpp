#include "VerbUsage.h"

#include "CrashLog.h"
#include "Database.h"
#include "Strings.h"

#include <array>
#include <atomic>

namespace norvella::VerbUsageNotes {

namespace {

const std::array<const char *, 6> pronouns = {"io", "tu", "lui/lei", "noi", "voi", "loro"};

// The tenses with persons, the imperative apart: type ids 6 to 20 but 14.
bool hasPersons(const QString &typeId)
{
    bool ok = false;
    const int type = typeId.toInt(&ok);
    return ok && type >= 6 && type <= 20 && type != 14;
}

struct AuxiliaryForms
{
    QString avere;  // "ha passato"
    QString essere; // "è passato/a"
    QString asShown; // both, the more usual first, as the table prints them
};

// The third person of the passato prossimo says both auxiliaries with the verb's own
// participle; it is there for every verb that takes both.
AuxiliaryForms auxiliaryForms(const Verb &verb)
{
    AuxiliaryForms forms;
    for (const Conjugation &form : verb.indicativoPassatoProssimo) {
        if (form.order != 3)
            continue;
        const QStringList variants = form.verb.split(QStringLiteral(" / "));
        for (const QString &variant : variants) {
            if (variant.startsWith(QLatin1String("ha ")))
                forms.avere = variant;
            else if (variant.startsWith(QStringLiteral("è ")))
                forms.essere = variant;
        }
        forms.asShown = variants.join(QStringLiteral(", "));
    }
    return forms;
}

QString auxiliaryNote(const Verb &verb)
{
    const QString &kind = verb.usage.auxiliaryNote;
    const AuxiliaryForms forms = auxiliaryForms(verb);
    if (kind == QLatin1String("meaning"))
        return Strings::text(QStringLiteral("conjugation.usage.meaning")).arg(verb.usage.auxiliaryExamples);
    if (forms.avere.isEmpty() || forms.essere.isEmpty()) {
        CrashLog::log(QStringLiteral("No compound forms with both auxiliaries for %1; its note is left out").arg(verb.italian));
        return {};
    }
    const QString pair = forms.avere + QStringLiteral(", ") + forms.essere;
    if (kind == QLatin1String("object"))
        return Strings::text(QStringLiteral("conjugation.usage.object")).arg(pair);
    if (kind == QLatin1String("destination"))
        return Strings::text(QStringLiteral("conjugation.usage.destination")).arg(pair);
    if (kind == QLatin1String("subject"))
        return Strings::text(QStringLiteral("conjugation.usage.subject")).arg(pair);
    if (kind == QLatin1String("modal")) {
        // A modal's example needs the infinitive after it: ha dovuto lavorare, è dovuto partire.
        return Strings::text(QStringLiteral("conjugation.usage.modal"))
                .arg(forms.avere + QStringLiteral(" lavorare, ") + forms.essere + QStringLiteral(" partire"));
    }
    if (kind == QLatin1String("weather"))
        return Strings::text(QStringLiteral("conjugation.usage.weather")).arg(forms.asShown);
    if (kind == QLatin1String("either"))
        return Strings::text(QStringLiteral("conjugation.usage.either")).arg(forms.asShown);
    CrashLog::log(QStringLiteral("Unknown auxiliary note '%1' for %2; left out").arg(kind, verb.italian));
    return {};
}

} // namespace

bool read(Database &db, Verb &verb)
{
    verb.usage = {};
    auto row = db.executeQuery(QStringLiteral("SELECT third_person, auxiliary_note, auxiliary_examples, also_spelled, "
                                              "homograph FROM verb_usage WHERE verbid = ?"),
                               {verb.id});
    if (!row) {
        static std::atomic_bool logged = false;
        if (!logged.exchange(true))
            CrashLog::log(errorReport("Verb usage notes are unavailable: %@ (%d)", db.lastErrorMessage(),
                                      db.lastErrorCode()));
        return false;
    }
    if (row->next()) {
        verb.usage.thirdPersonOnly = row->boolForColumn(QStringLiteral("third_person"));
        verb.usage.auxiliaryNote = row->stringForColumn(QStringLiteral("auxiliary_note"));
        verb.usage.auxiliaryExamples = row->stringForColumn(QStringLiteral("auxiliary_examples"));
        verb.usage.alsoSpelled = row->stringForColumn(QStringLiteral("also_spelled"));
        verb.usage.homograph = row->stringForColumn(QStringLiteral("homograph"));
    }
    row->close();
    return true;
}

QStringList notes(const Verb &verb)
{
    QStringList lines;
    if (verb.usage.thirdPersonOnly)
        lines << Strings::text(QStringLiteral("conjugation.usage.thirdperson"));
    if (!verb.usage.auxiliaryNote.isEmpty()) {
        const QString note = auxiliaryNote(verb);
        if (!note.isEmpty())
            lines << note;
    }
    if (!verb.usage.homograph.isEmpty())
        lines << Strings::text(QStringLiteral("conjugation.usage.homograph")).arg(verb.usage.homograph);
    if (!verb.usage.alsoSpelled.isEmpty())
        lines << Strings::text(QStringLiteral("conjugation.usage.alsospelled")).arg(verb.usage.alsoSpelled);
    return lines;
}

QString noFormsNote(const Verb &verb, const QString &typeId)
{
    if (verb.usage.thirdPersonOnly && typeId == QLatin1String("14"))
        return Strings::text(QStringLiteral("conjugation.usage.noimperative"));
    return Strings::text(QStringLiteral("conjugation.noforms"));
}

QList<Row> rows(const Verb &verb, const QString &typeId, const ConjugationList &list)
{
    QList<Row> result;
    if (!verb.usage.thirdPersonOnly || !hasPersons(typeId) || list.isEmpty()) {
        for (int i = 0; i < list.size(); ++i)
            result.append({list[i].pronoun, list[i].verb, i});
        return result;
    }
    for (int person = 1; person <= 6; ++person) {
        Row row{QString::fromUtf8(pronouns[size_t(person - 1)]), dash, -1};
        for (int i = 0; i < list.size(); ++i) {
            if (list[i].order == person)
                row = {list[i].pronoun, list[i].verb, i};
        }
        result.append(row);
    }
    return result;
}

} // namespace norvella::VerbUsageNotes
