#include "Usage.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <algorithm>

namespace {

const QStringList thirdPersonKinds = {QStringLiteral("weather"), QStringLiteral("impersonal"),
                                      QStringLiteral("things")};

bool isFinite(int type)
{
    return type >= IndicativoPresente && type != Imperativo;
}

bool isCompound(int type)
{
    return type == PassatoProssimo || type == TrapassatoProssimo || type == FuturoAnteriore
        || type == TrapassatoRemoto || type == CongiuntivoPassato || type == CongiuntivoTrapassato
        || type == CondizionalePassato;
}

QList<ThirdPersonVerb> readThirdPerson(const QString &path)
{
    QList<ThirdPersonVerb> verbs;
    QSet<QString> seen;
    readTsv(path, [&](const QStringList &cells, int line) {
        const QString here = sourceLine(path, line);
        if (cells.size() < 2 || cells.size() > 3 || !thirdPersonKinds.contains(cells[1]))
            throw SourceError(here + QStringLiteral(": expected italian, weather|impersonal|things [, note]"));
        if (seen.contains(cells[0]))
            throw SourceError(QStringLiteral("%1: '%2' listed twice").arg(here, cells[0]));
        seen.insert(cells[0]);
        verbs.append({cells[0], cells[1], here});
    });
    return verbs;
}

QHash<QString, AuxiliaryNote> readAuxiliaryNotes(const QString &path)
{
    QHash<QString, AuxiliaryNote> notes;
    readTsv(path, [&](const QStringList &cells, int line) {
        const QString here = sourceLine(path, line);
        if (cells.size() < 2 || cells.size() > 3 || !auxiliaryNoteKinds().contains(cells[1]))
            throw SourceError(here + QStringLiteral(": expected italian, one of %1 [, examples]")
                                  .arg(auxiliaryNoteKinds().join(u' ')));
        const bool meaning = cells[1] == QLatin1String("meaning");
        const QString examples = cells.value(2).trimmed();
        // Only "meaning" has no general rule to state, so only it shows examples.
        if (meaning == examples.isEmpty())
            throw SourceError(here + QStringLiteral(": examples go with the kind meaning, and only with it"));
        if (notes.contains(cells[0]))
            throw SourceError(QStringLiteral("%1: '%2' listed twice").arg(here, cells[0]));
        notes.insert(cells[0], {cells[1], examples, here});
    });
    return notes;
}

void readHomographs(const QString &path, UsageRules &rules)
{
    QSet<QString> spelled;
    readTsv(path, [&](const QStringList &cells, int line) {
        const QString here = sourceLine(path, line);
        if (cells.size() == 3 && cells[1] == QLatin1String("spelled")) {
            if (spelled.contains(cells[0]) || spelled.contains(cells[2]) || cells[0] == cells[2])
                throw SourceError(QStringLiteral("%1: each spelling belongs to one pair").arg(here));
            spelled << cells[0] << cells[2];
            rules.spellings.append({cells[0], cells[2]});
            return;
        }
        const Tense tense = cells.size() >= 2 ? tenseFromTag(cells[1]) : TenseCount;
        if (tense == TenseCount || cells.size() != 2 + tenseSize(tense))
            throw SourceError(here + QStringLiteral(": expected a verb, 'spelled' and its other spelling, or a"
                                                    " sense key, a tag of forms.tsv and its cells"));
        if (infinitiveOf(cells[0]) == cells[0])
            throw SourceError(QStringLiteral("%1: '%2' needs a sense number (ripartire²)").arg(here, cells[0]));
        for (const QString &cell : cells.mid(2)) {
            for (const QString &form : variantsOf(cell)) {
                if (form != QLatin1String("=") && !isWordForm(form))
                    throw SourceError(QStringLiteral("%1: malformed form '%2'").arg(here, form));
            }
        }
        rules.senses.append({cells[0], tense, cells.mid(2), here});
    });
}

QString firstPresent(const Sources &sources, const QString &key)
{
    const auto found = sources.forms.find(key);
    return found == sources.forms.end() ? QString() : firstVariant(found->second.tenses[IndPresent][0]);
}

} // namespace

const QStringList &auxiliaryNoteKinds()
{
    static const QStringList kinds = {QStringLiteral("object"),  QStringLiteral("destination"),
                                      QStringLiteral("subject"), QStringLiteral("modal"),
                                      QStringLiteral("weather"), QStringLiteral("either"),
                                      QStringLiteral("meaning")};
    return kinds;
}

UsageRules readUsageRules(const QString &folder)
{
    const QDir dir(folder);
    UsageRules rules;
    rules.thirdPerson = readThirdPerson(dir.filePath(QStringLiteral("third-person.tsv")));
    rules.auxiliaryNotes = readAuxiliaryNotes(dir.filePath(QStringLiteral("auxiliary-notes.tsv")));
    readHomographs(dir.filePath(QStringLiteral("homographs.tsv")), rules);
    return rules;
}

void addHomographs(const UsageRules &rules, Sources &sources, UsageReport &report)
{
    for (const SenseCells &sense : rules.senses) {
        if (!sources.forms.count(sense.key)) {
            const auto first = sources.forms.find(infinitiveOf(sense.key));
            if (first == sources.forms.end() || !first->second.ownEntry)
                throw SourceError(QStringLiteral("%1: '%2' is not a verb of forms.tsv")
                                      .arg(sense.where, infinitiveOf(sense.key)));
            VerbForms copy = first->second;
            copy.infinitive = sense.key;
            sources.forms.emplace(sense.key, std::move(copy));
            report.homographs << sense.key;
        }
        QStringList &cells = sources.forms[sense.key].tenses[sense.tense];
        for (int slot = 0; slot < sense.cells.size(); ++slot) {
            if (sense.cells[slot] != QLatin1String("="))
                cells[slot] = sense.cells[slot];
        }
    }
}

void applyUsage(const UsageRules &rules, const FormRules &formRules, const Sources &sources, Entries &entries,
                UsageReport &report)
{
    QHash<QString, Entry *> byKey;
    for (Entry &entry : entries.verbs)
        byKey.insert(entry.italian, &entry);
    QStringList problems;

    QSet<QString> thirdPerson;
    for (const ThirdPersonVerb &verb : rules.thirdPerson) {
        Entry *entry = byKey.value(verb.verb);
        if (!entry) {
            problems << verb.where + QStringLiteral(": '") + verb.verb + QStringLiteral("' is not a verb of the database");
            continue;
        }
        thirdPerson.insert(verb.verb);
        entry->usage.thirdPersonOnly = true;
        const qsizetype before = entry->rows.size();
        entry->rows.removeIf([](const FormRow &row) {
            return row.type == Imperativo || (isFinite(row.type) && row.pronoun != 3 && row.pronoun != 6);
        });
        report.formsRemoved += int(before - entry->rows.size());
        ++report.thirdPerson;
        // Without a subject there is nothing to agree with: è piovuto, è annottato. The
        // plural keeps both genders for the figurative use (sono piovute critiche).
        if (verb.kind != QLatin1String("things")) {
            for (FormRow &row : entry->rows) {
                if (row.pronoun != 3 || !isCompound(row.type))
                    continue;
                QStringList variants = variantsOf(row.text);
                for (QString &variant : variants) {
                    if (variant.endsWith(QLatin1String("/a")))
                        variant.chop(2);
                }
                row.text = variants.join(variantSeparator);
            }
        }
        // Weather verbs take either auxiliary (è piovuto, ha piovuto); the note says so.
        if (verb.kind == QLatin1String("weather")) {
            ++report.weather;
            if (rules.auxiliaryNotes.value(verb.verb).kind != QLatin1String("weather"))
                problems << verb.where + QStringLiteral(": the weather verb '") + verb.verb
                                + QStringLiteral("' needs essere/avere in auxiliaries.tsv and the kind weather in"
                                                 " auxiliary-notes.tsv");
        }
    }
    // One list says which persons such a verb lacks; a second one would drift from it.
    for (const DefectiveRule &rule : formRules.defective) {
        if (thirdPerson.contains(rule.verb) && (rule.tense == QLatin1String("finite") || rule.tense == QLatin1String("imp")))
            problems << rule.where + QStringLiteral(": third-person.tsv already removes the other persons of ") + rule.verb;
    }

    for (auto it = sources.otherAuxiliaries.cbegin(); it != sources.otherAuxiliaries.cend(); ++it) {
        if (!rules.auxiliaryNotes.contains(it.key()))
            problems << QStringLiteral("auxiliary-notes.tsv: '%1' takes both auxiliaries but has no note").arg(it.key());
    }
    for (auto it = rules.auxiliaryNotes.cbegin(); it != rules.auxiliaryNotes.cend(); ++it) {
        Entry *entry = byKey.value(it.key());
        if (!sources.otherAuxiliaries.contains(it.key()) || !entry) {
            problems << it->where + QStringLiteral(": '") + it.key()
                            + QStringLiteral("' is not a verb with essere/avere or avere/essere in auxiliaries.tsv");
            continue;
        }
        // A defective verb without a participle (convergere) has no compound tense to explain.
        if (std::none_of(entry->rows.cbegin(), entry->rows.cend(), [](const FormRow &row) { return isCompound(row.type); }))
            continue;
        entry->usage.auxiliaryNote = it->kind;
        entry->usage.auxiliaryExamples = it->examples;
        ++report.bothAuxiliaries;
        ++report.auxiliaryNotes[it->kind];
    }

    for (const auto &[first, second] : rules.spellings) {
        Entry *a = byKey.value(first);
        Entry *b = byKey.value(second);
        if (!a || !b) {
            problems << QStringLiteral("homographs.tsv: %1 and %2 must both be verbs of the database").arg(first, second);
            continue;
        }
        a->usage.alsoSpelled = second;
        b->usage.alsoSpelled = first;
        ++report.spellings;
    }
    for (const QString &key : std::as_const(report.homographs)) {
        Entry *second = byKey.value(key);
        Entry *first = byKey.value(infinitiveOf(key));
        if (!first || !second)
            continue;
        first->usage.homograph = QStringLiteral("%1 (%2)").arg(key, firstPresent(sources, key));
        second->usage.homograph = QStringLiteral("%1 (%2)").arg(first->italian, firstPresent(sources, first->italian));
    }

    if (!problems.isEmpty()) {
        problems.sort();
        throw SourceError(problems.join(QStringLiteral("; ")));
    }
}
