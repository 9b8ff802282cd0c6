#pragma once

// Which verb, mood, tense and person a conjugated form is: "andavamo" is andare,
// indicative imperfect, noi. Built once from every form of the master database;
// a lookup hashes the text and searches the sorted hashes, whatever the text.

#include <QList>
#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

struct sqlite3;

namespace norvella {

struct FormReading
{
    qint64 verbId = 0;
    QString infinitive;
    int type = 0;    // conjugation_type_id
    int pronoun = 0; // pronoun id 1-6, 0 for the forms without one
    int slot = 0;    // past participle: 0 m. sg., 1 f. sg., 2 m. pl., 3 f. pl.
    int order = 0;   // conj_order of the form's row

    bool operator==(const FormReading &) const = default;
};

class FormAnalysis
{
public:
    // Reads the verb and conjugation tables of an open database. Null, with the
    // reason in *error, when they cannot be read, and null once `cancel` is set.
    static std::unique_ptr<FormAnalysis> build(sqlite3 *db, QString *error, const std::atomic_bool *cancel = nullptr);
    // The same from a database file, opened read-only.
    static std::unique_ptr<FormAnalysis> fromFile(const QString &path, QString *error,
                                                  const std::atomic_bool *cancel = nullptr);

    // Whether the imperative's lui/lei and loro are told apart from the present
    // subjunctive they share their forms with.
    enum class Imperatives { AsSubjunctive, AsShown };

    // Every reading of a whole form, with or without its clitics and auxiliary
    // ("sono andata", "mi alzo", "dimmi", "lo mangio"), ignoring case, accents
    // and surrounding spaces.
    // The imperative's lui/lei and loro read as the present subjunctive they are.
    // AsShown keeps them both, as a conjugation table prints the form under both.
    QList<FormReading> analyse(const QString &text, Imperatives imperatives = Imperatives::AsSubjunctive) const;

    qsizetype keyCount() const { return qsizetype(m_keys.size()); }

    // The key a text is looked up by: lower case, accents dropped, one space
    // between words, the typographic apostrophe as the plain one.
    static QString fold(const QString &text);
    // "ind", "cong", "cond", "imp", "inf", "part", "ger".
    static QString moodTag(int type);
    // "presente", "imperfetto", "passato prossimo", ...
    static QString tenseTag(int type);
    // "io" ... "loro"; past participles by gender and number ("m sg"); "-" otherwise.
    static QString personTag(const FormReading &reading);

private:
    struct Key
    {
        quint64 hash;
        quint32 verb; // index into m_verbs
        quint8 type;
        quint8 pronoun;
        quint8 slot;
        quint8 order;
        bool operator<(const Key &other) const { return hash < other.hash; }
    };
    struct VerbName
    {
        qint64 id;
        QString italian;
    };

    static quint64 hashOf(const QString &folded);
    void add(const QString &text, const Key &reading);
    void lookUp(const QString &folded, QList<FormReading> &readings,
                const std::function<bool(const Key &)> &wanted = {}) const;

    std::vector<Key> m_keys; // sorted by hash
    std::vector<VerbName> m_verbs;
};

} // namespace norvella
