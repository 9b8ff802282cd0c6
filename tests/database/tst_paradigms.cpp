// Checks the built master verbs.db for rules that cut across the form classes of
// tst_forms: the i of -ciare/-giare before e, the
// cc of -acere before i, compounds conjugated wholly like their model, doublets that
// keep their own spelling, the elision of the clitics la and ci, and lone irregular forms.

#include "MasterData.h"

#include <QRegularExpression>
#include <QSet>
#include <QTest>

using namespace master;

namespace {

// The word without its accents: ridò and rido spell the same letters.
QString unaccented(const QString &word)
{
    QString result = word.normalized(QString::NormalizationForm_D);
    result.removeIf([](QChar c) { return c.category() == QChar::Mark_NonSpacing; });
    return result;
}

int vowelCount(const QString &word)
{
    const QString plain = unaccented(word);
    return int(std::count_if(plain.cbegin(), plain.cend(), [](QChar c) { return QStringLiteral("aeiou").contains(c); }));
}

} // namespace

class TestParadigms : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void ciareAndGiareKeepTheirIBeforeEOnlyWhenStressed();
    void acereDoublesItsCBeforeI();
    void wholeCompoundsFollowTheirModelInEveryForm();
    void doubletsKeepTheirOwnSpelling();
    void laAndCiAreElidedBeforeAVowel();
    void noVerbIsIrregularInASingleForm();

private:
    const MasterVerb *verb(const QString &name) const { return m_master.find(name); }

    VerbIndex m_master;
    const QList<MasterVerb> &m_verbs = m_master.verbs;
};

void TestParadigms::initTestCase()
{
    QVERIFY2(m_master.load(QStringLiteral(NORVELLA_MASTER_DB)), NORVELLA_MASTER_DB " was not built");
    QVERIFY(m_verbs.size() > 6000);
}

void TestParadigms::ciareAndGiareKeepTheirIBeforeEOnlyWhenStressed()
{
    // After c and g an unstressed i only softens the consonant and is not written before
    // e: comincerò, mangerei, lascerò. A stressed one (io scìo) is a vowel and stays:
    // scierò, scierebbe.
    QSet<QString> stressed;
    for (const QStringList &cells : readSourceRows(sourcePath("stressed-i.tsv")))
        stressed.insert(cells[0]);
    QStringList problems;
    int checked = 0;
    for (const MasterVerb &v : std::as_const(m_verbs)) {
        const QString name = v.bare();
        if (!name.endsWith(QLatin1String("ciare")) && !name.endsWith(QLatin1String("giare")))
            continue;
        ++checked;
        const QString stem = stressed.contains(name) ? name.chopped(3) : name.chopped(4); // sci-, cominc-
        const QList<std::tuple<int, int, QString>> cells = {
            {10, 1, "erò"}, {10, 6, "eranno"}, {19, 1, "erei"}, {19, 6, "erebbero"}};
        for (const auto &[type, person, ending] : cells) {
            for (const QString &form : variants(v.form(type, person))) {
                if (!form.section(u' ', -1).endsWith(stem + ending))
                    problems << QStringLiteral("%1: type %2 person %3 '%4', expected -%5%6").arg(v.italian).arg(type).arg(person).arg(form, stem, ending);
            }
        }
    }
    // One stressed and one unstressed i, so a stress list read wrongly shows.
    for (const auto &[name, expected] : QList<QPair<QString, QString>>{{"sciare", "scierò"}, {"cominciare", "comincerò"}}) {
        const MasterVerb *v = verb(name);
        if (!v || v->form(10, 1) != expected)
            problems << name + ": '" + (v ? v->form(10, 1) : QString()) + "', expected '" + expected + "'";
    }
    QVERIFY(checked > 300);
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestParadigms::acereDoublesItsCBeforeI()
{
    // piacere, giacere, tacere and their compounds write cc where the ending starts with
    // i, as in piaccio: piacciamo, giacciamo, tacciate.
    QStringList problems;
    int checked = 0;
    for (const MasterVerb &v : std::as_const(m_verbs)) {
        if (!v.italian.endsWith(QLatin1String("acere")))
            continue;
        ++checked;
        const QString stem = v.italian.chopped(3) + u'c'; // giacc-
        for (const auto &[type, person, ending] : QList<std::tuple<int, int, QString>>{
                 {6, 4, "iamo"}, {14, 4, "iamo"}, {15, 4, "iamo"}, {15, 5, "iate"}}) {
            if (v.form(type, person) != stem + ending)
                problems << QStringLiteral("%1: type %2 person %3 '%4'").arg(v.italian).arg(type).arg(person).arg(v.form(type, person));
        }
    }
    QVERIFY(checked >= 8);
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestParadigms::wholeCompoundsFollowTheirModelInEveryForm()
{
    // ridare as dare, sottostare as stare, riavere as avere: every simple form is the
    // model's with the prefix, its letters unchanged but for avere's h (rianno). Where
    // the model's form is one syllable the longer word writes its stress (ridò, sottostà,
    // riò); elsewhere no accent is added (ridai, ridiedi).
    QHash<QString, QString> modelOf;
    QHash<QString, QString> endingOf;
    QHash<QString, QString> familyModel;
    for (const QStringList &cells : readSourceRows(sourcePath("families.tsv"))) {
        if (cells.value(1) == "model")
            familyModel.insert(cells[0], cells.value(2));
    }
    for (const QStringList &cells : readSourceRows(sourcePath("families.tsv"))) {
        if (cells.value(1) != "whole")
            continue;
        for (const QString &name : cells.value(2).split(u' ', Qt::SkipEmptyParts)) {
            modelOf.insert(name, familyModel.value(cells[0]));
            endingOf.insert(name, cells[0]);
        }
    }
    for (const char *name : {"riandare", "ridare", "sottostare", "riavere"})
        QVERIFY2(modelOf.contains(name), name);
    QStringList problems;
    for (auto it = modelOf.cbegin(); it != modelOf.cend(); ++it) {
        const MasterVerb *compound = verb(it.key());
        const MasterVerb *model = verb(it.value());
        if (!compound || !model) {
            problems << it.key() + " or its model is not in the database";
            continue;
        }
        const QString prefix = it.key().chopped(endingOf[it.key()].size());
        const QString modelPrefix = it.value().chopped(endingOf[it.key()].size());
        for (const int type : QList<int>{2, 3, 4, 6, 8, 10, 12, 14, 15, 17, 19}) {
            const QList<Form> modelForms = model->ofType(type);
            const QList<Form> forms = compound->ofType(type);
            if (forms.size() != modelForms.size()) {
                problems << QStringLiteral("%1: type %2 has %3 forms, its model %4").arg(it.key()).arg(type).arg(forms.size()).arg(modelForms.size());
                continue;
            }
            for (qsizetype i = 0; i < forms.size(); ++i) {
                QStringList expected = variants(modelForms[i].text);
                if (expected.size() > 1) // sta' / stai: the truncated form stays with the model
                    expected.removeIf([](const QString &form) { return form.endsWith(u'\''); });
                const QStringList actual = variants(forms[i].text);
                if (actual.size() != expected.size()) {
                    problems << QStringLiteral("%1: '%2' for '%3'").arg(it.key(), forms[i].text, modelForms[i].text);
                    continue;
                }
                for (qsizetype k = 0; k < actual.size(); ++k) {
                    QString rest = expected[k].mid(modelPrefix.size());
                    if (rest.startsWith(u'h'))
                        rest.remove(0, 1);
                    const bool needsAccent = rest != unaccented(rest)
                            || (vowelCount(rest) == 1 && QStringLiteral("aeiou").contains(rest.back()));
                    const bool hasAccent = actual[k] != unaccented(actual[k]);
                    if (unaccented(actual[k]) != unaccented(prefix + rest) || needsAccent != hasAccent)
                        problems << QStringLiteral("%1: '%2' for the model's '%3'").arg(it.key(), actual[k], expected[k]);
                }
            }
        }
    }
    // An accent written, none added, avere's h dropped (with and without an
    // accent), and a model whose stem changes.
    for (const auto &[name, type, person, expected] : QList<std::tuple<QString, int, int, QString>>{
             {"ridare", 6, 1, "ridò"}, {"ridare", 14, 2, "ridai"}, {"riavere", 6, 1, "riò"}, {"riavere", 6, 6, "rianno"},
             {"riandare", 6, 1, "rivado"}}) {
        const MasterVerb *v = verb(name);
        if (!v || v->form(type, person) != expected)
            problems << QStringLiteral("%1 type %2 person %3: '%4', expected '%5'").arg(name).arg(type).arg(person).arg(v ? v->form(type, person) : QString(), expected);
    }
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestParadigms::doubletsKeepTheirOwnSpelling()
{
    // fuoriuscire and fuoruscire are one verb spelled two ways: each keeps its spelling in
    // every form (fuoriuscito, fuoruscito), so no form of one is a form of the other.
    int pairs = 0;
    QStringList problems;
    for (const QStringList &cells : readSourceRows(sourcePath("homographs.tsv"))) {
        if (cells.value(1) != "spelled")
            continue;
        ++pairs;
        const MasterVerb *a = verb(cells[0]);
        const MasterVerb *b = verb(cells.value(2));
        if (!a || !b) {
            problems << cells.join(u' ') + ": not both in the database";
            continue;
        }
        QSet<QString> formsOfA;
        for (const Form &form : a->forms) {
            for (const QString &text : variants(form.text))
                formsOfA.insert(text);
        }
        for (const Form &form : b->forms) {
            for (const QString &text : variants(form.text)) {
                if (formsOfA.contains(text))
                    problems << QStringLiteral("%1 and %2 share '%3'").arg(a->italian, b->italian, text);
            }
        }
    }
    QVERIFY(pairs >= 1);
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestParadigms::laAndCiAreElidedBeforeAVowel()
{
    // la before a vowel or h (ce l'ho fatta, se l'è cavata, l'ha smessa) and the ci of
    // place before e and i (c'è voluto, c'entra) are elided in standard writing; the
    // reflexive ci of noi is not (ci eravamo alzati).
    const QRegularExpression la(QStringLiteral("(^|\\s)la [aeiouàèéìòùh]"));
    const QRegularExpression ci(QStringLiteral("^ci [eèéiì]"));
    QStringList problems;
    int elided = 0;
    for (const MasterVerb &v : std::as_const(m_verbs)) {
        const QString name = v.bare();
        const bool withLa = name.endsWith(QLatin1String("la"));
        const bool withCi = name.endsWith(QLatin1String("ci"));
        if (!withLa && !withCi)
            continue;
        for (const Form &form : v.forms) {
            for (const QString &text : variants(form.text)) {
                if ((withLa && la.match(text).hasMatch()) || (withCi && ci.match(text).hasMatch()))
                    problems << QStringLiteral("%1: '%2'").arg(v.italian, text);
                elided += text.contains(u'\'');
            }
        }
    }
    QVERIFY(elided > 50);
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestParadigms::noVerbIsIrregularInASingleForm()
{
    // Italian irregularity comes in whole stems (crebbi, crebbe, crebbero) or whole tenses;
    // one lone form off its verb's regular paradigm is a slip of the source (arrocchii
    // among arrochisti, arrochì). The Latin present participles in -enziente are the
    // exception grammar knows.
    const MasterDb db(QStringLiteral(NORVELLA_MASTER_DB));
    QStringList problems;
    const auto rows = db.rows("SELECT v.italian, min(c.conjugation_type_id), min(c.verb) FROM verb v"
                              " JOIN conjugation c ON c.verbid = v._id WHERE v.model_id IS NULL AND c.irregular <> 0"
                              " GROUP BY v._id HAVING count(*) = 1");
    for (const QVariantList &row : rows) {
        if (row[1].toInt() != 2 || !row[2].toString().endsWith(QLatin1String("enziente")))
            problems << row[0].toString() + ": " + row[2].toString();
    }
    QVERIFY(!rows.isEmpty()); // consenziente
    QVERIFY2(problems.isEmpty(), describe(problems));
}

QTEST_APPLESS_MAIN(TestParadigms)
#include "tst_paradigms.moc"
