// Checks the built master verbs.db: its structure, every verb's paradigm, the
// pronominal verbs, the translations and the hand-checked golden forms.

#include "MasterFixture.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

#include <algorithm>

namespace {

const QList<int> allTypes = {1, 2, 3, 4, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20};
const QList<int> compoundTypes = {7, 9, 11, 13, 16, 18, 20};
const QList<int> noParticiple = {4, 7, 9, 11, 13, 16, 18, 20};

// Tenses a few defective verbs really lack; any other gap is a fault.
const QHash<QString, QList<int>> defective = {
    {QStringLiteral("potere"), {14}},
    {QStringLiteral("dovere"), {14}},
    {QStringLiteral("solere"), {10, 12, 14, 19}},
    {QStringLiteral("prudere"), {4, 7, 9, 11, 12, 13, 16, 18, 20}},
    {QStringLiteral("concernere"), noParticiple},
    {QStringLiteral("delinquere"), noParticiple},
    {QStringLiteral("dirimere"), noParticiple},
    {QStringLiteral("divergere"), noParticiple},
    {QStringLiteral("incombere"), noParticiple},
    {QStringLiteral("soccombere"), noParticiple},
    {QStringLiteral("vigere"), noParticiple},
};

// The simple tense holding the auxiliary of each compound tense.
const QHash<int, int> auxiliaryTense = {{7, 6}, {9, 8}, {11, 10}, {13, 12}, {16, 15}, {18, 17}, {20, 19}};

QString sourcePath(const char *name)
{
    return QStringLiteral(NORVELLA_VERB_SOURCES_DIR "/") + QLatin1String(name);
}

QStringList clitics(const MasterVerb &verb)
{
    if (verb.italian.endsWith(QLatin1String("sene")))
        return {QStringLiteral("me ne "), QStringLiteral("te ne "), QStringLiteral("se ne "),
                QStringLiteral("ce ne "), QStringLiteral("ve ne "), QStringLiteral("se ne ")};
    return {QStringLiteral("mi "), QStringLiteral("ti "), QStringLiteral("si "),
            QStringLiteral("ci "), QStringLiteral("vi "), QStringLiteral("si ")};
}

QString bothGenders(const QString &masculine, const QString &feminine)
{
    return masculine.chopped(1) == feminine.chopped(1) ? masculine + u'/' + feminine.right(1)
                                                       : masculine + u'/' + feminine;
}

} // namespace

class TestMaster : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void pronounTable();
    void verbKeys();
    void paradigmShapeAndOrder();
    void formsAreWellFormed();
    void infinitiveAndGerundHaveNoClitic();
    void compoundTensesUseTheAuxiliary();
    void pronominalVerbsCarryTheirClitics();
    void foldedColumns();
    void translationsComeFromTheSources();
    void goldenForms();
    void conjugationIdsAreUnique();
    void conjugationQueryUsesAnIndex();
    void searchJoinUsesAnIndex();
    void masterSize();
    void verbCount();

private:
    QScopedPointer<MasterDb> m_db;
    QList<MasterVerb> m_verbs;
    QHash<QString, qsizetype> m_byName;
};

void TestMaster::initTestCase()
{
    QVERIFY2(QFileInfo::exists(QStringLiteral(NORVELLA_MASTER_DB)), NORVELLA_MASTER_DB " was not built");
    m_db.reset(new MasterDb(QStringLiteral(NORVELLA_MASTER_DB)));
    QVERIFY(m_db->isOpen());
    m_verbs = m_db->verbs();
    for (qsizetype i = 0; i < m_verbs.size(); ++i)
        m_byName.insert(m_verbs[i].italian, i);
    QVERIFY(m_byName.contains(QStringLiteral("essere")) && m_byName.contains(QStringLiteral("avere")));
}

void TestMaster::pronounTable()
{
    QStringList rows;
    for (const QVariantList &row : m_db->rows(QStringLiteral("SELECT _id, pronoun FROM pronoun ORDER BY _id")))
        rows << row[0].toString() + u':' + row[1].toString();
    QCOMPARE(rows.join(u' '), QStringLiteral("1:io 2:tu 3:lui/lei 4:noi 5:voi 6:loro"));
}

void TestMaster::verbKeys()
{
    // Keys must survive releases: each one is the registered key of its verb.
    QHash<QString, qint64> registered;
    for (const QStringList &cells : readSourceRows(sourcePath("verb-ids.tsv")))
        registered.insert(cells.value(0), cells.value(1).toLongLong());
    QStringList problems;
    QSet<QString> names;
    for (const MasterVerb &verb : m_verbs) {
        if (names.contains(verb.italian))
            problems << verb.italian + QStringLiteral(": listed twice");
        names.insert(verb.italian);
        if (registered.value(verb.italian) != verb.id)
            problems << QStringLiteral("%1: id %2, verb-ids.tsv says %3").arg(verb.italian).arg(verb.id).arg(registered.value(verb.italian));
        if (verb.id <= 0 || verb.id > 0x7fffffff)
            problems << QStringLiteral("%1: id %2 out of the 32-bit range").arg(verb.italian).arg(verb.id);
    }
    const auto orphans = m_db->rows(QStringLiteral(
        "SELECT count(*) FROM conjugation WHERE verbid NOT IN (SELECT _id FROM verb) OR pronounid NOT IN (SELECT _id FROM pronoun)"));
    if (orphans[0][0].toLongLong())
        problems << QStringLiteral("%1 forms point at no verb or no pronoun").arg(orphans[0][0].toLongLong());
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestMaster::paradigmShapeAndOrder()
{
    // Every verb: its tenses in type order, each with its slots (pronoun 0 for the forms
    // without one), in conj_order; the four past participles keep their ms, fs, mp, fp order by _id.
    QStringList problems;
    for (const MasterVerb &verb : m_verbs) {
        QList<int> types = allTypes;
        if (verb.isPronominal())
            types.removeOne(2); // a pronominal verb has no present participle of its own
        for (const int type : defective.value(verb.italian))
            types.removeOne(type);
        QList<QPair<int, int>> expected, actual;
        for (const int type : types) {
            const QList<int> places = type <= 3 ? QList<int>{0} : type == 4 ? QList<int>{0, 0, 0, 0}
                                  : type == 14 ? QList<int>{2, 3, 4, 5, 6} : QList<int>{1, 2, 3, 4, 5, 6};
            for (const int slot : places)
                expected.append({type, slot});
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
            problems << QStringLiteral("%1: %2").arg(verb.italian, shown.join(u' '));
        }
    }
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestMaster::formsAreWellFormed()
{
    const QRegularExpression shape(QStringLiteral("^[a-zàèéìíòóù']+(/[aei])?( [a-zàèéìíòóù']+(/[aei])?)*$"));
    QStringList problems;
    for (const MasterVerb &verb : m_verbs) {
        for (const Form &form : verb.forms) {
            // The future's first person always carries its stressed ending.
            if (!shape.match(form.text).hasMatch() || (form.type == 10 && form.pronoun == 1 && !form.text.endsWith(u'ò')))
                problems << QStringLiteral("%1: type %2 slot %3: '%4'").arg(verb.italian).arg(form.type).arg(form.pronoun).arg(form.text);
        }
    }
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestMaster::infinitiveAndGerundHaveNoClitic()
{
    const QRegularExpression infinitive(QStringLiteral("^[a-zàèéìòù]+(are|ere|ire|rre)$"));
    QStringList problems;
    for (const MasterVerb &verb : m_verbs) {
        if (verb.isPronominal())
            continue;
        const QString inf = verb.form(1, 0);
        const QString gerund = verb.form(3, 0);
        if (inf != verb.italian || !infinitive.match(inf).hasMatch())
            problems << QStringLiteral("%1: infinitive '%2'").arg(verb.italian, inf);
        if (!gerund.endsWith(QLatin1String("ando")) && !gerund.endsWith(QLatin1String("endo")))
            problems << QStringLiteral("%1: gerund '%2'").arg(verb.italian, gerund);
    }
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestMaster::compoundTensesUseTheAuxiliary()
{
    QSet<QString> essereVerbs;
    for (const QStringList &cells : readSourceRows(sourcePath("auxiliaries.tsv"))) {
        if (cells.value(1) == QLatin1String("essere") || cells.value(1) == QLatin1String("essere/avere"))
            essereVerbs.insert(cells[0]);
    }
    QVERIFY2(!essereVerbs.isEmpty(), "auxiliaries.tsv lists no verb taking essere");
    const MasterVerb &essere = m_verbs[m_byName[QStringLiteral("essere")]];
    const MasterVerb &avere = m_verbs[m_byName[QStringLiteral("avere")]];
    QStringList problems;
    for (const MasterVerb &verb : m_verbs) {
        const QList<Form> participle = verb.ofType(4);
        if (participle.size() != 4)
            continue;
        const bool withEssere = verb.isPronominal() || essereVerbs.contains(verb.italian);
        const MasterVerb &auxiliary = withEssere ? essere : avere;
        for (const int type : compoundTypes) {
            for (int person = 1; person <= 6; ++person) {
                QString agreed = participle[0].text;
                if (withEssere)
                    agreed = person <= 3 ? bothGenders(participle[0].text, participle[1].text)
                                         : bothGenders(participle[2].text, participle[3].text);
                QString expected = auxiliary.form(auxiliaryTense[type], person) + u' ' + agreed;
                if (verb.isPronominal())
                    expected.prepend(clitics(verb)[person - 1]);
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
            problems << name + QStringLiteral(": listed in pronominal.tsv but not in the database");
    }
    QVERIFY2(listed > 0, "pronominal.tsv lists no pronominal verb");
    for (const MasterVerb &verb : m_verbs) {
        if (!verb.isPronominal())
            continue;
        const bool ne = verb.italian.endsWith(QLatin1String("sene"));
        const QStringList proclitics = clitics(verb);
        const QString suffix = ne ? QStringLiteral("sene") : QStringLiteral("si");
        if (verb.form(1, 0) != verb.italian || !verb.form(3, 0).endsWith(QLatin1String("ndo") + suffix))
            problems << verb.italian + QStringLiteral(": infinitive or gerund without the clitic");
        const QStringList enclitic = ne ? QStringList{QStringLiteral("tene"), QStringLiteral("cene"), QStringLiteral("vene")}
                                        : QStringList{QStringLiteral("ti"), QStringLiteral("ci"), QStringLiteral("vi")};
        for (const Form &form : verb.forms) {
            bool ok = true;
            if (form.type == 14 && (form.pronoun == 3 || form.pronoun == 6))
                ok = form.text.startsWith(proclitics[form.pronoun - 1]);
            else if (form.type == 14)
                ok = form.text.endsWith(enclitic[form.pronoun == 2 ? 0 : form.pronoun - 3]) && !form.text.contains(u' ');
            else if (form.type >= 6)
                ok = form.text.startsWith(proclitics[form.pronoun - 1]);
            if (!ok)
                problems << QStringLiteral("%1: type %2 slot %3: '%4'").arg(verb.italian).arg(form.type).arg(form.pronoun).arg(form.text);
        }
    }
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestMaster::foldedColumns()
{
    const QStringList languages = {QStringLiteral("italian"), QStringLiteral("german"), QStringLiteral("french"),
                                   QStringLiteral("spanish"), QStringLiteral("dutch"), QStringLiteral("portuguese"),
                                   QStringLiteral("turkish")};
    QStringList problems;
    for (const QString &language : languages) {
        const auto rows = m_db->rows(QStringLiteral("SELECT italian, %1, simplified_%1 FROM verb").arg(language));
        for (const QVariantList &row : rows) {
            const bool bothNull = row[1].isNull() && row[2].isNull();
            if (!bothNull && (row[1].isNull() || row[2].toString() != fold(row[1].toString())))
                problems << QStringLiteral("%1: %2 '%3' folded as '%4'").arg(row[0].toString(), language,
                                                                             row[1].toString(), row[2].toString());
        }
    }
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestMaster::translationsComeFromTheSources()
{
    const QStringList columns = {QStringLiteral("english"), QStringLiteral("german"), QStringLiteral("french"),
                                 QStringLiteral("spanish"), QStringLiteral("dutch"), QStringLiteral("portuguese"),
                                 QStringLiteral("turkish")};
    QHash<QString, QVariantList> stored;
    for (const QVariantList &row : m_db->rows(QStringLiteral(
             "SELECT italian, english, german, french, spanish, dutch, portuguese, turkish FROM verb")))
        stored.insert(row[0].toString(), row.mid(1));
    QStringList problems;
    qsizetype compared = 0;
    const QStringList files = QDir(sourcePath("translations")).entryList({QStringLiteral("*.tsv")}, QDir::Files);
    for (const QString &file : files) {
        const QList<QStringList> rows = readSourceRows(sourcePath("translations/") + file);
        for (qsizetype r = 1; r < rows.size(); ++r) {
            const QStringList &cells = rows[r];
            // A row for a verb the database lacks is dead weight that hides a lost verb.
            if (!stored.contains(cells[0])) {
                problems << QStringLiteral("%1 (%2): no such verb in the database").arg(cells[0], file);
                continue;
            }
            ++compared;
            for (int c = 0; c < columns.size(); ++c) {
                const QString text = cells.value(c + 1).trimmed();
                const QVariant &value = stored[cells[0]][c];
                if ((text.isEmpty() && !value.isNull()) || (!text.isEmpty() && value.toString() != text))
                    problems << QStringLiteral("%1 %2: '%3' in %4, '%5' in the database").arg(cells[0], columns[c], text, file, value.toString());
            }
        }
    }
    QVERIFY2(compared > 0, "no translation rows to compare");
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestMaster::goldenForms()
{
    const QList<QStringList> golden = readSourceRows(QStringLiteral(NORVELLA_GOLDEN_VERBS));
    QVERIFY2(!golden.isEmpty(), "tests/data/golden-verbs.tsv is missing or empty");
    QStringList mismatches;
    for (const QStringList &cells : golden) {
        if (cells.size() != 4) {
            mismatches << QStringLiteral("malformed golden line: %1").arg(cells.join(u'\t'));
            continue;
        }
        const QString &italian = cells[0];
        const int type = cells[1].toInt();
        const int slot = cells[2].toInt();
        QString actual = QStringLiteral("(no verb)");
        if (m_byName.contains(italian)) {
            const MasterVerb &verb = m_verbs[m_byName[italian]];
            if (type <= 4) {
                const QList<Form> forms = verb.ofType(type);
                actual = slot >= 1 && slot <= forms.size() ? forms[slot - 1].text : QStringLiteral("(no form)");
            } else {
                actual = verb.form(type, slot);
                if (actual.isEmpty())
                    actual = QStringLiteral("(no form)");
            }
        }
        if (actual != cells[3])
            mismatches << QStringLiteral("%1 type %2 slot %3: expected '%4', actual '%5'").arg(italian, cells[1], cells[2], cells[3], actual);
    }
    QVERIFY2(mismatches.isEmpty(), describe(mismatches));
}

void TestMaster::conjugationIdsAreUnique()
{
    // The app selects conjugation._id with every form; the schema derives it.
    const auto rows = m_db->rows(QStringLiteral(
        "SELECT count(*), count(DISTINCT _id), count(_id), min(_id) FROM conjugation"));
    const qint64 forms = rows[0][0].toLongLong();
    QVERIFY(forms > 0);
    QCOMPARE(rows[0][1].toLongLong(), forms);
    QCOMPARE(rows[0][2].toLongLong(), forms);
    QVERIFY(rows[0][3].toLongLong() > 0);
}

namespace {

QStringList planSteps(const MasterDb &db, const QString &sql)
{
    QStringList steps;
    for (const QVariantList &row : db.rows(QStringLiteral("EXPLAIN QUERY PLAN ") + sql))
        steps << row.last().toString();
    return steps;
}

// A lookup of conjugation rows by verb through the primary key or an index, not a scan.
bool searchesConjugationByVerb(const QStringList &steps)
{
    static const QRegularExpression search(QStringLiteral(
        "^SEARCH conjugation USING (PRIMARY KEY|(COVERING )?INDEX \\w+) \\(verbid=\\?"));
    return std::any_of(steps.cbegin(), steps.cend(), [](const QString &step) { return search.match(step).hasMatch(); });
}

} // namespace

void TestMaster::conjugationQueryUsesAnIndex()
{
    // The conjugation screen's statement, run for every verb shown: its rows must come
    // from an index in display order, without a sort.
    const QStringList steps = planSteps(*m_db, QStringLiteral(
        "SELECT conjugation._id, pronoun.pronoun as pronoun, conjugation.verb as verb,"
        " conjugation.conjugation_type_id as type, pronoun._id as pid, voice_file FROM conjugation"
        " LEFT OUTER JOIN pronoun ON conjugation.pronounid = pronoun._id where conjugation.verbid = 1"
        " ORDER BY conjugation.conj_order"));
    QVERIFY2(searchesConjugationByVerb(steps), qPrintable(steps.join(QStringLiteral("; "))));
    QVERIFY2(!steps.join(u' ').contains(QLatin1String("TEMP B-TREE")), qPrintable(steps.join(QStringLiteral("; "))));
}

void TestMaster::searchJoinUsesAnIndex()
{
    // Search with conjugations on joins every verb to its forms.
    const QStringList steps = planSteps(*m_db, QStringLiteral(
        "SELECT verb._id, italian FROM verb LEFT OUTER JOIN conjugation ON verb._id = conjugation.verbid"
        " LEFT OUTER JOIN favourite ON verb._id = favourite.verbid"
        " WHERE italian LIKE ? OR simplified_italian LIKE ? OR conjugation.verb like ?"
        " GROUP BY verb._id ORDER BY simplified_italian"));
    QVERIFY2(searchesConjugationByVerb(steps), qPrintable(steps.join(QStringLiteral("; "))));
}

void TestMaster::masterSize()
{
    // The app ships the master: it must stay under 25,000,000 bytes.
    const qint64 size = QFileInfo(QStringLiteral(NORVELLA_MASTER_DB)).size();
    QVERIFY2(size < 25000000, qPrintable(QStringLiteral("%1 bytes").arg(size)));
}

void TestMaster::verbCount()
{
    QVERIFY2(m_verbs.size() >= 6000, qPrintable(QStringLiteral("only %1 verbs").arg(m_verbs.size())));
}

QTEST_APPLESS_MAIN(TestMaster)
#include "tst_master.moc"
