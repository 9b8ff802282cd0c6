#pragma once

// Turns the simple-tense forms of the sources into the rows of the conjugation
// table: the twenty conjugation types, compound tenses and pronominal verbs.

#include "Sources.h"

#include <QList>
#include <QMap>
#include <QString>

// conjugation_type_id values.
enum ConjugationType {
    Infinito = 1, ParticipioPresente = 2, Gerundio = 3, ParticipioPassato = 4,
    IndicativoPresente = 6, PassatoProssimo = 7, Imperfetto = 8, TrapassatoProssimo = 9,
    Futuro = 10, FuturoAnteriore = 11, PassatoRemoto = 12, TrapassatoRemoto = 13,
    Imperativo = 14, CongiuntivoPresente = 15, CongiuntivoPassato = 16,
    CongiuntivoImperfetto = 17, CongiuntivoTrapassato = 18,
    CondizionalePresente = 19, CondizionalePassato = 20
};

struct FormRow
{
    int type = 0;
    int pronoun = 0; // 0: no pronoun (stored as NULL)
    QString text;
};

// What the app prints beside a verb's forms about how the verb is used.
struct Usage
{
    bool thirdPersonOnly = false;
    QString auxiliaryNote;     // why it takes both auxiliaries: a kind of auxiliary-notes.tsv
    QString auxiliaryExamples; // Italian examples, for the kind "meaning"
    QString alsoSpelled;       // the other spelling of a doublet
    QString homograph;         // the other verb spelled the same, with its first form

    bool isEmpty() const
    {
        return !thirdPersonOnly && auxiliaryNote.isEmpty() && alsoSpelled.isEmpty() && homograph.isEmpty();
    }
};

struct Entry
{
    qint64 id = 0;
    QString italian; // the key of the sources; a homograph's carries its sense number
    bool pronominal = false;
    QList<FormRow> rows; // in display order
    Usage usage = {};
};

struct Entries
{
    QList<Entry> verbs;
    QStringList skippedPronominal; // shapes other than -si / -sene (farcela, entrarci)
    QStringList unusedBases;       // base-only verbs no pronominal verb refers to
    QStringList provisionalIds;    // verbs verb-ids.tsv does not list yet
    int fareEnclitics = 0;         // assuefatti: enclitic imperatives on a compound's -fa'
    int elisions = 0;              // se n'è andato
    int compoundPersonsLeftOut = 0; // persons the simple tenses lack
    QMap<QString, int> clusterVerbs; // "sene" -> how many verbs end in that cluster
};

// Builds every verb's rows, in alphabetical order, with their ids; throws SourceError
// on inconsistent sources.
Entries buildEntries(const Sources &sources);
