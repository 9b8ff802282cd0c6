// Checks the built master verbs.db class by class against the rules of Italian
// conjugation the sources spell out: stressed-i verbs in -iare, -isc- in -ire,
// compounds of irregular verbs, two standard forms in one cell,
// enclitic imperatives and the elision of ne.

#include "MasterData.h"

#include <QRegularExpression>
#include <QSet>
#include <QTest>

using namespace master;

namespace {

// Two verbs where one is the other with a prefix, whose endings are homographs of
// different verbs, so they may differ in -isc-: partire "leave" and spartire "divide".
const QHash<QString, QStringList> iscHomographs = {
    {"partire", {"bipartire", "compartire", "impartire", "scompartire", "spartire", "tripartire"}},
    {"ripartire", {"tripartire"}},
    {"servire", {"asservire"}},
    {"salire", {"trasalire"}},
    {"morire", {"intimorire"}},
    {"aprire", {"inasprire"}},
    {"udire", {"accudire", "erudire", "esaudire", "incrudire", "rincrudire"}},
    {"dire", {}}, // dire's compounds are irregular; the other -dire verbs are not built on it
    {"ridire", {}}, // inaridire, inorridire, imputridire come from arido, orrido, putrido
};

} // namespace

class TestForms : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void stressedIKeepsItsIBeforeAnI();
    void iscFollowsEachVerbsClass();
    void derivedVerbsAgreeOnIsc();
    void compoundsFollowTheirModel();
    void twoStandardFormsShowInOneCell();
    void encliticImperativesUseTheTruncatedForm();
    void neIsElidedBeforeEssere();

private:
    const MasterVerb *verb(const QString &name) const { return m_master.find(name); }

    VerbIndex m_master;
    const QList<MasterVerb> &m_verbs = m_master.verbs;
    QHash<QString, QStringList> m_pronominalOf; // base -> its pronominal verbs
    QSet<QString> m_thirdPerson;                 // third-person.tsv

    // A cell the third-person rule empties: other persons, and the whole imperative.
    bool unused(const MasterVerb &v, int type, int person) const
    {
        return m_thirdPerson.contains(v.italian) && (type == 14 || (person != 3 && person != 6));
    }
};

void TestForms::initTestCase()
{
    QVERIFY2(m_master.load(QStringLiteral(NORVELLA_MASTER_DB)), NORVELLA_MASTER_DB " was not built");
    for (const QStringList &cells : readSourceRows(sourcePath("pronominal.tsv")))
        m_pronominalOf[cells.value(1)] << cells.value(0);
    for (const QStringList &cells : readSourceRows(sourcePath("third-person.tsv")))
        m_thirdPerson.insert(cells.value(0));
    QVERIFY(m_verbs.size() > 6000 && !m_thirdPerson.isEmpty());
}

void TestForms::stressedIKeepsItsIBeforeAnI()
{
    // io invìo: tu invii, che io/tu/lui invii, che loro inviino (and so the imperative's
    // lui/lei and loro); noi inviamo. Every other verb in -iare has a single i there.
    QSet<QString> stressed;
    for (const QStringList &cells : readSourceRows(sourcePath("stressed-i.tsv")))
        stressed.insert(cells[0]);
    QVERIFY(stressed.contains("sviare") && stressed.contains("sciare") && stressed.size() >= 15);
    QStringList problems;
    int checked = 0;
    for (const MasterVerb &v : std::as_const(m_verbs)) {
        if (!v.italian.endsWith(QLatin1String("iare")))
            continue;
        ++checked;
        const QString stem = v.italian.chopped(3); // svi-, stud(i)-
        const bool isStressed = stressed.contains(v.italian);
        const QList<std::tuple<int, int, QString>> cells = {
            {6, 2, "i"}, {15, 1, "i"}, {15, 2, "i"}, {15, 3, "i"}, {15, 6, "ino"}, {14, 3, "i"}, {14, 6, "ino"}};
        for (const auto &[type, person, ending] : cells) {
            if (unused(v, type, person))
                continue;
            const QString actual = v.form(type, person);
            const QString expected = isStressed ? stem + ending : stem.chopped(1) + ending;
            if (actual != expected)
                problems << QStringLiteral("%1: type %2 person %3: '%4', expected '%5'").arg(v.italian).arg(type).arg(person).arg(actual, expected);
        }
        if (isStressed && v.form(6, 4) != stem + "amo")
            problems << v.italian + ": noi '" + v.form(6, 4) + "'";
    }
    // The pronominal verbs built on them too (ti avvii).
    for (const QString &base : std::as_const(stressed)) {
        for (const QString &name : m_pronominalOf.value(base)) {
            const MasterVerb *pronominal = verb(name);
            if (pronominal && pronominal->form(6, 2) != "ti " + base.chopped(3) + "i")
                problems << name + ": tu '" + pronominal->form(6, 2) + "'";
        }
    }
    QVERIFY(checked > 500);
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestForms::iscFollowsEachVerbsClass()
{
    // Every verb in -ire takes -isc- in the stressed persons of the present unless isc.tsv
    // lists it without (dormo), or with both forms (applaudo / applaudisco) in its order.
    QHash<QString, QString> listed;
    for (const QStringList &cells : readSourceRows(sourcePath("isc.tsv")))
        listed.insert(cells[0], cells.value(1));
    QVERIFY(listed.value("dormire") == "plain" && listed.value("applaudire") == "plain / isc");
    const QList<std::tuple<int, int, QString, QString>> cells = {
        {6, 1, "isco", "o"}, {6, 2, "isci", "i"}, {6, 3, "isce", "e"}, {6, 6, "iscono", "ono"}, {15, 1, "isca", "a"},
        {15, 3, "isca", "a"}, {15, 6, "iscano", "ano"}, {14, 2, "isci", "i"}, {14, 6, "iscano", "ano"}};
    QStringList problems;
    int withIsc = 0;
    for (const MasterVerb &v : std::as_const(m_verbs)) {
        if (!v.italian.endsWith(QLatin1String("ire")))
            continue;
        const QString stem = v.italian.chopped(3);
        const QString kind = listed.value(v.italian, "isc");
        withIsc += kind == "isc";
        for (const auto &[type, person, isc, plain] : cells) {
            if (unused(v, type, person))
                continue;
            const QStringList forms = variants(v.form(type, person));
            bool ok = false;
            if (kind == "isc")
                ok = forms == QStringList{stem + isc};
            else if (kind == "plain")
                ok = forms.size() == 1 && !forms[0].endsWith(stem + isc);
            else // both: the -isc- form first or second as listed, the other one without it
                ok = forms.size() == 2 && forms[kind == "isc / plain" ? 0 : 1] == stem + isc
                     && !forms[kind == "isc / plain" ? 1 : 0].contains(QLatin1String("isc"));
            if (!ok)
                problems << QStringLiteral("%1 (%2): type %3 person %4: '%5'").arg(v.italian, kind).arg(type).arg(person).arg(v.form(type, person));
        }
    }
    QVERIFY(withIsc > 400);
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestForms::derivedVerbsAgreeOnIsc()
{
    // A verb built on another with a prefix conjugates like it (imbrunire like brunire),
    // unless one of them has both forms or their endings are homographs.
    QHash<QString, bool> isc;
    QSet<QString> alternating;
    for (const MasterVerb &v : std::as_const(m_verbs)) {
        if (!v.italian.endsWith(QLatin1String("ire")) || v.form(6, 1).isEmpty())
            continue;
        const QStringList forms = variants(v.form(6, 1));
        if (forms.size() > 1)
            alternating.insert(v.italian);
        isc.insert(v.italian, forms[0].endsWith(QLatin1String("isco")));
    }
    QStringList problems;
    for (auto base = isc.cbegin(); base != isc.cend(); ++base) {
        for (auto derived = isc.cbegin(); derived != isc.cend(); ++derived) {
            if (derived.key() == base.key() || !derived.key().endsWith(base.key()) || derived.value() == base.value()
                || alternating.contains(base.key()) || alternating.contains(derived.key()))
                continue;
            const auto homographs = iscHomographs.constFind(base.key());
            if (homographs != iscHomographs.cend() && (homographs->isEmpty() || homographs->contains(derived.key())))
                continue;
            problems << QStringLiteral("%1 (%2) but %3 (%4)").arg(base.key(), m_master.find(base.key())->form(6, 1),
                                                                 derived.key(), m_master.find(derived.key())->form(6, 1));
        }
    }
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestForms::compoundsFollowTheirModel()
{
    // incutere as discutere: in|cusso, in|cussi, in|cutesti. Every compound of families.tsv
    // has its model's past participle and passato remoto (the first of two forms) with its
    // own prefix, and every verb ending like a family is listed in one.
    struct Family { QString model; QStringList compounds; QSet<QString> all; };
    QHash<QString, Family> families;
    for (const QStringList &cells : readSourceRows(sourcePath("families.tsv"))) {
        Family &family = families[cells[0]];
        const QStringList verbs = cells.value(2).split(u' ', Qt::SkipEmptyParts);
        if (cells.value(1) == "model")
            family.model = verbs.value(0);
        else if (cells.value(1) == "compounds")
            family.compounds << verbs;
        family.all.unite(QSet<QString>(verbs.cbegin(), verbs.cend()));
    }
    QVERIFY(families.contains("cutere") && families.contains("fare") && families.contains("durre"));
    QStringList problems;
    int compared = 0;
    for (auto family = families.cbegin(); family != families.cend(); ++family) {
        const MasterVerb *model = verb(family->model);
        if (!model) {
            problems << family->model + ": model not in the database";
            continue;
        }
        const QString modelPrefix = family->model.chopped(family.key().size());
        for (const QString &name : family->compounds) {
            const MasterVerb *compound = verb(name);
            if (!compound) // a base only used with a clitic (accorgere): its pronominal verb is checked
                compound = verb(m_pronominalOf.value(name).value(0));
            if (!compound)
                continue;
            ++compared;
            const QString prefix = name.chopped(family.key().size());
            for (int slot = 1; slot <= 4; ++slot) {
                const QList<Form> modelForms = model->ofType(4), forms = compound->ofType(4);
                const QString expected = slot <= modelForms.size() ? prefix + variants(modelForms[slot - 1].text)[0].mid(modelPrefix.size()) : QString();
                const QString actual = slot <= forms.size() ? forms[slot - 1].text : QString();
                if (actual != expected)
                    problems << QStringLiteral("%1: participle '%2', expected '%3' (as %4)").arg(name, actual, expected, family->model);
            }
            for (int person = 1; person <= 6; ++person) {
                if (unused(*compound, 12, person))
                    continue;
                const QString modelForm = variants(model->form(12, person)).value(0);
                const QString expected = modelForm.isEmpty() ? QString() : prefix + modelForm.mid(modelPrefix.size());
                QString actual = compound->form(12, person);
                if (compound->isPronominal()) // mi accorsi
                    actual = actual.section(u' ', -1);
                if (actual != expected)
                    problems << QStringLiteral("%1: passato remoto '%2', expected '%3' (as %4)").arg(name, actual, expected, family->model);
            }
        }
        // No verb of the database ends like the family without being listed in it.
        for (const MasterVerb &v : std::as_const(m_verbs)) {
            if (!v.isPronominal() && v.italian.endsWith(family.key()) && !family->all.contains(v.italian)) {
                const bool longer = std::any_of(families.keyBegin(), families.keyEnd(), [&](const QString &ending) {
                    return ending.size() > family.key().size() && v.italian.endsWith(ending);
                });
                if (!longer)
                    problems << v.italian + ": ends in -" + family.key() + " but is not in that family";
            }
        }
    }
    QVERIFY(compared > 400);
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestForms::twoStandardFormsShowInOneCell()
{
    // Every two-form cell of variants.tsv reaches the master as it is, the more common form
    // first, and a pronominal verb built on it carries its clitic on each form.
    const QHash<QString, int> typeOfTag = {{"pp", 4}, {"ind.pres", 6}, {"ind.impf", 8}, {"ind.prem", 12}, {"ind.fut", 10},
                                           {"cond.pres", 19}, {"cong.pres", 15}, {"cong.impf", 17}, {"imp", 14}};
    const QStringList proclitics = {"mi ", "ti ", "si ", "ci ", "vi ", "si "};
    QStringList problems;
    int twoForms = 0;
    for (const QStringList &cells : readSourceRows(sourcePath("variants.tsv"))) {
        const MasterVerb *v = verb(cells[0]);
        const int type = typeOfTag.value(cells.value(1));
        for (int slot = 1; slot <= cells.size() - 2; ++slot) {
            const QString &cell = cells[slot + 1];
            if (!cell.contains(separator))
                continue;
            ++twoForms;
            const int person = type == 14 ? QList<int>{2, 4, 5}[slot - 1] : slot;
            const QString actual = !v ? QString() : type == 4 ? v->ofType(4).value(slot - 1).text : v->form(type, person);
            if (actual != cell)
                problems << QStringLiteral("%1 %2 slot %3: '%4', expected '%5'").arg(cells[0], cells[1]).arg(slot).arg(actual, cell);
            if (type == 4 || type == 14)
                continue;
            for (const QString &name : m_pronominalOf.value(cells[0])) {
                QStringList expected = cell.split(separator);
                for (QString &form : expected)
                    form.prepend(proclitics[person - 1]);
                const MasterVerb *pronominal = verb(name);
                if (pronominal && pronominal->form(type, person) != expected.join(separator))
                    problems << QStringLiteral("%1 type %2 person %3: '%4'").arg(name).arg(type).arg(person).arg(pronominal->form(type, person));
            }
        }
    }
    QVERIFY(twoForms >= 20);
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestForms::encliticImperativesUseTheTruncatedForm()
{
    // The tu imperative with its clitic is one word built on the truncated form where the
    // verb has one: vattene, fatti, datti; fare's compounds do the same (assuefatti, never
    // assuefaiti), as their passato remoto in -feci shows.
    QStringList problems;
    int fareCompounds = 0;
    for (const MasterVerb &v : std::as_const(m_verbs)) {
        if (!v.hasClitic() || v.form(14, 2).isEmpty())
            continue;
        const QString tu = v.form(14, 2);
        for (const QString &form : variants(tu)) {
            if (form.contains(u'\'') || form.contains(u' ') || QRegularExpression("fai(ti|tene|tela|cela|la|ci)$").match(form).hasMatch())
                problems << v.italian + ": " + tu;
        }
        if (v.form(12, 1).endsWith(QLatin1String("feci"))) {
            ++fareCompounds;
            if (!QRegularExpression("fat(ti|tene|tela|la|ci)$").match(tu).hasMatch())
                problems << v.italian + ": " + tu;
        }
    }
    for (const auto &[name, expected] : QList<QPair<QString, QString>>{
             {"andarsene", "vattene"}, {"farsi", "fatti"}, {"darsi", "datti"}, {"assuefarsi", "assuefatti"}, {"disfarsi", "disfatti"}}) {
        const MasterVerb *v = verb(name);
        if (!v || v->form(14, 2) != expected)
            problems << name + ": '" + (v ? v->form(14, 2) : QString()) + "', expected '" + expected + "'";
    }
    QVERIFY(fareCompounds >= 3);
    QVERIFY2(problems.isEmpty(), describe(problems));
}

void TestForms::neIsElidedBeforeEssere()
{
    // Standard writing: se n'è andato, me n'ero andato; ne stays before a consonant
    // (me ne sono andato) and before the verb's own forms (me ne andai).
    const QRegularExpression unelided("\\bne [eè]");
    QStringList problems;
    int elided = 0;
    for (const MasterVerb &v : std::as_const(m_verbs)) {
        for (const Form &form : v.forms) {
            if (QList<int>{7, 9, 11, 13, 16, 18, 20}.contains(form.type)) {
                if (unelided.match(form.text).hasMatch())
                    problems << QStringLiteral("%1: '%2'").arg(v.italian, form.text);
                elided += form.text.contains(QLatin1String(" n'"));
            }
        }
        if (v.italian.endsWith(QLatin1String("sene")) && !v.form(7, 3).startsWith(QStringLiteral("se n'è ")))
            problems << v.italian + ": " + v.form(7, 3);
        if (v.italian.endsWith(QLatin1String("sene")) && !v.form(7, 1).startsWith(QLatin1String("me ne sono ")))
            problems << v.italian + ": " + v.form(7, 1);
    }
    QVERIFY(elided > 0);
    QVERIFY2(problems.isEmpty(), describe(problems));
}

QTEST_APPLESS_MAIN(TestForms)
#include "tst_forms.moc"
