#include "Derivation.h"

#include <array>

namespace {

struct Endings
{
    const char *vowel; // thematic vowel: a, e, i
    std::array<std::array<const char *, 6>, TenseCount> tenses;
};

// Slots as in forms.tsv; unused slots of the shorter tenses stay null.
const Endings areEndings{"a", {{
    {"ando"}, {"ante"}, {"ato", "ata", "ati", "ate"},
    {"o", "i", "a", "iamo", "ate", "ano"},
    {"avo", "avi", "ava", "avamo", "avate", "avano"},
    {"ai", "asti", "ò", "ammo", "aste", "arono"},
    {"erò", "erai", "erà", "eremo", "erete", "eranno"},
    {"erei", "eresti", "erebbe", "eremmo", "ereste", "erebbero"},
    {"i", "i", "i", "iamo", "iate", "ino"},
    {"assi", "assi", "asse", "assimo", "aste", "assero"},
    {"a", "iamo", "ate"}}}};
const Endings ereEndings{"e", {{
    {"endo"}, {"ente"}, {"uto", "uta", "uti", "ute"},
    {"o", "i", "e", "iamo", "ete", "ono"},
    {"evo", "evi", "eva", "evamo", "evate", "evano"},
    {"ei", "esti", "é", "emmo", "este", "erono"},
    {"erò", "erai", "erà", "eremo", "erete", "eranno"},
    {"erei", "eresti", "erebbe", "eremmo", "ereste", "erebbero"},
    {"a", "a", "a", "iamo", "iate", "ano"},
    {"essi", "essi", "esse", "essimo", "este", "essero"},
    {"i", "iamo", "ete"}}}};
// Without -isc-: isc.tsv decides, as for every other -ire verb.
const Endings ireEndings{"i", {{
    {"endo"}, {"ente"}, {"ito", "ita", "iti", "ite"},
    {"o", "i", "e", "iamo", "ite", "ono"},
    {"ivo", "ivi", "iva", "ivamo", "ivate", "ivano"},
    {"ii", "isti", "ì", "immo", "iste", "irono"},
    {"irò", "irai", "irà", "iremo", "irete", "iranno"},
    {"irei", "iresti", "irebbe", "iremmo", "ireste", "irebbero"},
    {"a", "a", "a", "iamo", "iate", "ano"},
    {"issi", "issi", "isse", "issimo", "iste", "issero"},
    {"i", "iamo", "ite"}}}};

// cerc-are: cerchi, cercherò; mangi-are: mangi, mangerò; studi-are: studi, studiamo.
QString joinStem(const QString &stem, const QString &ending, bool firstConjugation)
{
    const QChar first = ending.front();
    const bool front = first == u'i' || first == u'e' || first == u'è' || first == u'é';
    if (firstConjugation && front && (stem.endsWith(u'c') || stem.endsWith(u'g')))
        return stem + u'h' + ending;
    if (firstConjugation && stem.endsWith(u'i') && stem.size() > 1) {
        const bool softened = stem.endsWith(QLatin1String("ci")) || stem.endsWith(QLatin1String("gi"));
        if (first == u'i' || (softened && front))
            return stem.chopped(1) + ending;
    }
    return stem + ending;
}

} // namespace

VerbForms regularForms(const QString &infinitive)
{
    const Endings *endings = nullptr;
    if (infinitive.endsWith(QLatin1String("are")))
        endings = &areEndings;
    else if (infinitive.endsWith(QLatin1String("ere")))
        endings = &ereEndings;
    else if (infinitive.endsWith(QLatin1String("ire")))
        endings = &ireEndings;
    const QString stem = infinitive.chopped(3);
    // A c or g before -ere/-ire changes its sound with the ending (vinco, vinci; cucio):
    // such a verb needs a model, not the plain endings.
    if (!endings || stem.isEmpty() || (endings != &areEndings && (stem.endsWith(u'c') || stem.endsWith(u'g'))))
        throw SourceError(QStringLiteral("derived.tsv: '%1' cannot be conjugated by the regular endings; give a model")
                              .arg(infinitive));
    VerbForms forms;
    forms.infinitive = infinitive;
    for (int tense = 0; tense < TenseCount; ++tense) {
        for (int slot = 0; slot < tenseSize(Tense(tense)); ++slot)
            forms.tenses[tense] << joinStem(stem, QString::fromUtf8(endings->tenses[tense][slot]), endings == &areEndings);
    }
    return forms;
}

int addDerivedVerbs(const QString &path, Sources &sources)
{
    int added = 0;
    readTsv(path, [&](const QStringList &cells, int line) {
        const QString here = sourceLine(path, line);
        if (cells.size() < 2 || cells.size() > 3)
            throw SourceError(here + QStringLiteral(": expected italian, model [, note]"));
        const QString &verb = cells[0];
        const QString &model = cells[1];
        if (sources.forms.count(verb) || sources.leftOut.contains(verb))
            throw SourceError(QStringLiteral("%1: '%2' is already in forms.tsv").arg(here, verb));
        if (model == QLatin1String("regular")) {
            sources.forms[verb] = regularForms(verb);
            ++added;
            return;
        }
        const auto found = sources.forms.find(model);
        if (found == sources.forms.end())
            throw SourceError(QStringLiteral("%1: model '%2' is not a verb of forms.tsv").arg(here, model));
        // The model's forms with the prefix exchanged: ridere -> sottoridere.
        if (!verb.endsWith(model.right(4)))
            throw SourceError(QStringLiteral("%1: '%2' does not end like its model '%3'").arg(here, verb, model));
        qsizetype common = 0;
        while (common < model.size() && common < verb.size()
               && model.right(common + 1) == verb.right(common + 1))
            ++common;
        const QString modelPrefix = model.chopped(common);
        const QString prefix = verb.chopped(common);
        VerbForms forms = found->second;
        forms.infinitive = verb;
        forms.ownEntry = true;
        for (QStringList &cells : forms.tenses) {
            for (QString &cell : cells) {
                QStringList variants = variantsOf(cell);
                for (QString &form : variants) {
                    if (!form.isEmpty() && !form.startsWith(modelPrefix))
                        throw SourceError(QStringLiteral("%1: %2 of the model does not start with '%3'").arg(here, form, modelPrefix));
                    if (!form.isEmpty())
                        form = prefix + form.mid(modelPrefix.size());
                }
                cell = variants.join(variantSeparator);
            }
        }
        sources.forms[verb] = forms;
        ++added;
    });
    return added;
}
