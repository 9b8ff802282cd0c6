// The irregular marks of the master against a golden list written from the grammars,
// and the rules every mark must keep.

#include "MasterData.h"

#include <QSet>
#include <QTest>

using namespace master;

namespace {

// conjugation_type_id of each tag of forms.tsv.
const QHash<QString, int> typeOfTag = {
    {"ger", 3}, {"ppres", 2}, {"pp", 4}, {"ind.pres", 6}, {"ind.impf", 8}, {"ind.prem", 12},
    {"ind.fut", 10}, {"cond.pres", 19}, {"cong.pres", 15}, {"cong.impf", 17}, {"imp", 14}};
const QSet<int> compoundTypes = {7, 9, 11, 13, 16, 18, 20};

struct Golden
{
    QString verb;
    QString summary;
    QHash<int, QSet<int>> cells; // type -> persons (pp: slots 1-4; single forms: 0)
    bool all(int type) const { return cells.value(type).contains(-1); }
    bool has(int type, int person) const { return all(type) || cells.value(type).contains(person); }
};

QList<Golden> readGolden()
{
    QList<Golden> golden;
    for (const QStringList &row : readSourceRows(QStringLiteral(NORVELLA_GOLDEN_IRREGULAR))) {
        Golden entry{row.value(0), row.value(1), {}};
        for (const QString &cell : row.value(2).split(u' ', Qt::SkipEmptyParts)) {
            const QStringList parts = cell.split(u':');
            const int type = typeOfTag.value(parts[0]);
            if (!type)
                qFatal("irregular-verbs.tsv: unknown tag %s", qPrintable(parts[0]));
            QSet<int> &persons = entry.cells[type];
            if (parts.size() == 1)
                persons.insert(0);
            else if (parts[1] == u'*')
                persons.insert(-1);
            else
                for (const QString &person : parts[1].split(u','))
                    persons.insert(person.toInt());
        }
        golden << entry;
    }
    return golden;
}

} // namespace

class TestIrregular : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(m_db.isOpen(), NORVELLA_MASTER_DB);
        QVERIFY(m_golden.size() >= 40);
    }

    // Every form of the golden verbs: marked exactly where the grammars say.
    void goldenVerbs()
    {
        QHash<QString, qint64> ids;
        for (const QVariantList &row : m_db.rows("SELECT _id, italian FROM verb"))
            ids.insert(row[1].toString(), row[0].toLongLong());
        QStringList problems;
        for (const Golden &golden : m_golden) {
            if (!ids.contains(golden.verb)) {
                problems << golden.verb + ": not in the master";
                continue;
            }
            const auto rows = m_db.rows(QStringLiteral("SELECT conjugation_type_id, pronounid, verb, irregular"
                                                       " FROM conjugation WHERE verbid = %1 ORDER BY conj_order")
                                                .arg(ids[golden.verb]));
            int participle = 0;
            for (const QVariantList &row : rows) {
                const int type = row[0].toInt();
                const int person = row[1].isNull() ? 0 : row[1].toInt();
                bool expected = false;
                if (type == 4)
                    expected = golden.has(4, ++participle);
                else if (compoundTypes.contains(type))
                    expected = golden.has(4, person >= 4 ? 3 : 1);
                else if (type != 1)
                    expected = golden.has(type, person);
                if (expected != (row[3].toInt() != 0))
                    problems << QStringLiteral("%1: %2 (type %3, person %4) should be %5").arg(
                            golden.verb, row[2].toString()).arg(type).arg(person)
                                        .arg(expected ? "irregular" : "regular");
            }
        }
        QVERIFY2(problems.isEmpty(), describe(problems));
    }

    void goldenSummaries()
    {
        QStringList problems;
        for (const Golden &golden : m_golden) {
            const auto rows = m_db.rows(QStringLiteral("SELECT v.pattern, m.italian FROM verb v LEFT JOIN verb m"
                                                       " ON m._id = v.model_id WHERE v.italian = '%1'").arg(golden.verb));
            if (rows.size() != 1)
                continue; // reported by goldenVerbs
            const QString summary = rows[0][1].isNull() ? rows[0][0].toString()
                                                        : QStringLiteral("like ") + rows[0][1].toString();
            if (summary != golden.summary)
                problems << QStringLiteral("%1: %2, not %3").arg(golden.verb, summary, golden.summary);
        }
        QVERIFY2(problems.isEmpty(), describe(problems));
    }

    // Whatever the verb: an infinitive is never marked, a verb with a mark is not
    // called regular, a marked cell's bits stay within its forms.
    void marksAreConsistent()
    {
        QCOMPARE(m_db.rows("SELECT count(*) FROM conjugation WHERE conjugation_type_id = 1 AND irregular != 0")[0][0]
                         .toLongLong(), 0);
        const auto regularWithMarks = m_db.rows(
                "SELECT italian FROM verb WHERE pattern != 'irregular' AND EXISTS"
                " (SELECT 1 FROM conjugation WHERE verbid = verb._id AND irregular != 0) LIMIT 5");
        QVERIFY2(regularWithMarks.isEmpty(), qPrintable(regularWithMarks.value(0).value(0).toString()));
        const auto irregularWithout = m_db.rows(
                "SELECT italian FROM verb WHERE pattern = 'irregular' AND NOT EXISTS"
                " (SELECT 1 FROM conjugation WHERE verbid = verb._id AND irregular != 0) LIMIT 5");
        QVERIFY2(irregularWithout.isEmpty(), qPrintable(irregularWithout.value(0).value(0).toString()));
        QStringList problems;
        for (const QVariantList &row : m_db.rows("SELECT verb, irregular FROM conjugation WHERE irregular != 0")) {
            const int forms = int(row[0].toString().split(QStringLiteral(" / ")).size());
            if (row[1].toInt() >= (1 << forms))
                problems << QStringLiteral("%1: mask %2").arg(row[0].toString()).arg(row[1].toInt());
        }
        QVERIFY2(problems.isEmpty(), describe(problems));
        QCOMPARE(m_db.rows("SELECT count(*) FROM verb WHERE pattern IS NULL")[0][0].toLongLong(), 0);
    }

    // Of two forms only the irregular one is marked: sederò is regular, siederò is not.
    void variantsAreMarkedOneByOne()
    {
        const auto rows = m_db.rows("SELECT c.verb, c.irregular FROM conjugation c JOIN verb v ON v._id = c.verbid"
                                    " WHERE v.italian = 'sedere' AND c.conjugation_type_id = 10 AND c.pronounid = 1");
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows[0][0].toString(), QString::fromUtf8("sederò / siederò"));
        QCOMPARE(rows[0][1].toInt(), 2);
    }

private:
    MasterDb m_db{QStringLiteral(NORVELLA_MASTER_DB)};
    QList<Golden> m_golden = readGolden();
};

QTEST_GUILESS_MAIN(TestIrregular)
#include "tst_irregular.moc"
