#include "RegularParadigm.h"

#include <array>

namespace {

// Endings per tense and slot in the order of forms.tsv; "|" separates spellings
// that are both regular (the -ere passato remoto's -ei and -etti).
const std::array<const char *, 6> areEndings[TenseCount] = {
    /* ger   */ {"ando"},
    /* ppres */ {"ante"},
    /* pp    */ {"ato", "ata", "ati", "ate"},
    /* pres  */ {"o", "i", "a", "iamo", "ate", "ano"},
    /* impf  */ {"avo", "avi", "ava", "avamo", "avate", "avano"},
    /* prem  */ {"ai", "asti", "ò", "ammo", "aste", "arono"},
    /* fut   */ {"erò", "erai", "erà", "eremo", "erete", "eranno"},
    /* cond  */ {"erei", "eresti", "erebbe", "eremmo", "ereste", "erebbero"},
    /* cong  */ {"i", "i", "i", "iamo", "iate", "ino"},
    /* congi */ {"assi", "assi", "asse", "assimo", "aste", "assero"},
    /* imp   */ {"a", "iamo", "ate"},
};

const std::array<const char *, 6> ereEndings[TenseCount] = {
    {"endo"},
    {"ente"},
    {"uto", "uta", "uti", "ute"},
    {"o", "i", "e", "iamo", "ete", "ono"},
    {"evo", "evi", "eva", "evamo", "evate", "evano"},
    {"ei|etti", "esti", "é|ette", "emmo", "este", "erono|ettero"},
    {"erò", "erai", "erà", "eremo", "erete", "eranno"},
    {"erei", "eresti", "erebbe", "eremmo", "ereste", "erebbero"},
    {"a", "a", "a", "iamo", "iate", "ano"},
    {"essi", "essi", "esse", "essimo", "este", "essero"},
    {"i", "iamo", "ete"},
};

// Plain -ire; the -isc- cells are replaced below for the verbs that take it.
const std::array<const char *, 6> ireEndings[TenseCount] = {
    {"endo"},
    {"ente|iente"},
    {"ito", "ita", "iti", "ite"},
    {"o", "i", "e", "iamo", "ite", "ono"},
    {"ivo", "ivi", "iva", "ivamo", "ivate", "ivano"},
    {"ii", "isti", "ì", "immo", "iste", "irono"},
    {"irò", "irai", "irà", "iremo", "irete", "iranno"},
    {"irei", "iresti", "irebbe", "iremmo", "ireste", "irebbero"},
    {"a", "a", "a", "iamo", "iate", "ano"},
    {"issi", "issi", "isse", "issimo", "iste", "issero"},
    {"i", "iamo", "ite"},
};

struct IscCell
{
    Tense tense;
    int slot;
    const char *ending;
};
const std::array<IscCell, 9> iscCells = {{{IndPresent, 0, "isco"}, {IndPresent, 1, "isci"}, {IndPresent, 2, "isce"},
                                          {IndPresent, 5, "iscono"}, {SubjPresent, 0, "isca"}, {SubjPresent, 1, "isca"},
                                          {SubjPresent, 2, "isca"}, {SubjPresent, 5, "iscano"}, {Imperative, 0, "isci"}}};

bool startsWithFrontVowel(const QString &ending)
{
    return ending.startsWith(u'e') || ending.startsWith(u'i') || ending.startsWith(u'è') || ending.startsWith(u'é');
}

// -are: c and g keep their hard sound before e and i (cerchi, pagherò); the i of
// -ciare, -giare, -sciare only softens and goes before e and i (mangerò, lasci);
// any other unstressed i merges with an ending's i (studi), a stressed one stays
// before it (invii), and noi and voi merge either way (inviamo).
QString joinAre(const QString &stem, const QString &ending, bool stressedI)
{
    if (!startsWithFrontVowel(ending))
        return stem + ending;
    if (stem.endsWith(u'i')) {
        const QString base = stem.chopped(1);
        const bool softener = base.endsWith(u'c') || base.endsWith(u'g');
        if (!ending.startsWith(u'i'))
            return softener && !stressedI ? base + ending : stem + ending;
        if (stressedI && !ending.startsWith(QLatin1String("ia")))
            return stem + ending;
        return base + ending;
    }
    if (stem.endsWith(u'c') || stem.endsWith(u'g'))
        return stem + u'h' + ending;
    return stem + ending;
}

// -ere and -ire: the endings follow the stem letter for letter (vinco, fuggo), but
// a soft c or g may keep its sound with an i before a, o and u (cucio, piaciuto),
// and a stem's i merges with an ending's (scegli-iamo -> scegliamo).
QStringList joinEreIre(const QString &stem, const QString &ending)
{
    if (stem.endsWith(u'i') && ending.startsWith(u'i'))
        return {stem.chopped(1) + ending};
    const bool soft = stem.endsWith(u'c') || stem.endsWith(u'g');
    if (!soft || startsWithFrontVowel(ending))
        return {stem + ending};
    // The participle has one spelling: piaciuto, conosciuto, not piacuto.
    if (ending.startsWith(u'u'))
        return {stem + u'i' + ending};
    return {stem + ending, stem + u'i' + ending};
}

QString cell(const QStringList &spellings)
{
    QStringList unique = spellings;
    unique.removeDuplicates();
    return unique.join(variantSeparator);
}

} // namespace

VerbClass ireClass(IscClass ire)
{
    return ire == IscClass::Plain || ire == IscClass::PlainFirst ? VerbClass::Ire : VerbClass::IreIsc;
}

std::optional<RegularParadigm> regularParadigm(const QString &infinitive, IscClass ire, bool stressedI)
{
    RegularParadigm paradigm;
    QString stem;
    const std::array<const char *, 6> *endings = nullptr;
    if (infinitive.endsWith(QLatin1String("are"))) {
        paradigm.verbClass = VerbClass::Are;
        stem = infinitive.chopped(3);
        endings = areEndings;
    } else if (infinitive.endsWith(QLatin1String("ere"))) {
        paradigm.verbClass = VerbClass::Ere;
        stem = infinitive.chopped(3);
        endings = ereEndings;
    } else if (infinitive.endsWith(QLatin1String("ire"))) {
        paradigm.verbClass = ireClass(ire);
        stem = infinitive.chopped(3);
        endings = ireEndings;
    } else if (infinitive.endsWith(QLatin1String("urre"))) {
        paradigm.verbClass = VerbClass::Ere;
        stem = infinitive.chopped(4) + QLatin1String("uc");
        endings = ereEndings;
    } else if (infinitive.endsWith(QLatin1String("orre"))) {
        paradigm.verbClass = VerbClass::Ere;
        stem = infinitive.chopped(4) + QLatin1String("on");
        endings = ereEndings;
    } else if (infinitive.endsWith(QLatin1String("arre"))) {
        paradigm.verbClass = VerbClass::Ere;
        stem = infinitive.chopped(4) + u'a';
        endings = ereEndings;
    } else {
        return std::nullopt;
    }

    const bool are = endings == areEndings;
    paradigm.forms.infinitive = infinitive;
    for (int tense = 0; tense < TenseCount; ++tense) {
        QStringList &cells = paradigm.forms.tenses[tense];
        for (int slot = 0; slot < tenseSize(Tense(tense)); ++slot) {
            QStringList spellings;
            for (const QString &ending : QString::fromUtf8(endings[tense][slot]).split(u'|')) {
                if (are)
                    spellings << joinAre(stem, ending, stressedI);
                else
                    spellings << joinEreIre(stem, ending);
            }
            cells << cell(spellings);
        }
    }
    if (endings == ireEndings && ire != IscClass::Plain) {
        for (const IscCell &isc : iscCells) {
            QString &target = paradigm.forms.tenses[isc.tense][isc.slot];
            const QString withIsc = stem + QLatin1String(isc.ending);
            target = ire == IscClass::Isc ? withIsc : cell(variantsOf(target) << withIsc);
        }
    }
    return paradigm;
}
