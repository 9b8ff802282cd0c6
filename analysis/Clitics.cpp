#include "Clitics.h"

#include <QStringList>

#include <array>

namespace norvella::Clitics {

namespace {

constexpr std::array single{"mi", "ti", "ci", "vi", "si", "lo", "la", "li", "le", "gli", "ne"};
// Before lo/la/li/le/ne the first pronoun changes its vowel, and gli joins with -e-.
constexpr std::array combining{"me", "te", "ce", "ve", "se", "glie"};
constexpr std::array combined{"lo", "la", "li", "le", "ne"};

// Before the verb the pairs stand as two words ("me lo"), except gli's, which
// are written as one ("glielo").
bool isProclitic(const QString &word)
{
    static const QStringList words = [] {
        QStringList list;
        for (const char *pronoun : single)
            list << QLatin1String(pronoun);
        for (const char *first : combining) {
            if (qstrcmp(first, "glie") != 0)
                list << QLatin1String(first);
        }
        for (const char *second : combined)
            list << QStringLiteral("glie") + QLatin1String(second);
        return list;
    }();
    return words.contains(word);
}

// "l'ho", "m'ha", "c'era", "n'ho": the pronoun elided before a vowel.
bool isElided(QStringView prefix)
{
    return prefix.size() == 2 && prefix.back() == u'\'' && QStringView(u"lmtcvsn").contains(prefix.front());
}

// Longest first, so "glielo" is not read as "-lo" after "glie".
QStringList encliticEndings()
{
    QStringList endings;
    for (const char *first : combining)
        for (const char *second : combined)
            endings << QLatin1String(first) + QLatin1String(second);
    for (const char *pronoun : single)
        endings << QLatin1String(pronoun);
    return endings;
}

// The imperatives cut to one syllable double the pronoun's consonant: dimmi,
// fallo, dacci, stammi, vattene (but dagli).
bool isShortImperative(const QString &stem)
{
    for (const char *base : {"da", "di", "fa", "sta", "va"})
        if (stem == QLatin1String(base))
            return true;
    return false;
}

void addProclitic(const QString &folded, QList<Candidate> &candidates)
{
    QStringList words;
    for (const QString &word : folded.split(u' ')) {
        if (word.size() > 2 && isElided(QStringView(word).left(2)))
            words << word.left(2) << word.mid(2);
        else
            words << word;
    }
    // "non" is not a pronoun, but it goes before them and a learner types it too.
    qsizetype taken = words.size() > 1 && words.first() == QLatin1String("non") ? 1 : 0;
    while (taken < words.size() - 1 && (isElided(words[taken]) || isProclitic(words[taken])))
        ++taken;
    if (taken > 0)
        candidates.append({words.mid(taken).join(u' '), Host::Finite});
}

void addEnclitic(const QString &word, QList<Candidate> &candidates)
{
    static const QStringList endings = encliticEndings();
    for (const QString &ending : endings) {
        if (!word.endsWith(ending) || word.size() < ending.size() + 2)
            continue;
        const QString stem = word.chopped(ending.size());
        if (stem.endsWith(u'r')) {
            candidates.append({stem + u'e', Host::Infinitive});  // mangiarlo
            candidates.append({stem + QStringLiteral("re"), Host::Infinitive}); // porlo, tradurlo
        } else if (stem.endsWith(QLatin1String("ndo"))) {
            candidates.append({stem, Host::Gerund});
        } else {
            // Only "gli" joins them without the double consonant: "vali" is valere's.
            const bool doubled = !ending.startsWith(QLatin1String("gl")) && stem.endsWith(ending.front());
            const QString shortForm = doubled ? stem.chopped(1) : stem;
            if (isShortImperative(shortForm) && (doubled || ending.startsWith(QLatin1String("gl")))) {
                candidates.append({shortForm + u'\'', Host::Imperative});
                candidates.append({shortForm + u'i', Host::Imperative});
            } else {
                candidates.append({stem, Host::Imperative});
            }
        }
    }
}

} // namespace

QList<Candidate> hostsOf(const QString &folded)
{
    QList<Candidate> candidates;
    if (folded.contains(u' ') || folded.contains(u'\''))
        addProclitic(folded, candidates);
    else
        addEnclitic(folded, candidates);
    return candidates;
}

bool accepts(Host host, int type, int pronoun)
{
    switch (host) {
    case Host::Finite:
        // Not the infinitive, participles, gerund or the affirmative imperative,
        // which take their pronouns after them ("lo mangia" is not "mangialo!").
        return type > 4 && type != 14;
    case Host::Infinitive:
        return type == 1;
    case Host::Gerund:
        return type == 3;
    case Host::Imperative:
        return type == 14 && (pronoun == 2 || pronoun == 4 || pronoun == 5);
    }
    return false;
}

} // namespace norvella::Clitics
