#pragma once

#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>

#include <memory>

namespace norvella {

class Settings;
class ResultSet;

struct Conjugation
{
    QString pronoun;
    QString verb;
    // The type id kept as text: the screen matches it exactly, so "07" or
    // "" fall into no tense.
    QString type;
    qint64 order = 0;
    QString voiceFile;
    // Bit n set: the n-th " / " variant of `verb` departs from the regular
    // paradigm of the verb's class, as the master build judged it.
    int irregular = 0;
};

using ConjugationList = QList<Conjugation>;

// A grammar table prints the four subjunctive tenses (type ids 15 to 18) with
// "che" before the pronoun: "che io sia", "che io mi alzi". No other tense does.
bool takesChe(const QString &type);
// The pronoun with "che" in front; a form without a pronoun stays without one.
QString withChe(const QString &pronoun);

// "infinitive (translation)", or the bare infinitive when there is no
// translation to show: never an empty pair of brackets.
QString titleWithTranslation(const QString &infinitive, const QString &translation);
// The translation worth showing beside the infinitive: empty when it only
// repeats it, as Italian chosen as the translation language does.
QString translationBeside(const QString &infinitive, const QString &translation);

// How a verb is used beyond its forms, as the master's verb_usage table says;
// VerbUsage.h turns it into the notes the screens and exports print.
struct VerbUsage
{
    bool thirdPersonOnly = false;
    QString auxiliaryNote;     // why it takes both auxiliaries ("object", "weather", ...)
    QString auxiliaryExamples; // Italian examples, for "meaning"
    QString alsoSpelled;       // the other spelling of a verb spelled two ways
    QString homograph;         // the other verb spelled alike, with its first form
};

// How the verb conjugates, from the master's verb columns: "are", "ere", "ire",
// "isc" or "irregular", and for an irregular verb the verb it follows, if any.
// Empty when the working copy predates the columns.
struct VerbPattern
{
    QString pattern;
    qint64 modelId = -1;
    QString modelItalian;
};

struct Verb
{
    qint64 id = -1;
    QString english;
    QString german, simplified_german;
    QString french, simplified_french;
    QString spanish, simplified_spanish;
    QString dutch, simplified_dutch;
    QString italian, simplified_italian;
    QString portuguese, simplified_portuguese;
    QString turkish, simplified_turkish;
    bool voice_available = false;
    bool isFavourite = false;
    // Nothing sets this: the conjugation screen re-reads the forms each time.
    bool loaded = false;

    ConjugationList infinito, participioPresente, gerundio, participioPassato, other;
    ConjugationList indicativoPresente, indicativoPassatoProssimo, indicativoImperfetto,
            indicativoTrapassatoProssimo, indicativoFuturo, indicativoFuturoAnteriore,
            indicativoPassatoRemoto, indicativoTrapassatoRemoto;
    ConjugationList imperativo;
    ConjugationList congiuntivoPresente, congiuntivoPassatoProssimo, congiuntivoImperfetto,
            congiuntivoTrapassatoProssimo;
    ConjugationList condizionalePresente, condizionalePassato;
    // Read with the forms, replaced at each load.
    VerbUsage usage;
    VerbPattern pattern;

    // The translation shown beside the infinitive, by "translation_language"
    // or, when that is automatic, by the first preferred language.
    QString translation(const Settings &settings) const;
    QString translation(const Settings &settings, const QStringList &preferredLanguages) const;
    // The list that holds forms of a conjugation type id ("1" ... "20"), or null.
    ConjugationList *listForType(const QString &type);
    const ConjugationList *listForType(const QString &type) const;
};

using VerbPtr = std::shared_ptr<Verb>;

// What a verb row fills. Shown: the id, the translations and the favourite
// mark, the verb counting as voiced whatever its column says (the search and
// the single-section lists). Full: also the folded texts and the voice column
// (the alphabetical list, a verb opened by name).
enum class VerbRowFields { Shown, Full };
// The one way a verb is made from a row: columns by name, those the statement
// does not name left empty, `favourite_available` read as a boolean.
VerbPtr verbFromRow(const ResultSet &row, VerbRowFields fields);

// The system's preferred UI languages, replaceable in tests.
namespace PreferredLanguages {
QStringList get();
void setOverride(const QStringList &languages);
void clearOverride();
}

} // namespace norvella

Q_DECLARE_METATYPE(norvella::VerbPtr)
