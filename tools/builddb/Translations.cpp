#include "Translations.h"

#include <QSet>

TranslationPlan planTranslations(const Entries &entries, const Sources &sources)
{
    QSet<QString> known;
    for (const Entry &entry : entries.verbs)
        known.insert(entry.italian);
    QHash<QString, QStringList> pronominalOf;
    for (const PronominalVerb &verb : sources.pronominal) {
        if (known.contains(verb.infinitive))
            pronominalOf[verb.base] << verb.infinitive;
    }

    TranslationPlan plan;
    QStringList unknown;
    QStringList keys = sources.translations.keys();
    keys.sort();
    for (const QString &italian : keys) {
        const Translation &translation = sources.translations[italian];
        if (known.contains(italian)) {
            plan.byVerb.insert(italian, translation);
            continue;
        }
        if (sources.leftOut.contains(italian)) {
            plan.ignored << italian;
            continue;
        }
        const QString place = QStringLiteral("%1 (%2:%3)").arg(italian, translation.file.section(u'/', -1)).arg(translation.line);
        const auto forms = sources.forms.find(italian);
        if (forms == sources.forms.end() || forms->second.ownEntry) {
            unknown << place;
            continue;
        }
        // A verb used only with its clitic (accorgere) is no entry: its translation is
        // the one of its pronominal verb, which gets it unless it has its own.
        const QStringList pronominal = pronominalOf.value(italian);
        if (pronominal.size() == 1 && !sources.translations.contains(pronominal.first())) {
            plan.byVerb.insert(pronominal.first(), translation);
            plan.moved << italian + QStringLiteral(" -> ") + pronominal.first();
        } else {
            plan.ignored << italian;
        }
    }
    if (!unknown.isEmpty())
        throw SourceError(QStringLiteral("translations for verbs that are not in the database: ") + unknown.join(u", "));
    return plan;
}
