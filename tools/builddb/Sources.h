#pragma once

// The readable text sources of the verb database, parsed and cross-checked.
// Every reader throws SourceError with "file:line: message" on malformed input.

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <array>
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
    // An empty string is a form the verb does not have ('-' in the file).
    std::array<QStringList, TenseCount> tenses;
};

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
    QHash<QString, Auxiliary> auxiliaries;
    QList<PronominalVerb> pronominal;
    QHash<QString, Translation> translations;
    QHash<QString, qint64> verbIds; // verb-ids.tsv
    QSet<QString> leftOut;          // package entries forms.tsv leaves out on purpose
    QStringList notes; // absent optional sources, said in the report
};

// Reads schema-independent sources from the resources/verbs folder.
Sources readSources(const QString &folder);

// Lemmas of the frequency list in rank order; empty when the file does not exist.
QStringList readFrequencyList(const QString &path);

int tenseSize(Tense tense);
