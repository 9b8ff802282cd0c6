#include "FormRules.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <array>

namespace {

struct Cell
{
    Tense tense;
    int slot; // 0-based, in the order of forms.tsv
};

// The cells where a stressed and an unstressed i differ: tu in the present, the
// subjunctive's singular and loro (the imperative's lui/lei and loro come from these).
const std::array<Cell, 5> iareCells = {{{IndPresent, 1}, {SubjPresent, 0}, {SubjPresent, 1},
                                        {SubjPresent, 2}, {SubjPresent, 5}}};

// The cells where -isc- appears: the stressed persons of the present, both moods, and
// the tu imperative. Noi and voi are the same either way (finiamo, dormiamo).
const std::array<Cell, 9> iscCells = {{{IndPresent, 0}, {IndPresent, 1}, {IndPresent, 2}, {IndPresent, 5},
                                       {SubjPresent, 0}, {SubjPresent, 1}, {SubjPresent, 2}, {SubjPresent, 5},
                                       {Imperative, 0}}};
const std::array<const char *, 9> iscEndings = {"isco", "isci", "isce", "iscono", "isca", "isca", "isca", "iscano", "isci"};
const std::array<const char *, 9> plainEndings = {"o", "i", "e", "ono", "a", "a", "a", "ano", "i"};

// The persons of the imperative's own forms (tu, noi, voi).
const std::array<int, 3> imperativePersons = {2, 4, 5};
const std::array<Tense, 7> finiteTenses = {IndPresent, IndImperfect, IndRemotePast, IndFuture,
                                           CondPresent, SubjPresent, SubjImperfect};

VerbForms &verbOf(Sources &sources, const QString &verb, const QString &where)
{
    const auto found = sources.forms.find(verb);
    if (found == sources.forms.end())
        throw SourceError(QStringLiteral("%1: '%2' is not a verb of forms.tsv").arg(where, verb));
    return found->second;
}

// Writes a cell; 1 when that changed what forms.tsv said.
int setCell(QString &cell, const QString &value)
{
    if (cell == value)
        return 0;
    cell = value;
    return 1;
}

template<size_t N>
bool contains(const std::array<Cell, N> &cells, Tense tense, int slot)
{
    return std::any_of(cells.cbegin(), cells.cend(), [&](const Cell &c) { return c.tense == tense && c.slot == slot; });
}

class RuleSet
{
public:
    RuleSet(const FormRules &rules, Sources &sources, RuleReport &report)
        : m_rules(rules), m_sources(sources), m_report(report)
    {
        for (const Family &family : rules.families) {
            for (const QString &compound : family.compounds)
                m_compounds.insert(compound);
            for (const QString &compound : family.whole)
                m_whole.insert(compound);
        }
    }

    // A cell that a class rule writes: a variants.tsv line for it would be overwritten.
    bool derived(const QString &verb, Tense tense, int slot) const
    {
        if (verb.endsWith(QLatin1String("iare")) && contains(iareCells, tense, slot))
            return true;
        if (verb.endsWith(QLatin1String("ire")) && m_rules.ire.value(verb, IscClass::Isc) != IscClass::Plain
            && contains(iscCells, tense, slot))
            return true;
        if (m_whole.contains(verb))
            return true;
        return m_compounds.contains(verb) && (tense == PastParticiple || tense == IndRemotePast);
    }

    void applyVariants()
    {
        QSet<QString> twoForms, standard;
        for (const VariantRule &rule : m_rules.variants) {
            QStringList &cells = verbOf(m_sources, rule.verb, rule.where).tenses[rule.tense];
            for (int slot = 0; slot < rule.cells.size(); ++slot) {
                const QString &value = rule.cells[slot];
                if (value == QLatin1String("="))
                    continue;
                if (derived(rule.verb, rule.tense, slot))
                    throw SourceError(QStringLiteral("%1: slot %2 of %3 is written by a class rule (stressed-i.tsv,"
                                                     " isc.tsv or families.tsv); change the rule instead")
                                          .arg(rule.where).arg(slot + 1).arg(tenseTag(rule.tense)));
                const int changed = setCell(cells[slot], value);
                if (value.contains(variantSeparator)) {
                    ++m_report.twoForms.cells;
                    twoForms.insert(rule.verb);
                } else {
                    m_report.standardForm.cells += changed;
                    standard.insert(rule.verb);
                }
            }
        }
        m_report.twoForms.verbs = int(twoForms.size());
        m_report.standardForm.verbs = int(standard.size());
    }

    void applyIare()
    {
        const QSet<QString> stressed(m_rules.stressedI.cbegin(), m_rules.stressedI.cend());
        for (const QString &verb : m_rules.stressedI)
            verbOf(m_sources, verb, QStringLiteral("stressed-i.tsv"));
        for (auto &[name, forms] : m_sources.forms) {
            if (!name.endsWith(QLatin1String("iare")))
                continue;
            const bool isStressed = stressed.contains(name);
            // invì-i keeps the stem's i before the ending's; stùd-i has one i.
            const QString stem = isStressed ? name.chopped(3) : name.chopped(4);
            RuleTally &tally = isStressed ? m_report.stressedI : m_report.unstressedI;
            ++tally.verbs;
            for (const Cell &cell : iareCells) {
                const QString ending = cell.slot == 5 ? QStringLiteral("ino") : QStringLiteral("i");
                tally.cells += setCell(forms.tenses[cell.tense][cell.slot], stem + ending);
            }
            if (name.endsWith(QLatin1String("ciare")) || name.endsWith(QLatin1String("giare")))
                applyIareFuture(name, isStressed, forms);
        }
    }

    // After c and g an unstressed i only softens the consonant and is not written
    // before e (comincerò, mangerei, lascerò); a stressed one is a vowel of its own and
    // stays (scierò, scierei).
    void applyIareFuture(const QString &name, bool isStressed, VerbForms &forms)
    {
        const QString kept = name.chopped(3) + QLatin1String("er");
        const QString dropped = name.chopped(4) + QLatin1String("er");
        const QString &wrong = isStressed ? dropped : kept;
        const QString &right = isStressed ? kept : dropped;
        ++m_report.iareFuture.verbs;
        for (const Tense tense : {IndFuture, CondPresent}) {
            for (QString &cell : forms.tenses[tense]) {
                QStringList variants = variantsOf(cell);
                for (QString &variant : variants) {
                    if (variant.startsWith(wrong))
                        variant = right + variant.mid(wrong.size());
                }
                m_report.iareFuture.cells += setCell(cell, variants.join(variantSeparator));
            }
        }
    }

    void applyIsc()
    {
        for (auto it = m_rules.ire.cbegin(); it != m_rules.ire.cend(); ++it)
            verbOf(m_sources, it.key(), QStringLiteral("isc.tsv"));
        for (auto &[name, forms] : m_sources.forms) {
            if (!name.endsWith(QLatin1String("ire")))
                continue;
            const IscClass kind = m_rules.ire.value(name, IscClass::Isc);
            const QString stem = name.chopped(3);
            const bool sourceHasIsc = firstVariant(forms.tenses[IndPresent][0]) == stem + QLatin1String("isco");
            if (kind == IscClass::Plain) {
                if (sourceHasIsc)
                    throw SourceError(QStringLiteral("isc.tsv: '%1' is listed without -isc- but forms.tsv has %2")
                                          .arg(name, forms.tenses[IndPresent][0]));
                ++m_report.plainIre.verbs;
                continue;
            }
            RuleTally &tally = kind == IscClass::Isc ? m_report.isc : m_report.alternatingIre;
            ++tally.verbs;
            for (size_t i = 0; i < iscCells.size(); ++i) {
                QString &cell = forms.tenses[iscCells[i].tense][iscCells[i].slot];
                const QString isc = stem + QLatin1String(iscEndings[i]);
                QString value = isc;
                if (kind != IscClass::Isc) {
                    // The source's plain forms where it has them (appaio), else the regular ones.
                    const QString plain = sourceHasIsc ? stem + QLatin1String(plainEndings[i]) : firstVariant(cell);
                    value = kind == IscClass::PlainFirst ? plain + variantSeparator + isc
                                                         : isc + variantSeparator + plain;
                }
                tally.cells += setCell(cell, value);
            }
        }
    }

    void applyDefective()
    {
        QSet<QString> verbs;
        for (const DefectiveRule &rule : m_rules.defective) {
            if (isPronominalOnly(rule.verb))
                continue; // applyPronominalDefective, once the base is final
            removeCells(rule, verbOf(m_sources, rule.verb, rule.where));
            verbs.insert(rule.verb);
        }
        m_report.defective.verbs = int(verbs.size());
    }

    // A pronominal verb lacking forms its base has (avercela: no imperative) gets
    // its own copy of the base's forms with the gaps, after applyFamilies.
    void applyPronominalDefective()
    {
        QHash<QString, QString> baseOf;
        for (const PronominalVerb &verb : m_sources.pronominal)
            baseOf.insert(verb.infinitive, verb.base);
        for (const DefectiveRule &rule : m_rules.defective) {
            if (!isPronominalOnly(rule.verb))
                continue;
            auto own = m_sources.pronominalForms.find(rule.verb);
            if (own == m_sources.pronominalForms.end()) {
                own = m_sources.pronominalForms.emplace(rule.verb, verbOf(m_sources, baseOf[rule.verb], rule.where)).first;
                ++m_report.defective.verbs;
            }
            removeCells(rule, own->second);
        }
    }

    void applyFamilies()
    {
        checkFamilyMembers();
        for (const DefectiveRule &rule : m_rules.defective) {
            if (m_whole.contains(rule.verb))
                throw SourceError(QStringLiteral("%1: '%2' is conjugated wholly like its model in families.tsv;"
                                                 " list it there as own instead").arg(rule.where, rule.verb));
            if (m_compounds.contains(rule.verb) && (rule.tense == QLatin1String("pp") || rule.tense == QLatin1String("ind.prem")))
                throw SourceError(QStringLiteral("%1: '%2' is a compound of families.tsv, which gives it its model's"
                                                 " %3; list it there as own instead").arg(rule.where, rule.verb, rule.tense));
        }
        for (const Family &family : m_rules.families) {
            ++m_report.families;
            const VerbForms &model = verbOf(m_sources, family.model, QStringLiteral("families.tsv"));
            const QString modelPrefix = family.model.chopped(family.ending.size());
            for (const QString &compound : family.compounds) {
                VerbForms &forms = verbOf(m_sources, compound, QStringLiteral("families.tsv"));
                const QString prefix = compound.chopped(family.ending.size());
                ++m_report.compounds.verbs;
                for (const Tense tense : {PastParticiple, IndRemotePast}) {
                    for (int slot = 0; slot < tenseSize(tense); ++slot) {
                        const QString form = firstVariant(model.tenses[tense][slot]);
                        if (!form.isEmpty() && !form.startsWith(modelPrefix))
                            throw SourceError(QStringLiteral("families.tsv: %1 of the model %2 does not start with"
                                                             " its prefix '%3'").arg(form, family.model, modelPrefix));
                        const QString value = form.isEmpty() ? QString() : prefix + form.mid(modelPrefix.size());
                        m_report.compounds.cells += setCell(forms.tenses[tense][slot], value);
                    }
                }
            }
            for (const QString &compound : family.whole) {
                VerbForms &forms = verbOf(m_sources, compound, QStringLiteral("families.tsv"));
                ++m_report.compounds.verbs;
                ++m_report.wholeCompounds.verbs;
                for (int tense = 0; tense < TenseCount; ++tense) {
                    for (int slot = 0; slot < tenseSize(Tense(tense)); ++slot) {
                        const QString value = compoundCell(family, compound, Tense(tense), model.tenses[tense][slot]);
                        const int changed = setCell(forms.tenses[tense][slot], value);
                        m_report.compounds.cells += changed;
                        m_report.wholeCompounds.cells += changed;
                    }
                }
            }
        }
    }

private:
    // A model's cell with the compound's prefix for the model's: dà -> ridà. A monosyllable
    // is stressed on its vowel, which the longer word has to write (do -> ridò, sta ->
    // sottostà, ho -> riò: avere's h is not written inside a word, riavere: rianno). Of
    // an imperative with a truncated form beside the full one only the full one is
    // prefixed (sta' / stai -> sottostai).
    QString compoundCell(const Family &family, const QString &compound, Tense tense, const QString &cell) const
    {
        const QString modelPrefix = family.model.chopped(family.ending.size());
        const QString prefix = compound.chopped(family.ending.size());
        QStringList forms = variantsOf(cell);
        if (tense == Imperative && forms.size() > 1)
            forms.removeIf([](const QString &form) { return form.endsWith(u'\''); });
        for (QString &form : forms) {
            if (form.isEmpty())
                continue;
            if (!form.startsWith(modelPrefix))
                throw SourceError(QStringLiteral("families.tsv: %1 of the model %2 does not start with its prefix '%3'")
                                      .arg(form, family.model, modelPrefix));
            QString rest = form.mid(modelPrefix.size());
            if (!prefix.isEmpty() && rest.startsWith(u'h'))
                rest.remove(0, 1);
            static const QString plain = QStringLiteral("aeiou");
            static const QString accented = QStringLiteral("àèìòù");
            const auto vowels = std::count_if(rest.cbegin(), rest.cend(), [](QChar c) {
                return plain.contains(c) || accented.contains(c);
            });
            if (!prefix.isEmpty() && vowels == 1 && !rest.isEmpty() && plain.contains(rest.back()))
                rest.back() = accented[plain.indexOf(rest.back())];
            form = prefix + rest;
        }
        return forms.join(variantSeparator);
    }

    bool isPronominalOnly(const QString &verb) const
    {
        return !m_sources.forms.count(verb)
                && std::any_of(m_sources.pronominal.cbegin(), m_sources.pronominal.cend(),
                               [&](const PronominalVerb &p) { return p.infinitive == verb; });
    }

    void removeCells(const DefectiveRule &rule, VerbForms &forms)
    {
        auto remove = [&](QString &cell) { m_report.defective.cells += setCell(cell, QString()); };
        if (rule.tense == QLatin1String("finite")) {
            for (const Tense tense : finiteTenses) {
                for (int person = 1; person <= 6; ++person) {
                    if (!rule.keep.contains(person))
                        remove(forms.tenses[tense][person - 1]);
                }
            }
            for (int i = 0; i < 3; ++i) {
                if (!rule.keep.contains(imperativePersons[i]))
                    remove(forms.tenses[Imperative][i]);
            }
            return;
        }
        QStringList &cells = forms.tenses[tenseFromTag(rule.tense)];
        for (int slot = 1; slot <= cells.size(); ++slot) {
            if (!rule.keep.contains(slot))
                remove(cells[slot - 1]);
        }
    }

    // Every verb ending like a family (and in no longer family ending) is listed in it.
    void checkFamilyMembers()
    {
        QHash<QString, const Family *> byEnding;
        QHash<QString, const Family *> listedIn;
        for (const Family &family : m_rules.families) {
            byEnding.insert(family.ending, &family);
            for (const QStringList *verbs : {&family.compounds, &family.whole, &family.own, &family.unrelated}) {
                for (const QString &verb : *verbs)
                    listedIn.insert(verb, &family);
            }
            listedIn.insert(family.model, &family);
        }
        auto familyOf = [&](const QString &verb) -> const Family * {
            for (qsizetype start = 0; start < verb.size(); ++start) {
                const auto found = byEnding.constFind(verb.mid(start));
                if (found != byEnding.cend())
                    return *found;
            }
            return nullptr;
        };
        QStringList problems;
        for (auto it = listedIn.cbegin(); it != listedIn.cend(); ++it) {
            if (!m_sources.forms.count(it.key()))
                problems << it.key() + QStringLiteral(" is not a verb of forms.tsv");
            else if (familyOf(it.key()) != *it)
                problems << it.key() + QStringLiteral(" belongs to the longer ending -") + familyOf(it.key())->ending;
        }
        for (const auto &[name, forms] : m_sources.forms) {
            const Family *family = familyOf(name);
            if (family && !listedIn.contains(name))
                problems << QStringLiteral("%1 ends in -%2 but is not listed in that family").arg(name, family->ending);
        }
        if (!problems.isEmpty()) {
            problems.sort();
            throw SourceError(QStringLiteral("families.tsv: ") + problems.join(QStringLiteral("; ")));
        }
    }

    const FormRules &m_rules;
    Sources &m_sources;
    RuleReport &m_report;
    QSet<QString> m_compounds;
    QSet<QString> m_whole;
};

} // namespace

RuleReport applyFormRules(const FormRules &rules, Sources &sources)
{
    RuleReport report;
    RuleSet set(rules, sources, report);
    // Order matters: the variants must not touch cells the class rules write (checked),
    // and a compound copies its model once the model is final, defective gaps included.
    set.applyVariants();
    set.applyIare();
    set.applyIsc();
    set.applyDefective();
    set.applyFamilies();
    set.applyPronominalDefective();
    return report;
}
