// Checks the built master verbs.db: its structure, every verb's paradigm, the
// pronominal verbs, the translations and the hand-checked golden forms.

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <QTest>
#include <QTextStream>

#include <sqlite3.h>

#include <algorithm>

#include "MasterData.h"

using namespace master;

namespace {

const QList<int> compoundTypes = {7, 9, 11, 13, 16, 18, 20};
// Conjugation type of each simple tense of forms.tsv, and of the compound tense made
// with the auxiliary in that tense.
const QHash<QString, int> simpleType = {{"ind.pres", 6}, {"ind.impf", 8}, {"ind.prem", 12}, {"ind.fut", 10},
                                        {"cond.pres", 19}, {"cong.pres", 15}, {"cong.impf", 17}};

// The slots each defective verb keeps, by tag of forms.tsv (persons for the finite
// tenses; tu, noi, voi as persons 2, 4, 5 for the imperative): defective.tsv.
QHash<QString, QHash<QString, QList<int>>> readDefective()
{
    QHash<QString, QHash<QString, QList<int>>> kept;
    // Two lines about one tense (finite, then imp) keep what both keep.
    auto keep = [&](const QString &verb, const QString &tag, const QList<int> &keptHere) {
        QHash<QString, QList<int>> &tenses = kept[verb];
        if (!tenses.contains(tag))
            tenses.insert(tag, keptHere);
        else
            tenses[tag].removeIf([&](int slot) { return !keptHere.contains(slot); });
    };
    for (const QStringList &cells : readSourceRows(sourcePath("defective.tsv"))) {
        QList<int> keptSlots;
        for (const QString &slot : cells.value(2).split(u' ', Qt::SkipEmptyParts)) {
            if (slot != QLatin1String("none"))
                keptSlots << slot.toInt();
        }
        if (cells.value(1) == QLatin1String("finite")) {
            for (const QString &tag : simpleType.keys())
                keep(cells[0], tag, keptSlots);
            keep(cells[0], "imp", keptSlots);
        } else if (cells.value(1) == QLatin1String("imp")) {
            QList<int> persons;
            for (const int slot : keptSlots)
                persons << QList<int>{2, 4, 5}.value(slot - 1);
            keep(cells[0], "imp", persons);
        } else {
            keep(cells[0], cells.value(1), keptSlots);
        }
    }
    return kept;
}

// Verbs used only in the third person, by kind: third-person.tsv.
QHash<QString, QString> readThirdPerson()
{
    QHash<QString, QString> kinds;
    for (const QStringList &cells : readSourceRows(sourcePath("third-person.tsv")))
        kinds.insert(cells.value(0), cells.value(1));
    return kinds;
}

// "ripartire²", the second of two homographs, is spelled "ripartire".
QString infinitiveOf(const QString &key)
{
    return QStringLiteral("¹²³").contains(key.back()) ? key.chopped(1) : key;
}

// The simple tense holding the auxiliary of each compound tense.
const QHash<int, int> auxiliaryTense = {{7, 6}, {9, 8}, {11, 10}, {13, 12}, {16, 15}, {18, 17}, {20, 19}};

const QStringList translationColumns = {"english", "german", "french", "spanish", "dutch", "portuguese", "turkish"};

QStringList clitics(const MasterVerb &verb)
{
    if (verb.italian.endsWith(QLatin1String("sene")))
        return {"me ne ", "te ne ", "se ne ", "ce ne ", "ve ne ", "se ne "};
    return {"mi ", "ti ", "si ", "ci ", "vi ", "si "};
}

QString bothGenders(const QString &masculine, const QString &feminine)
{
    return masculine.chopped(1) == feminine.chopped(1) ? masculine + u'/' + feminine.right(1)
                                                       : masculine + u'/' + feminine;
}

QStringList planSteps(const MasterDb &db, const QString &sql)
{
    QStringList steps;
    for (const QVariantList &row : db.rows("EXPLAIN QUERY PLAN " + sql))
        steps << row.last().toString();
    return steps;
}

// A lookup of conjugation rows by verb through the primary key or an index, not a scan.
bool searchesConjugationByVerb(const QStringList &steps)
{
    static const QRegularExpression search(
        "^SEARCH conjugation USING (PRIMARY KEY|(COVERING )?INDEX \\w+) \\(verbid=\\?");
    return std::any_of(steps.cbegin(), steps.cend(), [](const QString &step) { return search.match(step).hasMatch(); });
}

} // namespace

class TestMaster : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void tablesAndKeys();
    void paradigmShapeAndOrder();
    void formsAreWellFormed();
    void compoundTensesUseTheAuxiliary();
    void thirdPersonVerbsHaveOnlyThoseForms();
    void bothAuxiliariesAndTheirNote();
    void homographsAndSpellingsNameEachOther();
    void pronominalVerbsCarryTheirClitics();
    void translationsComeFromTheSourcesFolded();
    void goldenForms();
    void queriesUseAnIndex();

private:
    QScopedPointer<MasterDb> m_db;
    QList<MasterVerb> m_verbs;
    QHash<QString, qsizetype> m_byName;
};

void TestMaster::initTestCase()
{
    QVERIFY2(QFileInfo::exists(QStringLiteral(NORVELLA_MASTER_DB)), NORVELLA_MASTER_DB " was not built");
    // The app ships the master: it must stay under 25,000,000 bytes.
    const qint64 size = QFileInfo(QStringLiteral(NORVELLA_MASTER_DB)).size();
    QVERIFY2(size < 25000000, qPrintable(QStringLiteral("%1 bytes").arg(size)));
    m_db.reset(new MasterDb(QStringLiteral(NORVELLA_MASTER_DB)));
    QVERIFY(m_db->isOpen());
    m_verbs = m_db->verbs();
    for (qsizetype i = 0; i < m_verbs.size(); ++i)
        m_byName.insert(m_verbs[i].italian, i);
    QVERIFY2(m_verbs.size() >= 6000, qPrintable(QStringLiteral("only %1 verbs").arg(m_verbs.size())));
    QVERIFY(m_byName.contains("essere") && m_byName.contains("avere"));
}

void TestMaster::tablesAndKeys()
{
    QStringList pronouns;
    for (const QVariantList &row : m_db->rows("SELECT _id, pronoun FROM pronoun ORDER BY _id"))
        pronouns << row[0].toString() + u':' + row[1].toString();
    QCOMPARE(pronouns.join(u' '), QStringLiteral("1:io 2:tu 3:lui/lei 4:noi 5:voi 6:loro"));

    // Keys must survive releases: each one is the registered key of its verb.
    QHash<QString, qint64> registered;
    for (const QStringList &cells : readSourceRows(sourcePath("verb-ids.tsv")))
        registered.insert(cells.value(0), cells.value(1).toLongLong());
    QStringList problems;
    QSet<QString> names;
    for (const MasterVerb &verb : std::as_const(m_verbs)) {
        if (names.contains(verb.italian))
            problems << verb.italian + ": listed twice";
        names.insert(verb.italian);
        if (registered.value(verb.italian) != verb.id)
            problems << QStringLiteral("%1: id %2, verb-ids.tsv says %3").arg(verb.italian).arg(verb.id).arg(registered.value(verb.italian));
        if (verb.id <= 0 || verb.id > 0x7fffffff)
            problems << QStringLiteral("%1: id %2 out of the 32-bit range").arg(verb.italian).arg(verb.id);
    }
    const qint64 orphans = m_db->rows("SELECT count(*) FROM conjugation WHERE verbid NOT IN (SELECT _id FROM verb)"
                                      " OR pronounid NOT IN (SELECT _id FROM pronoun)")[0][0].toLongLong();
    if (orphans)
        problems << QStringLiteral("%1 forms point at no verb or no pronoun").arg(orphans);
    QVERIFY2(problems.isEmpty(), describe(problems));

    // The app selects conjugation._id with every form; the schema derives it.
    const auto ids = m_db->rows("SELECT count(*), count(DISTINCT _id), count(_id), min(_id) FROM conjugation")[0];
    QVERIFY(ids[0].toLongLong() > 0 && ids[3].toLongLong() > 0);
    QCOMPARE(ids[1].toLongLong(), ids[0].toLongLong());
    QCOMPARE(ids[2].toLongLong(), ids[0].toLongLong());

    // Lists of common verbs are cut by frequency_rank: every verb of frequency.tsv carries
    // its own line number, and no other verb has one.
    QHash<QString, qint64> rankOf;
    for (const QStringList &cells : readSourceRows(sourcePath("frequency.tsv")))
        rankOf.insert(cells.value(1), cells.value(0).toLongLong());
    QVERIFY(rankOf.size() >= 2000);
    QHash<QString, qint64> stored;
    for (const QVariantList &row : m_db->rows("SELECT italian, frequency_rank FROM verb WHERE frequency_rank IS NOT NULL"))
        stored.insert(row[0].toString(), row[1].toLongLong());
    QCOMPARE(stored, rankOf);
    QCOMPARE(stored.value("essere"), 1);
}

void TestMaster::paradigmShapeAndOrder()
{
    // Every verb: its tenses in type order, each with its slots (pronoun 0 for the forms
    // without one), in conj_order; the four past participles keep their ms, fs, mp, fp order
    // by _id. A defective verb (or a pronominal verb built on one) lacks exactly the forms
    // defective.tsv removes: a tense without a participle has no compound tenses, nor a
    // person missing from every simple tense, and no form of its own in the imperative
    // means no imperative at all.
    const auto defective = readDefective();
    const QHash<QString, QString> thirdPerson = readThirdPerson();
    QHash<QString, QString> baseOf;
    for (const QStringList &cells : readSourceRows(sourcePath("pronominal.tsv")))
        baseOf.insert(cells.value(0), cells.value(1));
    QStringList problems;
    for (const MasterVerb &verb : std::as_const(m_verbs)) {
        // A verb with a clitic lacks what its base lacks and what defective.tsv says of it
        // (avercela: no imperative).
        QHash<QString, QList<int>> kept = defective.value(baseOf.value(verb.italian, verb.italian));
        if (baseOf.contains(verb.italian)) {
            const QHash<QString, QList<int>> own = defective.value(verb.italian);
            for (auto it = own.cbegin(); it != own.cend(); ++it) {
                if (!kept.contains(it.key()))
                    kept.insert(it.key(), it.value());
                else
                    kept[it.key()].removeIf([&](int slot) { return !it.value().contains(slot); });
            }
        }
        auto has = [&](const QString &tag, int slot) { return !kept.contains(tag) || kept[tag].contains(slot); };
        const bool participle = has("pp", 1);
        // A verb used only in the third person keeps lui/lei and loro and has no imperative.
        const bool thirdOnly = thirdPerson.contains(verb.italian);
        auto used = [&](int person) { return !thirdOnly || person == 3 || person == 6; };
        QList<QPair<int, int>> expected, actual;
        expected.append({1, 0});
        if (!verb.hasClitic())
            expected.append({2, 0}); // a pronominal verb has no present participle of its own
        expected.append({3, 0});
        for (int slot = 0; participle && slot < 4; ++slot)
            expected.append({4, 0});
        for (const int type : {6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20}) {
            if (type == 14) {
                if (!thirdOnly && (has("imp", 2) || has("imp", 4) || has("imp", 5))) {
                    for (const int person : {2, 3, 4, 5, 6}) {
                        if (person == 3 || person == 6 ? has("cong.pres", person) : has("imp", person))
                            expected.append({14, person});
                    }
                }
                continue;
            }
            const QString tag = simpleType.key(type);
            // A compound tense has the persons the verb has in some simple tense.
            auto inSimpleTense = [&](int person) {
                return std::any_of(simpleType.keyBegin(), simpleType.keyEnd(),
                                   [&](const QString &simple) { return has(simple, person); });
            };
            for (int person = 1; person <= 6; ++person) {
                if (used(person) && (tag.isEmpty() ? participle && inSimpleTense(person) : has(tag, person)))
                    expected.append({type, person});
            }
        }
        bool inOrder = true;
        for (qsizetype i = 0; i < verb.forms.size(); ++i) {
            const Form &form = verb.forms[i];
            actual.append({form.type, form.pronoun});
            if (inOrder && (form.order != i + 1 || (i > 0 && form.type == 4 && verb.forms[i - 1].type == 4
                                                    && verb.forms[i - 1].id > form.id))) {
                problems << QStringLiteral("%1: form %2 out of order").arg(verb.italian).arg(i + 1);
                inOrder = false;
            }
        }
        if (actual != expected) {
            QStringList shown;
            for (const auto &[type, slot] : std::as_const(actual))
                shown << QStringLiteral("%1/%2").arg(type).arg(slot);
            problems << verb.italian + ": " + shown.join(u' ');
        }
    }
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestMaster::formsAreWellFormed()
{
    // A cell holds one form, or two standard ones joined by " / " ("devo / debbo").
    const QRegularExpression shape("^[a-zàèéìíòóù']+(/[aei])?( [a-zàèéìíòóù']+(/[aei])?)*$");
    const QRegularExpression infinitive("^[a-zàèéìòù]+(are|ere|ire|rre)$");
    QStringList problems;
    for (const MasterVerb &verb : std::as_const(m_verbs)) {
        for (const Form &form : verb.forms) {
            const QStringList variants = form.text.split(QStringLiteral(" / "));
            bool ok = QSet<QString>(variants.cbegin(), variants.cend()).size() == variants.size();
            for (const QString &variant : variants) {
                // The future's first person always carries its stressed ending.
                ok = ok && shape.match(variant).hasMatch() && (form.type != 10 || form.pronoun != 1 || variant.endsWith(u'ò'));
            }
            if (!ok)
                problems << QStringLiteral("%1: type %2 slot %3: '%4'").arg(verb.italian).arg(form.type).arg(form.pronoun).arg(form.text);
        }
        // Infinitive and gerund of a plain verb carry no clitic.
        if (verb.hasClitic())
            continue;
        const QString inf = verb.form(1, 0), gerund = verb.form(3, 0);
        if (inf != infinitiveOf(verb.italian) || !infinitive.match(inf).hasMatch())
            problems << verb.italian + ": infinitive '" + inf + "'";
        if (!gerund.endsWith(QLatin1String("ando")) && !gerund.endsWith(QLatin1String("endo")))
            problems << verb.italian + ": gerund '" + gerund + "'";
    }
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestMaster::compoundTensesUseTheAuxiliary()
{
    // The auxiliaries of each verb, the one shown first first; unlisted verbs take avere.
    QHash<QString, QStringList> auxiliaries;
    for (const QStringList &cells : readSourceRows(sourcePath("auxiliaries.tsv")))
        auxiliaries.insert(cells[0], cells.value(1).split(u'/'));
    QVERIFY2(!auxiliaries.isEmpty(), "auxiliaries.tsv lists no verb");
    const QHash<QString, QString> thirdPerson = readThirdPerson();
    const MasterVerb &essere = m_verbs[m_byName["essere"]];
    const MasterVerb &avere = m_verbs[m_byName["avere"]];
    QStringList problems;
    for (const MasterVerb &verb : std::as_const(m_verbs)) {
        // Of two standard participles ("visto / veduto") the compound tenses take the first.
        QStringList participle;
        for (const Form &form : verb.ofType(4))
            participle << form.text.section(QStringLiteral(" / "), 0, 0);
        // Clusters other than the reflexive ones: tst_clitics.
        if (participle.size() != 4 || (verb.hasClitic() && !verb.isPronominal()))
            continue;
        const QStringList takes = verb.isPronominal() ? QStringList{"essere"}
                                                      : auxiliaries.value(verb.italian, {QStringLiteral("avere")});
        // Weather and impersonal verbs have no subject to agree with: è piovuto.
        const bool noSubject = thirdPerson.value(verb.italian, "things") != QLatin1String("things");
        for (const int type : compoundTypes) {
            for (int person = 1; person <= 6; ++person) {
                if (verb.form(type, person).isEmpty() && thirdPerson.contains(verb.italian) && person != 3 && person != 6)
                    continue;
                QStringList variants;
                for (const QString &taken : takes) {
                    const bool withEssere = taken == QLatin1String("essere");
                    QString agreed = participle[0];
                    if (withEssere && person == 3 && noSubject)
                        agreed = participle[0];
                    else if (withEssere)
                        agreed = person <= 3 ? bothGenders(participle[0], participle[1]) : bothGenders(participle[2], participle[3]);
                    const QString auxiliary = (withEssere ? essere : avere).form(auxiliaryTense[type], person);
                    QString prefix = verb.isPronominal() ? clitics(verb)[person - 1] : QString();
                    if (prefix.endsWith(QLatin1String("ne ")) && QStringLiteral("eè").contains(auxiliary.front()))
                        prefix = prefix.chopped(2) + u'\''; // se ne + è -> se n'è
                    variants << prefix + auxiliary + u' ' + agreed;
                }
                const QString expected = variants.join(QStringLiteral(" / "));
                const QString actual = verb.form(type, person);
                if (actual != expected)
                    problems << QStringLiteral("%1: type %2 person %3: '%4', expected '%5'").arg(verb.italian).arg(type)
                                    .arg(person).arg(actual, expected);
            }
        }
    }
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestMaster::pronominalVerbsCarryTheirClitics()
{
    QStringList problems;
    qsizetype listed = 0;
    for (const QStringList &cells : readSourceRows(sourcePath("pronominal.tsv"))) {
        const QString &name = cells.value(0);
        if (!name.endsWith(QLatin1String("si")) && !name.endsWith(QLatin1String("sene")))
            continue;
        ++listed;
        if (!m_byName.contains(name))
            problems << name + ": listed in pronominal.tsv but not in the database";
    }
    QVERIFY2(listed > 0, "pronominal.tsv lists no pronominal verb");
    for (const MasterVerb &verb : std::as_const(m_verbs)) {
        if (!verb.isPronominal())
            continue;
        const bool ne = verb.italian.endsWith(QLatin1String("sene"));
        const QStringList proclitics = clitics(verb);
        if (verb.form(1, 0) != verb.italian || !verb.form(3, 0).endsWith(ne ? "ndosene" : "ndosi"))
            problems << verb.italian + ": infinitive or gerund without the clitic";
        const QStringList enclitic = ne ? QStringList{"tene", "cene", "vene"} : QStringList{"ti", "ci", "vi"};
        for (const Form &form : verb.forms) {
            bool ok = true;
            // Each of two standard forms carries the clitic (mi siedo / mi seggo); ne is
            // elided before essere (se n'è andato).
            for (const QString &variant : form.text.split(QStringLiteral(" / "))) {
                const QString &proclitic = proclitics.value(form.pronoun - 1);
                const bool withProclitic = variant.startsWith(proclitic)
                        || (ne && variant.startsWith(proclitic.chopped(2) + u'\''));
                if (form.type == 14 && (form.pronoun == 3 || form.pronoun == 6))
                    ok = ok && withProclitic;
                else if (form.type == 14)
                    ok = ok && variant.endsWith(enclitic[form.pronoun == 2 ? 0 : form.pronoun - 3]) && !variant.contains(u' ');
                else if (form.type >= 6)
                    ok = ok && withProclitic;
            }
            if (!ok)
                problems << QStringLiteral("%1: type %2 slot %3: '%4'").arg(verb.italian).arg(form.type).arg(form.pronoun).arg(form.text);
        }
    }
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestMaster::translationsComeFromTheSourcesFolded()
{
    QStringList problems;
    // Each searchable column has its folded twin.
    for (const QString &language : QStringList{"italian"} + translationColumns.mid(1)) {
        for (const QVariantList &row : m_db->rows(QStringLiteral("SELECT italian, %1, simplified_%1 FROM verb").arg(language))) {
            if (!(row[1].isNull() && row[2].isNull()) && (row[1].isNull() || row[2].toString() != fold(row[1].toString())))
                problems << QStringLiteral("%1: %2 '%3' folded as '%4'").arg(row[0].toString(), language,
                                                                             row[1].toString(), row[2].toString());
        }
    }
    QHash<QString, QVariantList> stored;
    for (const QVariantList &row : m_db->rows("SELECT italian, " + translationColumns.join(", ") + " FROM verb"))
        stored.insert(row[0].toString(), row.mid(1));
    qsizetype compared = 0;
    for (const QString &file : QDir(sourcePath("translations")).entryList({"*.tsv"}, QDir::Files)) {
        const QList<QStringList> rows = readSourceRows(sourcePath("translations/") + file);
        for (qsizetype r = 1; r < rows.size(); ++r) {
            const QStringList &cells = rows[r];
            // A row for a verb the database lacks is dead weight that hides a lost verb.
            if (!stored.contains(cells[0])) {
                problems << QStringLiteral("%1 (%2): no such verb in the database").arg(cells[0], file);
                continue;
            }
            ++compared;
            for (int c = 0; c < translationColumns.size(); ++c) {
                const QString text = cells.value(c + 1).trimmed();
                const QVariant &value = stored[cells[0]][c];
                if ((text.isEmpty() && !value.isNull()) || (!text.isEmpty() && value.toString() != text))
                    problems << QStringLiteral("%1 %2: '%3' in %4, '%5' in the database")
                                        .arg(cells[0], translationColumns[c], text, file, value.toString());
            }
        }
    }
    QVERIFY2(compared > 0, "no translation rows to compare");
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestMaster::thirdPersonVerbsHaveOnlyThoseForms()
{
    // Each verb of third-person.tsv: lui/lei and loro in the tenses it has, no other
    // person, no imperative, and the flag the app prints its note from. No other verb
    // carries the flag.
    const QHash<QString, QString> thirdPerson = readThirdPerson();
    QVERIFY2(thirdPerson.size() >= 20, "third-person.tsv lists too few verbs");
    for (const char *known : {"piovere", "nevicare", "accadere", "bisognare", "occorrere", "vigere", "concernere",
                              "prudere", "urgere", "vertere"})
        QVERIFY2(thirdPerson.contains(known), known);
    QSet<QString> flagged;
    for (const QVariantList &row : m_db->rows("SELECT italian FROM verb JOIN verb_usage ON verbid = verb._id"
                                              " WHERE third_person = 1"))
        flagged.insert(row[0].toString());
    QStringList problems;
    for (auto it = thirdPerson.cbegin(); it != thirdPerson.cend(); ++it) {
        if (!m_byName.contains(it.key())) {
            problems << it.key() + ": not in the database";
            continue;
        }
        const MasterVerb &verb = m_verbs[m_byName[it.key()]];
        if (!flagged.contains(verb.italian))
            problems << verb.italian + ": no third_person flag";
        if (verb.form(6, 3).isEmpty() || verb.form(6, 6).isEmpty())
            problems << verb.italian + ": no present in the third persons";
        for (const Form &form : verb.forms) {
            if (form.type == 14 || (form.pronoun != 0 && form.pronoun != 3 && form.pronoun != 6))
                problems << QStringLiteral("%1: type %2 person %3 '%4'").arg(verb.italian).arg(form.type).arg(form.pronoun).arg(form.text);
        }
    }
    for (const QString &name : std::as_const(flagged)) {
        if (!thirdPerson.contains(name))
            problems << name + ": flagged but not in third-person.tsv";
    }
    QVERIFY2(problems.isEmpty(), describe(problems));
    // As a grammar prints them.
    const MasterVerb &piovere = m_verbs[m_byName["piovere"]];
    QCOMPARE(piovere.form(7, 3), QStringLiteral("è piovuto / ha piovuto"));
    QCOMPARE(piovere.form(6, 6), QStringLiteral("piovono"));
    QCOMPARE(m_verbs[m_byName["accadere"]].form(7, 3), QStringLiteral("è accaduto/a"));
}

void TestMaster::bothAuxiliariesAndTheirNote()
{
    // Every verb with two auxiliaries in auxiliaries.tsv shows both in every compound
    // form, the first one first, and has the kind of note auxiliary-notes.tsv gives it;
    // no other verb has a note on auxiliaries.
    QHash<QString, QString> both;
    for (const QStringList &cells : readSourceRows(sourcePath("auxiliaries.tsv"))) {
        if (cells.value(1).contains(u'/'))
            both.insert(cells[0], cells[1]);
    }
    QHash<QString, QString> kinds;
    for (const QStringList &cells : readSourceRows(sourcePath("auxiliary-notes.tsv")))
        kinds.insert(cells.value(0), cells.value(1));
    QVERIFY2(both.size() > 300, qPrintable(QString::number(both.size())));
    QHash<QString, QString> stored;
    for (const QVariantList &row : m_db->rows("SELECT italian, auxiliary_note FROM verb JOIN verb_usage ON"
                                              " verbid = verb._id WHERE auxiliary_note IS NOT NULL"))
        stored.insert(row[0].toString(), row[1].toString());
    QStringList problems;
    static const QRegularExpression essereFirst("^(sono|sei|è|siamo|siete|ero|eri|era|eravamo|eravate|erano|sarò|sarai|sarà|"
                                                "saremo|sarete|saranno|fui|fosti|fu|fummo|foste|furono|sia|siate|siano|"
                                                "fossi|fosse|fossimo|fossero|sarei|saresti|sarebbe|saremmo|sareste|sarebbero) ");
    for (auto it = both.cbegin(); it != both.cend(); ++it) {
        if (!m_byName.contains(it.key())) {
            problems << it.key() + ": not in the database";
            continue;
        }
        const MasterVerb &verb = m_verbs[m_byName[it.key()]];
        // A verb without a participle (convergere) has no compound tense to explain.
        const QString expected = verb.ofType(4).isEmpty() ? QString() : kinds.value(it.key());
        if (stored.value(it.key()) != expected || kinds.value(it.key()).isEmpty())
            problems << QStringLiteral("%1: note '%2', auxiliary-notes.tsv says '%3'")
                                .arg(it.key(), stored.value(it.key()), kinds.value(it.key()));
        const bool essereShown = it.value().startsWith(QLatin1String("essere"));
        int compounds = 0;
        for (const Form &form : verb.forms) {
            if (!compoundTypes.contains(form.type))
                continue;
            ++compounds;
            const QStringList variants = form.text.split(QStringLiteral(" / "));
            if (variants.size() != 2 || essereFirst.match(variants[0]).hasMatch() != essereShown
                || essereFirst.match(variants[1]).hasMatch() == essereShown)
                problems << QStringLiteral("%1: type %2 person %3 '%4'").arg(verb.italian).arg(form.type).arg(form.pronoun).arg(form.text);
        }
        if (compounds == 0 && !verb.ofType(4).isEmpty())
            problems << verb.italian + ": no compound tense";
    }
    for (auto it = stored.cbegin(); it != stored.cend(); ++it) {
        if (!both.contains(it.key()))
            problems << it.key() + ": a note on auxiliaries but only one auxiliary";
    }
    QVERIFY2(problems.isEmpty(), describe(problems));
    QCOMPARE(m_verbs[m_byName["passare"]].form(7, 1), QStringLiteral("sono passato/a / ho passato"));
    QCOMPARE(m_verbs[m_byName["correre"]].form(20, 6), QStringLiteral("avrebbero corso / sarebbero corsi/e"));
    QCOMPARE(stored.value("correre"), QStringLiteral("destination"));
    QCOMPARE(stored.value("piovere"), QStringLiteral("weather"));
}

void TestMaster::homographsAndSpellingsNameEachOther()
{
    // Two verbs spelled alike with two paradigms are two entries, each naming the other
    // with its first form; verbs spelled two ways name each other.
    QHash<QString, QVariantList> usage;
    for (const QVariantList &row : m_db->rows("SELECT italian, also_spelled, homograph FROM verb JOIN verb_usage"
                                              " ON verbid = verb._id"))
        usage.insert(row[0].toString(), row.mid(1));
    QStringList problems;
    qsizetype senses = 0;
    for (const QStringList &cells : readSourceRows(sourcePath("homographs.tsv"))) {
        if (cells.value(1) == QLatin1String("spelled")) {
            if (usage.value(cells[0]).value(0).toString() != cells[2] || usage.value(cells[2]).value(0).toString() != cells[0])
                problems << cells[0] + ", " + cells[2] + ": not cross-referenced";
            continue;
        }
        const QString first = infinitiveOf(cells[0]);
        if (!m_byName.contains(cells[0]) || !m_byName.contains(first)) {
            problems << cells[0] + ": one of the two senses is missing";
            continue;
        }
        ++senses;
        const MasterVerb &a = m_verbs[m_byName[first]];
        const MasterVerb &b = m_verbs[m_byName[cells[0]]];
        if (a.form(6, 1) == b.form(6, 1) || b.form(1, 0) != first)
            problems << cells[0] + ": the same paradigm as " + first + " or another infinitive";
        if (usage.value(first).value(1).toString() != QStringLiteral("%1 (%2)").arg(b.italian, b.form(6, 1))
            || usage.value(b.italian).value(1).toString() != QStringLiteral("%1 (%2)").arg(first, a.form(6, 1)))
            problems << cells[0] + ": the two senses do not name each other";
    }
    QVERIFY2(senses > 0, "homographs.tsv gives no second sense");
    QVERIFY2(problems.isEmpty(), describe(problems));
    QCOMPARE(m_verbs[m_byName["ripartire"]].form(6, 1), QStringLiteral("riparto"));
    QCOMPARE(m_verbs[m_byName["ripartire²"]].form(6, 1), QStringLiteral("ripartisco"));
    QCOMPARE(m_verbs[m_byName["ripartire²"]].form(7, 1), QStringLiteral("ho ripartito"));
}

void TestMaster::goldenForms()
{
    const QList<QStringList> golden = readSourceRows(QStringLiteral(NORVELLA_GOLDEN_VERBS));
    QVERIFY2(!golden.isEmpty(), "tests/data/golden-verbs.tsv is missing or empty");
    QStringList mismatches;
    for (const QStringList &cells : golden) {
        if (cells.size() != 4) {
            mismatches << "malformed golden line: " + cells.join(u'\t');
            continue;
        }
        const int type = cells[1].toInt();
        const int slot = cells[2].toInt();
        QString actual = "(no verb)";
        if (m_byName.contains(cells[0])) {
            const MasterVerb &verb = m_verbs[m_byName[cells[0]]];
            const QList<Form> forms = verb.ofType(type);
            // Forms without a pronoun go by their place (the participle's four), the others by person.
            actual = type <= 4 ? (slot >= 1 && slot <= forms.size() ? forms[slot - 1].text : QString()) : verb.form(type, slot);
            if (actual.isEmpty())
                actual = "(no form)";
        }
        if (actual != cells[3])
            mismatches << QStringLiteral("%1 type %2 slot %3: expected '%4', actual '%5'").arg(cells[0], cells[1], cells[2], cells[3], actual);
    }
    QVERIFY2(mismatches.isEmpty(), describe(mismatches));
}

void TestMaster::queriesUseAnIndex()
{
    // The conjugation screen's statement, run for every verb shown: its rows must come
    // from an index in display order, without a sort.
    QStringList steps = planSteps(*m_db,
        "SELECT conjugation._id, pronoun.pronoun as pronoun, conjugation.verb as verb,"
        " conjugation.conjugation_type_id as type, pronoun._id as pid, voice_file FROM conjugation"
        " LEFT OUTER JOIN pronoun ON conjugation.pronounid = pronoun._id where conjugation.verbid = 1"
        " ORDER BY conjugation.conj_order");
    QVERIFY2(searchesConjugationByVerb(steps) && !steps.join(u' ').contains("TEMP B-TREE"), qPrintable(steps.join("; ")));
    // Search with conjugations on joins every verb to its forms.
    steps = planSteps(*m_db,
        "SELECT verb._id, italian FROM verb LEFT OUTER JOIN conjugation ON verb._id = conjugation.verbid"
        " LEFT OUTER JOIN favourite ON verb._id = favourite.verbid"
        " WHERE italian LIKE ? OR simplified_italian LIKE ? OR conjugation.verb like ?"
        " GROUP BY verb._id ORDER BY simplified_italian");
    QVERIFY2(searchesConjugationByVerb(steps), qPrintable(steps.join("; ")));
}

QTEST_APPLESS_MAIN(TestMaster)
#include "tst_master.moc"
