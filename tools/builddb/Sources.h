#pragma once

// The readable text sources of the verb database, parsed and cross-checked.
// Every reader throws SourceError with "file:line: message" on malformed input.

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <array>
#include <functional>
#include <map>
#include <stdexcept>

class SourceError : public std::runtime_error
{
public:
    explicit SourceError(const QString &message) : std::runtime_error(message.toStdString()) {}
};

// Tense tags of forms.tsv, in file order.
enum Tense {
    Gerund, PresentParticiple, PastParticiple,
    IndPresent, IndImperfect, IndRemotePast, IndFuture,
    CondPresent, SubjPresent, SubjImperfect, Imperative,
    TenseCount
};

struct VerbForms
{
    QString infinitive;
    bool ownEntry = true; // false: only the base of pronominal verbs
    // An empty string is a form the verb does not have ('-' in the file). A cell may
    // hold two standard forms, more common first, joined by variantSeparator.
    std::array<QStringList, TenseCount> tenses;
};

inline const QString variantSeparator = QStringLiteral(" / ");
// The forms of a cell: one, or several where Italian has two standard ones.
QStringList variantsOf(const QString &cell);
// The form compound tenses and compounds are built on.
QString firstVariant(const QString &cell);

enum class Auxiliary { Avere, Essere };

struct PronominalVerb
{
    QString infinitive; // alzarsi, andarsene
    QString base;       // alzare, andare
};

inline constexpr int TranslationLanguages = 7;
// Column order of the translation files after "italian"; also the verb table's columns.
inline const std::array<const char *, TranslationLanguages> translationColumns = {
    "english", "german", "french", "spanish", "dutch", "portuguese", "turkish"};

struct Translation
{
    std::array<QString, TranslationLanguages> text; // null QString = no translation
    QString file;
    int line = 0;
};

struct Sources
{
    std::map<QString, VerbForms> forms;
    QHash<QString, Auxiliary> auxiliaries;      // the one shown first
    QHash<QString, Auxiliary> otherAuxiliaries; // the second of a verb that takes both
    QList<PronominalVerb> pronominal;
    // Forms of a pronominal verb that lacks some of its base's (avercela has no
    // imperative): the base's, less the gaps of defective.tsv.
    std::map<QString, VerbForms> pronominalForms;
    QHash<QString, Translation> translations;
    QHash<QString, qint64> verbIds; // verb-ids.tsv
    QSet<QString> leftOut;          // package entries forms.tsv leaves out on purpose
    int derivedVerbs = 0;           // verbs of derived.tsv, conjugated by rule
    QStringList ranked;             // frequency.tsv: the most frequent genuine verbs, in rank order
    QStringList notes; // absent optional sources, said in the report
};

// Reads schema-independent sources from the resources/verbs folder.
Sources readSources(const QString &folder);

// Lemmas of the frequency list in rank order; empty when the file does not exist.
QStringList readFrequencyList(const QString &path);

int tenseSize(Tense tense);
// The tag of a tense in forms.tsv ("ind.pres"), and back (TenseCount when unknown).
QString tenseTag(Tense tense);
Tense tenseFromTag(const QString &tag);

// Calls visit(cells, line) for every line of a tab-separated source that is neither
// blank nor a '#' comment; throws SourceError when the file cannot be read.
void readTsv(const QString &path, const std::function<void(const QStringList &, int)> &visit);
// "file.tsv:12", the prefix of every message about a source line.
QString sourceLine(const QString &path, int line);
// A single word form as the sources spell it (lower case, accents, apostrophe).
bool isWordForm(const QString &form);
// The infinitive a verb key stands for: "ripartire²", the second of two homographs, is
// spelled "ripartire".
QString infinitiveOf(const QString &key);
