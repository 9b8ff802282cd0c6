// Checks the built master verbs.db for the verbs speakers use every day: the verbs whose
// infinitive carries ci, la, ce la or se la (metterci, smetterla, farcela, cavarsela),
// base verbs glossed with their own meaning rather than their pronominal partner's, and
// the coverage of the most frequent verbs (frequency.tsv).

#include "MasterData.h"

#include <QRegularExpression>
#include <QSet>
#include <QTest>

using namespace master;

namespace {

const QStringList translationColumns = {"english", "german", "french", "spanish", "dutch", "portuguese", "turkish"};

// The clitic cluster an infinitive ends in after its base's stem, as Italian grammars
// give it: before the finite forms by person, after the tu, noi, voi imperative.
struct Cluster
{
    QString ending;
    QStringList proclitic;
    QStringList enclitic;
};

const QList<Cluster> clusters = {
    {"sela", {"me la", "te la", "se la", "ce la", "ve la", "se la"}, {"tela", "cela", "vela"}},
    {"cela", {"ce la", "ce la", "ce la", "ce la", "ce la", "ce la"}, {"cela", "cela", "cela"}},
    {"la", {"la", "la", "la", "la", "la", "la"}, {"la", "la", "la"}},
    {"ci", {"ci", "ci", "ci", "ci", "ci", "ci"}, {"ci", "ci", "ci"}},
};

QString stemOf(const QString &base)
{
    return base.endsWith(QLatin1String("rre")) ? base.chopped(2) : base.chopped(1);
}

const Cluster *clusterOf(const QString &verb, const QString &base)
{
    for (const Cluster &cluster : clusters) {
        if (verb == stemOf(base) + cluster.ending)
            return &cluster;
    }
    return nullptr;
}

// la drops its vowel before a vowel or h (ce l'ho, se l'è), ci before e and i (c'entra).
QString withProclitic(const QString &clitic, const QString &form)
{
    static const QRegularExpression vowelOrH("^[aeiouàèéìòùh]");
    static const QRegularExpression frontVowel("^[eèéiì]");
    if ((clitic.endsWith(QLatin1String("la")) && vowelOrH.match(form).hasMatch())
        || (clitic == QLatin1String("ci") && frontVowel.match(form).hasMatch()))
        return clitic.chopped(1) + u'\'' + form;
    return clitic + u' ' + form;
}

// The simple tense holding the auxiliary of each compound tense.
const QHash<int, int> auxiliaryTense = {{7, 6}, {9, 8}, {11, 10}, {13, 12}, {16, 15}, {18, 17}, {20, 19}};
const QList<int> simpleTypes = {6, 8, 10, 12, 15, 17, 19};

QHash<QString, QString> auxiliaries()
{
    QHash<QString, QString> result;
    for (const QStringList &cells : readSourceRows(sourcePath("auxiliaries.tsv")))
        result.insert(cells.value(0), cells.value(1));
    return result;
}

} // namespace

class TestClitics : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void clusterVerbsFollowTheirBase();
    void newVerbsAreTranslated();
    void baseVerbsCarryTheirOwnMeaning();
    void frequentVerbsAreInTheDatabase();

private:
    const MasterVerb *verb(const QString &name) const { return m_master.find(name); }
    QStringList translationOf(const QString &name) const
    {
        return m_translations.value(name);
    }

    QScopedPointer<MasterDb> m_db;
    VerbIndex m_master;
    const QList<MasterVerb> &m_verbs = m_master.verbs;
    QHash<QString, QStringList> m_translations;
    QList<QPair<QString, QString>> m_pronominal; // verb, base
};

void TestClitics::initTestCase()
{
    m_db.reset(new MasterDb(QStringLiteral(NORVELLA_MASTER_DB)));
    QVERIFY2(m_db->isOpen(), NORVELLA_MASTER_DB " was not built");
    QVERIFY(m_master.load(QStringLiteral(NORVELLA_MASTER_DB)));
    for (const QVariantList &row : m_db->rows("SELECT italian, " + translationColumns.join(", ") + " FROM verb")) {
        QStringList texts;
        for (qsizetype c = 1; c < row.size(); ++c)
            texts << row[c].toString();
        m_translations.insert(row[0].toString(), texts);
    }
    for (const QStringList &cells : readSourceRows(sourcePath("pronominal.tsv")))
        m_pronominal.append({cells.value(0), cells.value(1)});
    QVERIFY(!m_pronominal.isEmpty());
}

void TestClitics::clusterVerbsFollowTheirBase()
{
    // Every form is the base's with the cluster: before the finite forms, after the
    // gerund and the tu/noi/voi imperative. The compound tenses take essere with se la,
    // avere with la and ce la, the auxiliary of the meaning with ci (auxiliaries.tsv:
    // the verb's own line, else its base's); with la the participle agrees with la.
    const QHash<QString, QString> auxiliary = auxiliaries();
    const MasterVerb *essere = verb("essere");
    const MasterVerb *avere = verb("avere");
    QVERIFY(essere && avere);
    QStringList problems;
    QSet<QString> endings;
    for (const auto &[name, baseName] : std::as_const(m_pronominal)) {
        const Cluster *cluster = clusterOf(name, baseName);
        if (!cluster)
            continue;
        endings.insert(cluster->ending);
        const MasterVerb *own = verb(name);
        const MasterVerb *base = verb(baseName);
        if (!own || !base) {
            problems << name + ": it or its base is not in the database";
            continue;
        }
        auto expect = [&](int type, int person, const QString &expected) {
            const QString actual = own->form(type, person);
            if (!actual.isEmpty() && actual != expected)
                problems << QStringLiteral("%1 type %2 person %3: '%4', expected '%5'").arg(name).arg(type).arg(person)
                                .arg(actual, expected);
        };
        if (own->form(1, 0) != name || !own->ofType(2).isEmpty())
            problems << name + ": infinitive, or a present participle it does not have";
        if (own->form(3, 0) != base->form(3, 0) + cluster->ending)
            problems << name + ": gerund " + own->form(3, 0);
        for (const int type : simpleTypes) {
            for (int person = 1; person <= 6; ++person) {
                QStringList forms;
                for (const QString &form : variants(base->form(type, person)))
                    forms << withProclitic(cluster->proclitic[person - 1], form);
                expect(type, person, forms.join(QStringLiteral(" / ")));
            }
        }
        const QString ownAux = auxiliary.value(name, auxiliary.value(baseName));
        const bool withEssere = cluster->ending == QLatin1String("sela")
                || (cluster->ending == QLatin1String("ci") && ownAux.startsWith(QLatin1String("essere")));
        const QList<Form> participle = base->ofType(4);
        if (participle.size() != 4) {
            problems << name + ": no participle";
            continue;
        }
        for (auto it = auxiliaryTense.cbegin(); it != auxiliaryTense.cend(); ++it) {
            for (int person = 1; person <= 6; ++person) {
                QString agreed = participle[0].text;
                if (cluster->ending.endsWith(QLatin1String("la")))
                    agreed = participle[1].text;
                else if (withEssere)
                    agreed = person <= 3 ? participle[0].text + "/a" : participle[2].text + "/e";
                const QString aux = (withEssere ? essere : avere)->form(it.value(), person);
                expect(it.key(), person, withProclitic(cluster->proclitic[person - 1], aux + u' ' + agreed.section(" / ", 0, 0)));
            }
        }
        for (const int person : {2, 4, 5}) {
            const QString actual = own->form(14, person);
            const QString &enclitic = cluster->enclitic[person == 2 ? 0 : person - 3];
            if (!actual.isEmpty() && (actual.contains(u' ') || !actual.endsWith(enclitic)))
                problems << QStringLiteral("%1: imperative '%2' without the enclitic %3").arg(name, actual, enclitic);
        }
        for (const int person : {3, 6}) {
            if (!own->form(14, person).isEmpty())
                expect(14, person, withProclitic(cluster->proclitic[person - 1], base->form(15, person)));
        }
    }
    QCOMPARE(endings.size(), clusters.size());
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestClitics::newVerbsAreTranslated()
{
    // The verbs conjugated by rule and those with a clitic cluster came with their
    // translations: none may reach the app with an empty language.
    QStringList names;
    for (const QStringList &cells : readSourceRows(sourcePath("derived.tsv")))
        names << cells.value(0);
    QVERIFY2(!names.isEmpty(), "derived.tsv lists no verb");
    for (const auto &[name, base] : std::as_const(m_pronominal)) {
        if (clusterOf(name, base))
            names << name;
    }
    QStringList problems;
    for (const QString &name : std::as_const(names)) {
        if (!verb(name)) {
            problems << name + ": not in the database";
            continue;
        }
        const QStringList texts = translationOf(name);
        for (qsizetype c = 0; c < translationColumns.size(); ++c) {
            if (texts.value(c).isEmpty())
                problems << name + ": no " + translationColumns[c];
        }
    }
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestClitics::baseVerbsCarryTheirOwnMeaning()
{
    // A base verb glossed exactly like its -rsi partner in every language shows the
    // pronominal meaning (accomodare as "to take a seat"): each carries its own.
    QStringList problems;
    QHash<QString, QString> partnerOf;
    for (const auto &[name, base] : std::as_const(m_pronominal)) {
        if (name != stemOf(base) + QLatin1String("si") || !verb(base) || !verb(name))
            continue;
        partnerOf.insert(base, name);
        const QStringList baseTexts = translationOf(base);
        if (!baseTexts.join(QString()).isEmpty() && baseTexts == translationOf(name))
            problems << QStringLiteral("%1: glossed as %2 (%3)").arg(base, name, baseTexts.value(0));
    }
    QVERIFY2(partnerOf.size() > 400, "too few base verbs with a -rsi partner");
    // These were glossed with their partner's meaning; where a language marks the
    // reflexive (sich, se, -se, zich), a reflexive item in the base's gloss is that fault.
    const QStringList corrected = {
        "abituare", "accomodare", "accontentare", "addormentare", "affidare", "allenare", "alzare", "ambientare",
        "ammalare", "annoiare", "appassionare", "arrabbiare", "arrampicare", "arrendere", "candidare", "comportare",
        "diplomare", "divertire", "entusiasmare", "figurare", "iscrivere", "laureare", "meravigliare", "occupare",
        "opporre", "preoccupare", "rifugiare", "riferire", "rimettere", "risposare", "risvegliare", "riunire",
        "rivolgere", "sbrigare", "schiantare", "scontrare", "scusare", "sdraiare", "sedere", "specializzare",
        "stancare", "stufare", "svegliare", "svolgere", "verificare"};
    const QHash<int, QRegularExpression> reflexive = {
        {1, QRegularExpression("^sich ")}, {2, QRegularExpression("^(se |s')")}, {3, QRegularExpression("\\wse$")},
        {4, QRegularExpression("^zich ")}, {5, QRegularExpression("\\w-se\\b")}};
    for (const QString &base : corrected) {
        if (!partnerOf.contains(base)) {
            problems << base + ": no -rsi partner in the database";
            continue;
        }
        const QStringList texts = translationOf(base);
        for (auto it = reflexive.cbegin(); it != reflexive.cend(); ++it) {
            for (const QString &item : texts.value(it.key()).split(QStringLiteral(", "))) {
                if (it.value().match(item).hasMatch())
                    problems << QStringLiteral("%1 %2: '%3'").arg(base, translationColumns[it.key()], item);
            }
        }
    }
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestClitics::frequentVerbsAreInTheDatabase()
{
    // frequency.tsv ranks the most frequent genuine verbs; a user looks them up, so at
    // least 99 % of the first 2,000 must be in the database. A listed entry other than
    // the list's lemma is the pronominal verb that carries it (vergognare: vergognarsi),
    // and homograph noise (frequency-excluded.tsv) is never ranked.
    QSet<QString> noise;
    for (const QStringList &cells : readSourceRows(sourcePath("frequency-excluded.tsv"))) {
        noise.insert(cells.value(0));
        QVERIFY2(!cells.value(1).isEmpty(), qPrintable(cells.value(0) + ": excluded without a reason"));
    }
    QVERIFY(noise.contains("orare") && noise.contains("secondare"));
    QStringList problems, lacking;
    int rank = 0;
    for (const QStringList &cells : readSourceRows(sourcePath("frequency.tsv"))) {
        if (cells.value(0).toInt() != ++rank)
            problems << QStringLiteral("rank %1 where %2 was expected").arg(cells.value(0)).arg(rank);
        const QString &entry = cells.value(1);
        const QString lemma = cells.size() > 2 ? cells[2] : entry;
        if (noise.contains(lemma) || noise.contains(entry))
            problems << lemma + ": ranked but excluded as noise";
        if (lemma != entry && entry != stemOf(lemma) + "si" && entry != stemOf(lemma) + "sene")
            problems << QStringLiteral("%1 ranked as %2, which is not its pronominal verb").arg(lemma, entry);
        if (rank <= 2000 && !verb(entry))
            lacking << entry;
    }
    QVERIFY2(rank >= 2000, qPrintable(QStringLiteral("frequency.tsv ranks only %1 verbs").arg(rank)));
    QVERIFY2(problems.isEmpty(), describe(problems));
    QVERIFY2(lacking.size() <= 20, describe(lacking));
}

QTEST_APPLESS_MAIN(TestClitics)
#include "tst_clitics.moc"
