#include "ConjugationGroups.h"

#include <array>
#include <span>

namespace norvella::ConjugationGroups {

namespace {

const std::array<Tense, 8> indicative = {{
    {"6", &Verb::indicativoPresente, "tense.ind.presente"},
    {"7", &Verb::indicativoPassatoProssimo, "tense.ind.passatoprossimo"},
    {"8", &Verb::indicativoImperfetto, "tense.ind.imperfetto"},
    {"9", &Verb::indicativoTrapassatoProssimo, "tense.ind.trapassatoprossimo"},
    {"12", &Verb::indicativoPassatoRemoto, "tense.ind.passatoremoto"},
    {"13", &Verb::indicativoTrapassatoRemoto, "tense.ind.trapassatoremoto"},
    {"10", &Verb::indicativoFuturo, "tense.ind.futuro"},
    {"11", &Verb::indicativoFuturoAnteriore, "tense.ind.futuroanteriore"},
}};

const std::array<Tense, 4> subjunctive = {{
    {"15", &Verb::congiuntivoPresente, "tense.sub.presente"},
    {"17", &Verb::congiuntivoImperfetto, "tense.sub.imperfetto"},
    {"16", &Verb::congiuntivoPassatoProssimo, "tense.sub.passatoprossimo"},
    {"18", &Verb::congiuntivoTrapassatoProssimo, "tense.sub.trapassatoprossimo"},
}};

const std::array<Tense, 2> conditional = {{
    {"19", &Verb::condizionalePresente, "tense.con.present"},
    {"20", &Verb::condizionalePassato, "tense.con.past"},
}};

const std::array<Tense, 4> other = {{
    {"14", &Verb::imperativo, "tense.other.imperative"},
    {"2", &Verb::participioPresente, "tense.other.participiopresente"},
    {"4", &Verb::participioPassato, "tense.other.pastparticiple"},
    {"3", &Verb::gerundio, "tense.other.gerund"},
}};

std::span<const Tense> tenses(int group)
{
    switch (group) {
    case Indicative: return indicative;
    case Subjunctive: return subjunctive;
    case Conditional: return conditional;
    case Other: return other;
    default: return {};
    }
}

} // namespace

bool isValidGroup(int group)
{
    return group >= 0 && group < GroupCount;
}

int tenseCount(int group)
{
    return int(tenses(group).size());
}

const Tense *tense(int group, int index)
{
    const auto list = tenses(group);
    if (index < 0 || index >= int(list.size()))
        return nullptr;
    return &list[size_t(index)];
}

QString titleKey(int group, int index, bool showTranslated)
{
    const Tense *t = tense(group, index);
    if (!t)
        return {};
    QString key = QString::fromLatin1(t->titleKey);
    if (showTranslated)
        key += QStringLiteral("_italian");
    return key;
}

int groupOf(const QString &typeId)
{
    for (int group = 0; group < GroupCount; ++group) {
        for (const Tense &t : tenses(group)) {
            if (typeId == QLatin1String(t.typeId))
                return group;
        }
    }
    return -1;
}

QString groupTitleKey(int group)
{
    static const std::array<const char *, GroupCount> keys = {
        "type.indicative.full", "type.subjunctive.full", "type.conditional.full", "type.other.full"};
    return isValidGroup(group) ? QString::fromLatin1(keys[size_t(group)]) : QString();
}

QString groupTitleKey(int group, bool showTranslated)
{
    if (!showTranslated)
        return groupTitleKey(group);
    static const std::array<const char *, GroupCount> keys = {
            "type.indicative.full_italian", "type.subjunctive.full_italian", "type.conditional.full_italian",
            "type.other.full_italian"};
    return isValidGroup(group) ? QString::fromLatin1(keys[size_t(group)]) : QString();
}

QString analyticsValue(int segment)
{
    static const std::array<const char *, GroupCount> values = {
        "CONJUGATIONS_IND", "CONJUGATIONS_SUB", "CONJUGATIONS_CON", "CONJUGATIONS_OTHER"};
    return isValidGroup(segment) ? QString::fromLatin1(values[size_t(segment)])
                                 : QStringLiteral("CONJUGATIONS_NA");
}

void distribute(Verb &verb, const ConjugationList &forms)
{
    for (int type = 1; type <= 20; ++type) {
        const QString id = QString::number(type);
        ConjugationList filtered;
        for (const Conjugation &form : forms) {
            if (form.type == id)
                filtered.append(form);
        }
        *verb.listForType(id) = filtered;
    }
}

} // namespace norvella::ConjugationGroups
