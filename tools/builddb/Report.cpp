#include "Report.h"

#include <QFileInfo>
#include <QLocale>
#include <QProcess>
#include <QSet>
#include <QStandardPaths>

#include <algorithm>

namespace {

QString percent(qsizetype part, qsizetype whole)
{
    return whole ? QString::number(100.0 * double(part) / double(whole), 'f', 1) + u'%' : QStringLiteral("-");
}

void printCoverage(QTextStream &out, const Entries &entries, const TranslationPlan &translations,
                   const QStringList &frequency)
{
    QSet<QString> inDatabase;
    for (const Entry &entry : entries.verbs)
        inDatabase.insert(entry.italian);
    QStringList top;
    for (const QString &lemma : frequency.mid(0, 1000)) {
        if (inDatabase.contains(lemma))
            top << lemma;
    }

    out << "translation coverage (all " << entries.verbs.size() << " verbs";
    if (!frequency.isEmpty())
        out << "; " << top.size() << " of the 1,000 most frequent lemmas that are in the database";
    out << "):\n";
    for (int language = 0; language < TranslationLanguages; ++language) {
        auto translated = [&](const QString &italian) {
            const auto found = translations.byVerb.constFind(italian);
            return found != translations.byVerb.cend() && !found->text[language].isNull();
        };
        const qsizetype all = std::count_if(inDatabase.cbegin(), inDatabase.cend(), translated);
        out << "  " << QString::fromLatin1(translationColumns[language]).leftJustified(11) << percent(all, inDatabase.size());
        if (!frequency.isEmpty())
            out << "   top-1000: " << percent(std::count_if(top.cbegin(), top.cend(), translated), top.size());
        out << '\n';
    }
    if (frequency.isEmpty())
        out << "  (no frequency list beside the sources: top-1000 figures skipped)\n";
}

// Single words of the simple forms: compound forms only repeat them.
QStringList wordsToCheck(const Entries &entries)
{
    QSet<QString> words;
    for (const Entry &entry : entries.verbs) {
        for (const FormRow &row : entry.rows) {
            for (const QString &word : row.text.split(u' ')) {
                if (!word.contains(u'/'))
                    words.insert(word);
            }
        }
    }
    QStringList sorted(words.cbegin(), words.cend());
    sorted.sort();
    return sorted;
}

void printSpelling(QTextStream &out, const Entries &entries)
{
    const QString hunspell = QStandardPaths::findExecutable(QStringLiteral("hunspell"));
    if (hunspell.isEmpty()) {
        out << "hunspell: not installed, spelling figure skipped (apt-get install hunspell hunspell-it)\n";
        return;
    }
    const QStringList words = wordsToCheck(entries);
    QProcess process;
    process.start(hunspell, {QStringLiteral("-d"), QStringLiteral("it_IT"), QStringLiteral("-i"),
                             QStringLiteral("utf-8"), QStringLiteral("-l")});
    if (!process.waitForStarted()) {
        out << "hunspell: could not start, spelling figure skipped\n";
        return;
    }
    process.write(words.join(u'\n').toUtf8() + '\n');
    process.closeWriteChannel();
    process.waitForFinished(120000);
    const QString errors = QString::fromUtf8(process.readAllStandardError()).trimmed();
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0 || !errors.isEmpty()) {
        out << "hunspell: no it_IT dictionary or failure (" << errors.left(200)
            << "), spelling figure skipped\n";
        return;
    }
    const QStringList rejected = QString::fromUtf8(process.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
    out << "hunspell it_IT accepts " << percent(words.size() - rejected.size(), words.size()) << " of "
        << words.size() << " distinct words (a warning figure: its dictionary lacks many valid forms)\n";
}

void printRules(QTextStream &out, const RuleReport &rules, const Entries &entries)
{
    auto line = [&](const char *what, const RuleTally &tally, const char *cells) {
        out << "  " << QString::fromLatin1(what).leftJustified(44) << QString::number(tally.verbs).rightJustified(5)
            << " verbs, " << QString::number(tally.cells).rightJustified(5) << ' ' << cells << '\n';
    };
    out << "form rules (cells: how many of forms.tsv each rule changed):\n";
    line("-iare with a stressed i (stressed-i.tsv)", rules.stressedI, "cells changed");
    line("-iare with an unstressed i", rules.unstressedI, "cells changed");
    line("-ciare/-giare future: i only if stressed", rules.iareFuture, "cells changed");
    line("-ire with -isc-", rules.isc, "cells changed");
    line("-ire without -isc- (isc.tsv)", rules.plainIre, "cells changed");
    line("-ire with both (isc.tsv)", rules.alternatingIre, "cells changed");
    out << "  " << QString::fromLatin1("compounds of irregular verbs (families.tsv)").leftJustified(44)
        << QString::number(rules.compounds.verbs).rightJustified(5) << " verbs, "
        << QString::number(rules.compounds.cells).rightJustified(5) << " cells changed, in " << rules.families
        << " families\n";
    line("  of them conjugated wholly like their model", rules.wholeCompounds, "cells changed");
    line("defective verbs (defective.tsv)", rules.defective, "forms removed");
    line("two standard forms (variants.tsv)", rules.twoForms, "cells");
    line("standard form for a less usual one", rules.standardForm, "cells changed");
    out << "  " << QString::fromLatin1("enclitic imperatives on a compound's -fa'").leftJustified(44)
        << QString::number(entries.fareEnclitics).rightJustified(5) << " forms\n"
        << "  " << QString::fromUtf8("ne elided before essere (se n'è)").leftJustified(44)
        << QString::number(entries.elisions).rightJustified(5) << " forms\n"
        << "  " << QString::fromLatin1("compound forms of persons a verb lacks").leftJustified(44)
        << QString::number(entries.compoundPersonsLeftOut).rightJustified(5) << " forms left out\n";
    out << "verbs with a clitic cluster (pronominal.tsv):";
    for (auto it = entries.clusterVerbs.cbegin(); it != entries.clusterVerbs.cend(); ++it)
        out << " -" << it.key() << ' ' << it.value();
    out << '\n';
}

// The verbs of frequency.tsv that the database lacks: a verb in everyday use that a
// user looks up and does not find.
void printRankCoverage(QTextStream &out, const Entries &entries, const QStringList &ranked)
{
    if (ranked.isEmpty()) {
        out << "frequency.tsv is absent: top-2,000 coverage skipped\n";
        return;
    }
    QSet<QString> inDatabase;
    for (const Entry &entry : entries.verbs)
        inDatabase.insert(entry.italian);
    QStringList lacking;
    for (const QString &verb : ranked) {
        if (!inDatabase.contains(verb))
            lacking << verb;
    }
    out << "top-" << QLocale(QLocale::English).toString(ranked.size()) << " genuine verbs (frequency.tsv) in the database: "
        << ranked.size() - lacking.size() << " (" << percent(ranked.size() - lacking.size(), ranked.size()) << ')';
    if (!lacking.isEmpty())
        out << "; lacking: " << lacking.mid(0, 20).join(u", ") << (lacking.size() > 20 ? ", ..." : "");
    out << '\n';
}

void printUsage(QTextStream &out, const UsageReport &usage)
{
    out << "usage notes:\n"
        << "  " << QString::fromLatin1("third person only (third-person.tsv)").leftJustified(44)
        << QString::number(usage.thirdPerson).rightJustified(5) << " verbs, " << usage.weather
        << " of them weather verbs; " << usage.formsRemoved << " forms removed\n"
        << "  " << QString::fromLatin1("both auxiliaries (auxiliary-notes.tsv)").leftJustified(44)
        << QString::number(usage.bothAuxiliaries).rightJustified(5) << " verbs:";
    for (auto it = usage.auxiliaryNotes.cbegin(); it != usage.auxiliaryNotes.cend(); ++it)
        out << ' ' << it.key() << ' ' << it.value();
    out << '\n'
        << "  " << QString::fromLatin1("homographs with a paradigm of their own").leftJustified(44)
        << QString::number(usage.homographs.size()).rightJustified(5) << " (" << usage.homographs.join(u", ") << ")\n"
        << "  " << QString::fromLatin1("verbs spelled two ways (homographs.tsv)").leftJustified(44)
        << QString::number(usage.spellings).rightJustified(5) << " pair(s)\n";
}

} // namespace

void printReport(QTextStream &out, const Entries &entries, const Sources &sources, const RuleReport &rules,
                 const UsageReport &usage, const TranslationPlan &translations, const QStringList &frequency,
                 const QString &masterPath)
{
    qsizetype forms = 0;
    qsizetype pronominal = 0;
    for (const Entry &entry : entries.verbs) {
        forms += entry.rows.size();
        pronominal += entry.pronominal;
    }
    out << "verbs: " << entries.verbs.size() << " (" << pronominal << " pronominal)\n"
        << "forms: " << forms << '\n'
        << "verbs conjugated by rule (derived.tsv): " << sources.derivedVerbs << '\n';
    if (!entries.skippedPronominal.isEmpty())
        out << "pronominal verbs left out (clitics other than -si/-sene): " << entries.skippedPronominal.join(u", ") << '\n';
    if (!entries.unusedBases.isEmpty())
        out << "verbs known only with a clitic but not in pronominal.tsv, so not listed: "
            << entries.unusedBases.size() << " (" << entries.unusedBases.mid(0, 12).join(u", ")
            << (entries.unusedBases.size() > 12 ? ", ..." : "") << ")\n";
    if (!entries.provisionalIds.isEmpty())
        out << "warning: " << entries.provisionalIds.size()
            << " verbs have no id in verb-ids.tsv yet and got provisional ones (run tools/assign-verb-ids): "
            << entries.provisionalIds.mid(0, 12).join(u", ") << (entries.provisionalIds.size() > 12 ? ", ..." : "") << '\n';
    for (const QString &note : sources.notes)
        out << "note: " << note << '\n';
    if (!translations.moved.isEmpty())
        out << "warning: translations of verbs used only with a clitic, given to their pronominal verb"
               " (move them in the translation files): " << translations.moved.join(u", ") << '\n';
    if (!translations.ignored.isEmpty())
        out << "note: " << translations.ignored.size() << " translations of verbs that are no entries are ignored: " << translations.ignored.mid(0, 12).join(u", ")
            << (translations.ignored.size() > 12 ? ", ..." : "") << '\n';
    printRules(out, rules, entries);
    printRankCoverage(out, entries, sources.ranked);
    printUsage(out, usage);
    printCoverage(out, entries, translations, frequency);
    printSpelling(out, entries);
    const qint64 size = QFileInfo(masterPath).size();
    out << "size: " << QLocale(QLocale::English).toString(size) << " bytes ("
        << QString::number(size / 1048576.0, 'f', 1) << " MiB)\n";
}

void printIrregular(QTextStream &out, const IrregularMarks &marks)
{
    out << "irregular forms (against the regular paradigm of each class): " << marks.irregularRows << " of "
        << marks.rowCount << " forms (" << percent(marks.irregularRows, marks.rowCount) << ")\n";
    const auto count = [&](const char *key) { return marks.verbsByPattern.value(QLatin1String(key)); };
    out << "  regular verbs: " << count("are") << " -are, " << count("ere") << " -ere, " << count("ire") << " -ire, "
        << count("isc") << " -ire with -isc-\n"
        << "  irregular verbs: " << count("irregular") << ", and " << count("like a model")
        << " that conjugate like a model verb (families.tsv, or the base of a pronominal verb)\n";
}
