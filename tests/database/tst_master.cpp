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

namespace {

// Read access to the built master database and to the text sources it was built from.

struct Form
{
    qint64 id = 0;
    int pronoun = 0; // 0 = NULL
    QString text;
    int type = 0;
    int order = 0;
};

struct MasterVerb
{
    qint64 id = 0;
    QString italian;
    QList<Form> forms; // by conj_order

    bool isPronominal() const { return italian.endsWith(QLatin1String("si")) || italian.endsWith(QLatin1String("sene")); }
    QList<Form> ofType(int type) const
    {
        QList<Form> result;
        std::copy_if(forms.cbegin(), forms.cend(), std::back_inserter(result), [&](const Form &f) { return f.type == type; });
        return result;
    }
    QString form(int type, int pronoun) const
    {
        const auto found = std::find_if(forms.cbegin(), forms.cend(),
                                        [&](const Form &f) { return f.type == type && f.pronoun == pronoun; });
        return found == forms.cend() ? QString() : found->text;
    }
};

class MasterDb
{
public:
    explicit MasterDb(const QString &path)
    {
        if (sqlite3_open_v2(QFile::encodeName(path).constData(), &m_db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
            sqlite3_close(m_db);
            m_db = nullptr;
        }
    }
    ~MasterDb() { sqlite3_close(m_db); }
    MasterDb(const MasterDb &) = delete;
    MasterDb &operator=(const MasterDb &) = delete;

    bool isOpen() const { return m_db != nullptr; }
    QList<QVariantList> rows(const QString &sql) const
    {
        QList<QVariantList> result;
        sqlite3_stmt *statement = nullptr;
        if (sqlite3_prepare_v2(m_db, sql.toUtf8().constData(), -1, &statement, nullptr) != SQLITE_OK)
            qFatal("SQL error %s in %s", sqlite3_errmsg(m_db), qPrintable(sql));
        while (sqlite3_step(statement) == SQLITE_ROW) {
            QVariantList row;
            for (int c = 0; c < sqlite3_column_count(statement); ++c) {
                switch (sqlite3_column_type(statement, c)) {
                case SQLITE_NULL: row.append(QVariant()); break;
                case SQLITE_INTEGER: row.append(qint64(sqlite3_column_int64(statement, c))); break;
                default: row.append(QString::fromUtf8(reinterpret_cast<const char *>(sqlite3_column_text(statement, c))));
                }
            }
            result.append(row);
        }
        sqlite3_finalize(statement);
        return result;
    }
    // Every verb with its forms, in verb id order.
    QList<MasterVerb> verbs() const
    {
        QList<MasterVerb> verbs;
        QHash<qint64, qsizetype> position;
        for (const QVariantList &row : rows("SELECT _id, italian FROM verb ORDER BY _id")) {
            position.insert(row[0].toLongLong(), verbs.size());
            verbs.append({row[0].toLongLong(), row[1].toString(), {}});
        }
        for (const QVariantList &row : rows("SELECT _id, verbid, pronounid, verb, conjugation_type_id, conj_order"
                                            " FROM conjugation ORDER BY verbid, conj_order")) {
            const auto found = position.constFind(row[1].toLongLong());
            if (found != position.cend())
                verbs[*found].forms.append({row[0].toLongLong(), row[2].isNull() ? 0 : row[2].toInt(), row[3].toString(),
                                            row[4].toInt(), row[5].toInt()});
        }
        return verbs;
    }

private:
    sqlite3 *m_db = nullptr;
};

// Tab-separated source lines without comments, split into cells.
QList<QStringList> readSourceRows(const QString &path)
{
    QList<QStringList> result;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return result;
    QTextStream in(&file);
    in.setEncoding(QStringConverter::Utf8);
    while (!in.atEnd()) {
        const QString line = in.readLine();
        if (!line.trimmed().isEmpty() && !line.startsWith(u'#'))
            result.append(line.split(u'\t'));
    }
    return result;
}

QString fold(const QString &text)
{
    QString folded = text.normalized(QString::NormalizationForm_D);
    folded.removeIf([](QChar c) { return c.isMark(); });
    return folded.toLower();
}

// Failure text listing the first problems and how many there are.
QByteArray describe(const QStringList &problems)
{
    const qsizetype shown = std::min<qsizetype>(problems.size(), 40);
    QString text = QStringLiteral("%1 problem(s):\n  ").arg(problems.size()) + problems.mid(0, shown).join("\n  ");
    if (shown < problems.size())
        text += "\n  ...";
    return text.toUtf8();
}

const QList<int> allTypes = {1, 2, 3, 4, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20};
const QList<int> compoundTypes = {7, 9, 11, 13, 16, 18, 20};
const QList<int> noParticiple = {4, 7, 9, 11, 13, 16, 18, 20};

// Tenses a few defective verbs really lack; any other gap is a fault.
const QHash<QString, QList<int>> defective = {
    {"potere", {14}}, {"dovere", {14}}, {"solere", {10, 12, 14, 19}}, {"prudere", {4, 7, 9, 11, 12, 13, 16, 18, 20}},
    {"concernere", noParticiple}, {"delinquere", noParticiple}, {"dirimere", noParticiple},
    {"divergere", noParticiple}, {"incombere", noParticiple}, {"soccombere", noParticiple}, {"vigere", noParticiple},
};

// The simple tense holding the auxiliary of each compound tense.
const QHash<int, int> auxiliaryTense = {{7, 6}, {9, 8}, {11, 10}, {13, 12}, {16, 15}, {18, 17}, {20, 19}};

const QStringList translationColumns = {"english", "german", "french", "spanish", "dutch", "portuguese", "turkish"};

QString sourcePath(const QString &name)
{
    return QStringLiteral(NORVELLA_VERB_SOURCES_DIR "/") + name;
}

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
}

void TestMaster::paradigmShapeAndOrder()
{
    // Every verb: its tenses in type order, each with its slots (pronoun 0 for the forms
    // without one), in conj_order; the four past participles keep their ms, fs, mp, fp order by _id.
    QStringList problems;
    for (const MasterVerb &verb : std::as_const(m_verbs)) {
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
            problems << verb.italian + ": " + shown.join(u' ');
        }
    }
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestMaster::formsAreWellFormed()
{
    const QRegularExpression shape("^[a-zàèéìíòóù']+(/[aei])?( [a-zàèéìíòóù']+(/[aei])?)*$");
    const QRegularExpression infinitive("^[a-zàèéìòù]+(are|ere|ire|rre)$");
    QStringList problems;
    for (const MasterVerb &verb : std::as_const(m_verbs)) {
        for (const Form &form : verb.forms) {
            // The future's first person always carries its stressed ending.
            if (!shape.match(form.text).hasMatch() || (form.type == 10 && form.pronoun == 1 && !form.text.endsWith(u'ò')))
                problems << QStringLiteral("%1: type %2 slot %3: '%4'").arg(verb.italian).arg(form.type).arg(form.pronoun).arg(form.text);
        }
        // Infinitive and gerund of a plain verb carry no clitic.
        if (verb.isPronominal())
            continue;
        const QString inf = verb.form(1, 0), gerund = verb.form(3, 0);
        if (inf != verb.italian || !infinitive.match(inf).hasMatch())
            problems << verb.italian + ": infinitive '" + inf + "'";
        if (!gerund.endsWith(QLatin1String("ando")) && !gerund.endsWith(QLatin1String("endo")))
            problems << verb.italian + ": gerund '" + gerund + "'";
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
    const MasterVerb &essere = m_verbs[m_byName["essere"]];
    const MasterVerb &avere = m_verbs[m_byName["avere"]];
    QStringList problems;
    for (const MasterVerb &verb : std::as_const(m_verbs)) {
        const QList<Form> participle = verb.ofType(4);
        if (participle.size() != 4)
            continue;
        const bool withEssere = verb.isPronominal() || essereVerbs.contains(verb.italian);
        for (const int type : compoundTypes) {
            for (int person = 1; person <= 6; ++person) {
                QString agreed = participle[0].text;
                if (withEssere)
                    agreed = person <= 3 ? bothGenders(participle[0].text, participle[1].text)
                                         : bothGenders(participle[2].text, participle[3].text);
                QString expected = (withEssere ? essere : avere).form(auxiliaryTense[type], person) + u' ' + agreed;
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
