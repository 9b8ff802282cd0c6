#include "Paradigm.h"

#include "Folding.h"

#include <QSet>

#include <algorithm>
#include <array>
#include <optional>

namespace {

// Person slots 1..6 are pronoun ids 1..6; arrays below are indexed by slot - 1.
struct Clitics
{
    QString ending;                    // what the clitic adds to the infinitive's stem
    std::array<QString, 6> proclitic; // before a finite form
    QString suffix;                   // after the gerund
    std::array<QString, 3> imperative; // after the tu, noi, voi imperative
    // la is the object the participle agrees with (me la sono cavata, l'ho smessa),
    // whoever the subject is.
    bool agreesWithLa = false;
    // Reflexive clusters take essere; la alone is an object and takes avere (l'ho
    // smessa, ce l'ho fatta); ci keeps the auxiliary of the verb's meaning (ci ho messo,
    // ci è voluto).
    enum Takes { Essere, Avere, Own } takes = Essere;
};

// mi alzo; "ne" turns the reflexive clitic into me/te/se/ce/ve (me ne vado), and so
// does "la" (me la cavo); ci and la alone stay the same in every person.
const std::array<Clitics, 6> clusters = {{
    {QStringLiteral("si"),
     {QStringLiteral("mi"), QStringLiteral("ti"), QStringLiteral("si"), QStringLiteral("ci"), QStringLiteral("vi"),
      QStringLiteral("si")},
     QStringLiteral("si"),
     {QStringLiteral("ti"), QStringLiteral("ci"), QStringLiteral("vi")}},
    {QStringLiteral("sene"),
     {QStringLiteral("me ne"), QStringLiteral("te ne"), QStringLiteral("se ne"), QStringLiteral("ce ne"),
      QStringLiteral("ve ne"), QStringLiteral("se ne")},
     QStringLiteral("sene"),
     {QStringLiteral("tene"), QStringLiteral("cene"), QStringLiteral("vene")}},
    {QStringLiteral("sela"),
     {QStringLiteral("me la"), QStringLiteral("te la"), QStringLiteral("se la"), QStringLiteral("ce la"),
      QStringLiteral("ve la"), QStringLiteral("se la")},
     QStringLiteral("sela"),
     {QStringLiteral("tela"), QStringLiteral("cela"), QStringLiteral("vela")},
     true},
    {QStringLiteral("cela"),
     {QStringLiteral("ce la"), QStringLiteral("ce la"), QStringLiteral("ce la"), QStringLiteral("ce la"),
      QStringLiteral("ce la"), QStringLiteral("ce la")},
     QStringLiteral("cela"),
     {QStringLiteral("cela"), QStringLiteral("cela"), QStringLiteral("cela")},
     true, Clitics::Avere},
    {QStringLiteral("la"),
     {QStringLiteral("la"), QStringLiteral("la"), QStringLiteral("la"), QStringLiteral("la"), QStringLiteral("la"),
      QStringLiteral("la")},
     QStringLiteral("la"),
     {QStringLiteral("la"), QStringLiteral("la"), QStringLiteral("la")},
     true, Clitics::Avere},
    {QStringLiteral("ci"),
     {QStringLiteral("ci"), QStringLiteral("ci"), QStringLiteral("ci"), QStringLiteral("ci"), QStringLiteral("ci"),
      QStringLiteral("ci")},
     QStringLiteral("ci"),
     {QStringLiteral("ci"), QStringLiteral("ci"), QStringLiteral("ci")},
     false, Clitics::Own},
}};

// The cluster an infinitive ends in after its base's stem (alzar-si, smetter-la,
// cavar-sela), or none: the shapes the builder does not know are reported, not guessed.
const Clitics *clusterOf(const QString &infinitive, const QString &stem)
{
    if (!infinitive.startsWith(stem))
        return nullptr;
    const QString ending = infinitive.mid(stem.size());
    for (const Clitics &cluster : clusters) {
        if (ending == cluster.ending)
            return &cluster;
    }
    return nullptr;
}

// Standard spelling elides la before a vowel or h (l'ho, se l'è cavata, me l'aspettavo)
// and ci before e and i (c'entra, c'è voluto); ne only before essere (se n'è andato).
QString joinProclitic(const Clitics &cluster, const QString &clitic, const QString &form, bool compoundWithEssere)
{
    const QChar first = form.front();
    const bool vowel = QStringLiteral("aeiouàèéìòù").contains(first);
    const bool elide = (cluster.agreesWithLa && (vowel || first == u'h'))
            || (cluster.ending == QLatin1String("ci") && QStringLiteral("eèéiì").contains(first))
            || (clitic.endsWith(QLatin1String(" ne")) && vowel && compoundWithEssere);
    return elide ? clitic.chopped(1) + u'\'' + form : clitic + u' ' + form;
}

struct CompoundTense
{
    ConjugationType simple;
    ConjugationType compound;
    Tense simpleTense;
};

// Display order of the finite tenses; each simple tense is followed by the compound
// tense whose auxiliary is in that simple tense.
const std::array<CompoundTense, 7> finiteTenses = {{
    {IndicativoPresente, PassatoProssimo, IndPresent},
    {Imperfetto, TrapassatoProssimo, IndImperfect},
    {Futuro, FuturoAnteriore, IndFuture},
    {PassatoRemoto, TrapassatoRemoto, IndRemotePast},
    {CongiuntivoPresente, CongiuntivoPassato, SubjPresent},
    {CongiuntivoImperfetto, CongiuntivoTrapassato, SubjImperfect},
    {CondizionalePresente, CondizionalePassato, CondPresent},
}};

// "andato", "andata" -> "andato/a"
QString bothGenders(const QString &masculine, const QString &feminine)
{
    if (masculine.size() == feminine.size() && masculine.chopped(1) == feminine.chopped(1))
        return masculine + u'/' + feminine.right(1);
    return masculine + u'/' + feminine;
}

// Applies a change to each standard form of a cell ("devo / debbo").
template<typename Change>
QString eachVariant(const QString &cell, Change change)
{
    QStringList forms = variantsOf(cell);
    for (QString &form : forms)
        form = change(form);
    return forms.join(variantSeparator);
}

// va' + tene -> vattene: a truncated imperative doubles the clitic's consonant.
QString withEnclitic(const QString &imperative, const QString &clitic)
{
    if (imperative.endsWith(u'\''))
        return imperative.chopped(1) + clitic.front() + clitic;
    return imperative + clitic;
}

class VerbBuilder
{
public:
    VerbBuilder(const VerbForms &forms, const VerbForms &auxiliary, bool essere, const Clitics *clitics,
                Entries &tally)
        : m_forms(forms), m_aux(auxiliary), m_essere(essere), m_clitics(clitics), m_tally(tally) {}

    // A verb that takes both auxiliaries shows both in each compound cell, the more
    // usual first: "è passato/a / ha passato".
    void setOtherAuxiliary(const VerbForms &auxiliary, bool essere)
    {
        m_otherAux = &auxiliary;
        m_otherEssere = essere;
    }

    QList<FormRow> build(const QString &infinitive)
    {
        add(Infinito, 0, infinitive);
        // A pronominal verb has no present participle of its own (alzantesi is not in
        // use) and shows the plain past participle its compound tenses are made of.
        if (!m_clitics)
            add(ParticipioPresente, 0, m_forms.tenses[PresentParticiple][0]);
        add(Gerundio, 0, suffixed(m_forms.tenses[Gerund][0]));
        const QStringList &participle = m_forms.tenses[PastParticiple];
        const bool hasParticiple = !participle.contains(QString());
        if (hasParticiple) {
            for (int slot = 0; slot < 4; ++slot)
                add(ParticipioPassato, 0, participle[slot]);
        }
        // A person the verb never has in a simple tense (a "finite" line of defective.tsv)
        // has no compound tense either, although the auxiliary has every person.
        std::array<bool, 6> hasPerson = {};
        for (const CompoundTense &tense : finiteTenses) {
            for (int person = 1; person <= 6; ++person)
                hasPerson[person - 1] = hasPerson[person - 1] || !m_forms.tenses[tense.simpleTense][person - 1].isEmpty();
        }
        for (const CompoundTense &tense : finiteTenses) {
            for (int person = 1; person <= 6; ++person)
                add(tense.simple, person, finite(m_forms.tenses[tense.simpleTense][person - 1], person));
            if (hasParticiple) {
                for (int person = 1; person <= 6; ++person) {
                    if (hasPerson[person - 1])
                        add(tense.compound, person, compound(tense.simpleTense, person));
                    else
                        ++m_tally.compoundPersonsLeftOut;
                }
            }
            if (tense.simple == PassatoRemoto)
                addImperative();
        }
        return m_rows;
    }

private:
    void add(ConjugationType type, int pronoun, const QString &text)
    {
        if (!text.isEmpty())
            m_rows.append({type, pronoun, text});
    }

    QString suffixed(const QString &form) const
    {
        if (form.isEmpty() || !m_clitics)
            return form;
        return eachVariant(form, [&](const QString &variant) { return variant + m_clitics->suffix; });
    }

    QString finite(const QString &form, int person, bool compoundWithEssere = false) const
    {
        if (form.isEmpty() || !m_clitics)
            return form;
        const QString &clitic = m_clitics->proclitic[person - 1];
        return eachVariant(form, [&](const QString &variant) {
            return joinProclitic(*m_clitics, clitic, variant, compoundWithEssere);
        });
    }

    QString compound(Tense auxiliaryTense, int person)
    {
        const QString shown = compound(m_aux, m_essere, auxiliaryTense, person);
        if (!m_otherAux)
            return shown;
        return shown + variantSeparator + compound(*m_otherAux, m_otherEssere, auxiliaryTense, person);
    }

    // The compound tenses are built on the first of two standard participles (ho visto).
    QString compound(const VerbForms &auxiliaryForms, bool essere, Tense auxiliaryTense, int person)
    {
        QStringList participle;
        for (const QString &cell : m_forms.tenses[PastParticiple])
            participle << firstVariant(cell);
        QString agreed = participle[0];
        if (m_clitics && m_clitics->agreesWithLa)
            agreed = participle[1];
        else if (essere)
            agreed = person <= 3 ? bothGenders(participle[0], participle[1]) : bothGenders(participle[2], participle[3]);
        const QString auxiliary = firstVariant(auxiliaryForms.tenses[auxiliaryTense][person - 1]);
        const QString clitic = m_clitics ? m_clitics->proclitic[person - 1] : QString();
        // Written Italian elides ne before the vowel of essere: se n'è andato, me n'ero andato.
        if (essere && clitic.endsWith(QLatin1String(" ne")) && startsWithVowel(auxiliary))
            ++m_tally.elisions;
        return finite(auxiliary + u' ' + agreed, person, essere);
    }

    static bool startsWithVowel(const QString &word)
    {
        return !word.isEmpty() && QStringLiteral("aeiouàèéìòù").contains(word.front());
    }

    // The tu imperative with its enclitic. Of two standard forms the truncated one takes
    // the clitic (va' / vai -> vattene). Fare's compounds attach it to their -fa' as fare
    // does (fatti, rifatti, assuefatti), not to -fai: a passato remoto in -feci marks them.
    QString tuEnclitic(const QString &cell, const QString &clitic)
    {
        QStringList forms = variantsOf(cell);
        QStringList truncated;
        std::copy_if(forms.cbegin(), forms.cend(), std::back_inserter(truncated),
                     [](const QString &form) { return form.endsWith(u'\''); });
        if (!truncated.isEmpty()) {
            forms = truncated;
        } else if (firstVariant(m_forms.tenses[IndRemotePast][0]).endsWith(QLatin1String("feci"))) {
            for (QString &form : forms) {
                if (form.endsWith(QLatin1String("fai"))) {
                    form = form.chopped(1) + u'\'';
                    ++m_tally.fareEnclitics;
                }
            }
        }
        for (QString &form : forms)
            form = withEnclitic(form, clitic);
        forms.removeDuplicates();
        return forms.join(variantSeparator);
    }

    void addImperative()
    {
        const QStringList &own = m_forms.tenses[Imperative];
        if (own == QStringList{QString(), QString(), QString()})
            return;
        const QStringList &subjunctive = m_forms.tenses[SubjPresent];
        // tu, noi, voi have their own forms; lui/lei and loro are the subjunctive's.
        const std::array<std::pair<int, QString>, 5> persons = {{
            {2, own[0]}, {3, subjunctive[2]}, {4, own[1]}, {5, own[2]}, {6, subjunctive[5]}}};
        for (const auto &[person, form] : persons) {
            if (form.isEmpty())
                continue;
            if (!m_clitics || person == 3 || person == 6) {
                add(Imperativo, person, finite(form, person));
            } else {
                const QString &clitic = m_clitics->imperative[person == 2 ? 0 : person - 3];
                add(Imperativo, person, person == 2 ? tuEnclitic(form, clitic)
                                                    : eachVariant(form, [&](const QString &variant) {
                                                          return withEnclitic(variant, clitic);
                                                      }));
            }
        }
    }

    const VerbForms &m_forms;
    const VerbForms &m_aux;
    bool m_essere;
    const VerbForms *m_otherAux = nullptr;
    bool m_otherEssere = false;
    const Clitics *m_clitics;
    Entries &m_tally;
    QList<FormRow> m_rows;
};

const VerbForms &requireVerb(const Sources &sources, const char *name)
{
    const auto found = sources.forms.find(QLatin1String(name));
    if (found == sources.forms.end())
        throw SourceError(QStringLiteral("forms.tsv: '%1' is missing; compound tenses need it").arg(name));
    return found->second;
}

void checkAuxiliaries(const Sources &sources)
{
    QSet<QString> pronominal;
    for (const PronominalVerb &verb : sources.pronominal)
        pronominal.insert(verb.infinitive);
    QStringList unknown;
    for (auto it = sources.auxiliaries.cbegin(); it != sources.auxiliaries.cend(); ++it) {
        if (!sources.forms.count(it.key()) && !pronominal.contains(it.key()))
            unknown << it.key();
    }
    if (!unknown.isEmpty()) {
        unknown.sort();
        throw SourceError(QStringLiteral("auxiliaries.tsv: not verbs of forms.tsv or pronominal.tsv: %1").arg(unknown.join(u", ")));
    }
}

// Ids come from verb-ids.tsv so that they survive releases; a verb it does not list
// yet gets the next free number, which tools/assign-verb-ids will make permanent.
void assignIds(Entries &entries, const QHash<QString, qint64> &registered)
{
    qint64 next = 0;
    for (const qint64 id : registered)
        next = std::max(next, id);
    for (Entry &entry : entries.verbs) {
        entry.id = registered.value(entry.italian);
        if (!entry.id) {
            entry.id = ++next;
            entries.provisionalIds << entry.italian;
        }
    }
}

} // namespace

Entries buildEntries(const Sources &sources)
{
    checkAuxiliaries(sources);
    const VerbForms &essere = requireVerb(sources, "essere");
    const VerbForms &avere = requireVerb(sources, "avere");

    Entries entries;
    QSet<QString> names;
    for (const auto &[name, forms] : sources.forms) {
        if (!forms.ownEntry)
            continue;
        const bool takesEssere = sources.auxiliaries.value(name, Auxiliary::Avere) == Auxiliary::Essere;
        VerbBuilder builder(forms, takesEssere ? essere : avere, takesEssere, nullptr, entries);
        if (sources.otherAuxiliaries.contains(name))
            builder.setOtherAuxiliary(takesEssere ? avere : essere, !takesEssere);
        entries.verbs.append({0, name, false, builder.build(infinitiveOf(name))});
        names.insert(name);
    }

    QStringList errors;
    QSet<QString> usedBases;
    for (const PronominalVerb &verb : sources.pronominal) {
        const auto base = sources.forms.find(verb.base);
        if (base == sources.forms.end()) {
            errors << QStringLiteral("%1: base '%2' is not in forms.tsv").arg(verb.infinitive, verb.base);
            continue;
        }
        // The clitic replaces the final -e (alzar-si); -rre verbs drop -re (por-si).
        const QString stem = verb.base.endsWith(QLatin1String("rre")) ? verb.base.chopped(2) : verb.base.chopped(1);
        const Clitics *clitics = clusterOf(verb.infinitive, stem);
        if (!clitics) {
            entries.skippedPronominal << verb.infinitive;
            continue;
        }
        if (names.contains(verb.infinitive)) {
            errors << QStringLiteral("%1: duplicate verb").arg(verb.infinitive);
            continue;
        }
        // A ci verb: its own line of auxiliaries.tsv (volerci: ci è voluto), else the
        // base verb's (ci sono stato, ci ho pensato).
        const auto own = sources.auxiliaries.constFind(verb.infinitive);
        const bool takesEssere = clitics->takes == Clitics::Own
                ? (own != sources.auxiliaries.cend() ? *own : sources.auxiliaries.value(verb.base, Auxiliary::Avere))
                        == Auxiliary::Essere
                : clitics->takes == Clitics::Essere;
        const auto ownForms = sources.pronominalForms.find(verb.infinitive);
        const VerbForms &forms = ownForms != sources.pronominalForms.end() ? ownForms->second : base->second;
        VerbBuilder builder(forms, takesEssere ? essere : avere, takesEssere, clitics, entries);
        entries.verbs.append({0, verb.infinitive, true, builder.build(verb.infinitive)});
        ++entries.clusterVerbs[clitics->ending];
        names.insert(verb.infinitive);
        usedBases.insert(verb.base);
    }
    if (!errors.isEmpty())
        throw SourceError(QStringLiteral("pronominal.tsv: ") + errors.join(QStringLiteral("; ")));

    for (const auto &[name, forms] : sources.forms) {
        if (!forms.ownEntry && !usedBases.contains(name))
            entries.unusedBases << name;
    }
    std::sort(entries.verbs.begin(), entries.verbs.end(), [](const Entry &a, const Entry &b) {
        const QString foldedA = fold(a.italian);
        const QString foldedB = fold(b.italian);
        return foldedA != foldedB ? foldedA < foldedB : a.italian < b.italian;
    });
    assignIds(entries, sources.verbIds);
    return entries;
}
