#include "IrregularMarks.h"

#include "RegularParadigm.h"

#include <QSet>

#include <optional>

namespace {

// The cell of forms.tsv a row of the conjugation table was built from.
struct SourceCell
{
    Tense tense = TenseCount; // TenseCount: none (the infinitive)
    int slot = 0;
};

std::optional<Tense> simpleTense(int type)
{
    switch (type) {
    case Gerundio: return Gerund;
    case ParticipioPresente: return PresentParticiple;
    case IndicativoPresente: return IndPresent;
    case Imperfetto: return IndImperfect;
    case PassatoRemoto: return IndRemotePast;
    case Futuro: return IndFuture;
    case CondizionalePresente: return CondPresent;
    case CongiuntivoPresente: return SubjPresent;
    case CongiuntivoImperfetto: return SubjImperfect;
    default: return std::nullopt;
    }
}

bool isCompound(int type)
{
    return type == PassatoProssimo || type == TrapassatoProssimo || type == FuturoAnteriore
        || type == TrapassatoRemoto || type == CongiuntivoPassato || type == CongiuntivoTrapassato
        || type == CondizionalePassato;
}

SourceCell sourceCell(const FormRow &row, int participleIndex)
{
    if (const auto tense = simpleTense(row.type))
        return {*tense, row.pronoun ? row.pronoun - 1 : 0};
    if (row.type == ParticipioPassato)
        return {PastParticiple, participleIndex};
    if (row.type == Imperativo) {
        switch (row.pronoun) {
        case 2: return {Imperative, 0};
        case 4: return {Imperative, 1};
        case 5: return {Imperative, 2};
        case 3: return {SubjPresent, 2};
        default: return {SubjPresent, 5};
        }
    }
    // Only the participle of a compound tense can be irregular: the auxiliary is
    // a verb of its own. Plural persons agree with the plural participle.
    if (isCompound(row.type))
        return {PastParticiple, row.pronoun >= 4 ? 2 : 0};
    return {};
}

quint8 cellMask(const QString &actual, const QString &regular)
{
    const QStringList allowed = variantsOf(regular);
    const QStringList forms = variantsOf(actual);
    quint8 mask = 0;
    for (int i = 0; i < forms.size() && i < 8; ++i) {
        if (!allowed.contains(forms[i]))
            mask |= quint8(1u << i);
    }
    return mask;
}

quint8 rowMask(const FormRow &row, const SourceCell &cell, const VerbForms &actual,
               const std::optional<RegularParadigm> &regular)
{
    if (cell.tense == TenseCount)
        return 0;
    const QString &source = actual.tenses[cell.tense][cell.slot];
    const QString expected = regular ? regular->forms.tenses[cell.tense][cell.slot] : QString();
    if (isCompound(row.type))
        return cellMask(firstVariant(source), expected) ? 1 : 0;
    const quint8 mask = cellMask(source, expected);
    // A row shows the cell's forms in order, each with its clitic, except the tu
    // imperative with an enclitic, built on the truncated form alone (vattene).
    if (variantsOf(row.text).size() == variantsOf(source).size())
        return mask;
    return mask ? 1 : 0;
}

QString patternName(VerbClass verbClass)
{
    switch (verbClass) {
    case VerbClass::Are: return QStringLiteral("are");
    case VerbClass::Ere: return QStringLiteral("ere");
    case VerbClass::Ire: return QStringLiteral("ire");
    case VerbClass::IreIsc: return QStringLiteral("isc");
    }
    return {};
}

} // namespace

IrregularMarks markIrregular(const Entries &entries, const Sources &sources, const FormRules &rules)
{
    QHash<QString, QString> baseOf;
    for (const PronominalVerb &verb : sources.pronominal)
        baseOf.insert(verb.infinitive, verb.base);
    QHash<QString, QString> modelOf;
    for (const Family &family : rules.families) {
        for (const QStringList *compounds : {&family.compounds, &family.whole}) {
            for (const QString &compound : *compounds)
                modelOf.insert(compound, family.model);
        }
    }
    const QSet<QString> stressed(rules.stressedI.cbegin(), rules.stressedI.cend());

    IrregularMarks marks;
    for (const Entry &entry : entries.verbs) {
        const QString base = entry.pronominal ? baseOf.value(entry.italian) : entry.italian;
        const auto found = sources.forms.find(base);
        if (found == sources.forms.end())
            throw SourceError(QStringLiteral("%1: no forms for '%2'").arg(entry.italian, base));
        const VerbForms &actual = found->second;
        const std::optional<RegularParadigm> regular =
                regularParadigm(base, rules.ire.value(base, IscClass::Isc), stressed.contains(base));

        QList<quint8> &masks = marks.rows[entry.italian];
        masks.reserve(entry.rows.size());
        int participleIndex = 0;
        bool irregular = false;
        for (const FormRow &row : entry.rows) {
            const SourceCell cell = sourceCell(row, participleIndex);
            if (row.type == ParticipioPassato)
                ++participleIndex;
            const quint8 mask = rowMask(row, cell, actual, regular);
            masks << mask;
            irregular = irregular || mask;
            marks.irregularRows += mask != 0;
        }
        marks.rowCount += entry.rows.size();

        VerbPattern pattern;
        if (!irregular && regular) {
            pattern.pattern = patternName(regular->verbClass);
        } else {
            pattern.pattern = QStringLiteral("irregular");
            pattern.model = modelOf.value(base);
            // A pronominal verb follows its own base where the base is listed (andarsene, andare).
            if (pattern.model.isEmpty() && entry.pronominal && actual.ownEntry)
                pattern.model = base;
        }
        ++marks.verbsByPattern[pattern.model.isEmpty() ? pattern.pattern : QStringLiteral("like a model")];
        marks.verbs.insert(entry.italian, pattern);
    }
    return marks;
}
