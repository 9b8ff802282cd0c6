#include "FormRules.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>

namespace {

const QRegularExpression iarePattern(QStringLiteral("^[a-z]+iare$"));
const QRegularExpression irePattern(QStringLiteral("^[a-zàèéìòù]+ire$"));

QStringList readStressedI(const QString &path)
{
    QStringList verbs;
    readTsv(path, [&](const QStringList &cells, int line) {
        if (cells.size() > 2 || !iarePattern.match(cells[0]).hasMatch())
            throw SourceError(QStringLiteral("%1: expected a verb in -iare [, note]").arg(sourceLine(path, line)));
        if (verbs.contains(cells[0]))
            throw SourceError(QStringLiteral("%1: '%2' listed twice").arg(sourceLine(path, line), cells[0]));
        verbs << cells[0];
    });
    return verbs;
}

QMap<QString, IscClass> readIsc(const QString &path)
{
    const QHash<QString, IscClass> classes = {{QStringLiteral("plain"), IscClass::Plain},
                                              {QStringLiteral("plain / isc"), IscClass::PlainFirst},
                                              {QStringLiteral("isc / plain"), IscClass::IscFirst}};
    QMap<QString, IscClass> verbs;
    readTsv(path, [&](const QStringList &cells, int line) {
        if (cells.size() < 2 || cells.size() > 3 || !irePattern.match(cells[0]).hasMatch()
            || !classes.contains(cells[1]))
            throw SourceError(QStringLiteral("%1: expected a verb in -ire and plain, plain / isc or isc / plain")
                                  .arg(sourceLine(path, line)));
        if (verbs.contains(cells[0]))
            throw SourceError(QStringLiteral("%1: '%2' listed twice").arg(sourceLine(path, line), cells[0]));
        verbs.insert(cells[0], classes[cells[1]]);
    });
    return verbs;
}

QList<Family> readFamilies(const QString &path)
{
    QList<Family> families;
    QHash<QString, qsizetype> byEnding;
    QSet<QString> listed;
    readTsv(path, [&](const QStringList &cells, int line) {
        const QString here = sourceLine(path, line);
        if (cells.size() < 3 || cells.size() > 4)
            throw SourceError(here + QStringLiteral(": expected ending, role, verbs [, note]"));
        const QString &ending = cells[0];
        if (!byEnding.contains(ending)) {
            byEnding.insert(ending, families.size());
            families.append({ending, {}, {}, {}, {}, {}});
        }
        Family &family = families[byEnding[ending]];
        const QStringList verbs = cells[2].split(u' ', Qt::SkipEmptyParts);
        for (const QString &verb : verbs) {
            if (!verb.endsWith(ending) || verb.size() < ending.size())
                throw SourceError(QStringLiteral("%1: '%2' does not end in -%3").arg(here, verb, ending));
            if (listed.contains(verb))
                throw SourceError(QStringLiteral("%1: '%2' listed twice").arg(here, verb));
            listed.insert(verb);
        }
        const QString &role = cells[1];
        if (role == QLatin1String("model")) {
            if (verbs.size() != 1 || !family.model.isEmpty())
                throw SourceError(QStringLiteral("%1: a family has one model").arg(here));
            family.model = verbs[0];
        } else if (role == QLatin1String("compounds")) {
            family.compounds << verbs;
        } else if (role == QLatin1String("whole")) {
            family.whole << verbs;
        } else if (role == QLatin1String("own")) {
            family.own << verbs;
        } else if (role == QLatin1String("unrelated")) {
            family.unrelated << verbs;
        } else {
            throw SourceError(QStringLiteral("%1: unknown role '%2'").arg(here, role));
        }
    });
    for (const Family &family : std::as_const(families)) {
        if (family.model.isEmpty())
            throw SourceError(QStringLiteral("%1: the family -%2 has no model").arg(QFileInfo(path).fileName(), family.ending));
    }
    return families;
}

QList<DefectiveRule> readDefective(const QString &path)
{
    QList<DefectiveRule> rules;
    QSet<QString> seen;
    readTsv(path, [&](const QStringList &cells, int line) {
        const QString here = sourceLine(path, line);
        if (cells.size() < 3 || cells.size() > 4)
            throw SourceError(here + QStringLiteral(": expected italian, tense, slots [, note]"));
        const bool finite = cells[1] == QLatin1String("finite");
        const Tense tense = tenseFromTag(cells[1]);
        if (!finite && tense == TenseCount)
            throw SourceError(QStringLiteral("%1: unknown tense '%2'").arg(here, cells[1]));
        if (seen.contains(cells[0] + u'\t' + cells[1]))
            throw SourceError(QStringLiteral("%1: %2 %3 given twice").arg(here, cells[0], cells[1]));
        seen.insert(cells[0] + u'\t' + cells[1]);
        DefectiveRule rule{cells[0], cells[1], {}, here};
        const int slotCount = finite ? 6 : tenseSize(tense);
        if (cells[2] != QLatin1String("none")) {
            for (const QString &slot : cells[2].split(u' ', Qt::SkipEmptyParts)) {
                bool isNumber = false;
                const int number = slot.toInt(&isNumber);
                if (!isNumber || number < 1 || number > slotCount)
                    throw SourceError(QStringLiteral("%1: slot '%2' is not 1..%3").arg(here, slot).arg(slotCount));
                rule.keep << number;
            }
        }
        rules << rule;
    });
    return rules;
}

QList<VariantRule> readVariants(const QString &path)
{
    QList<VariantRule> rules;
    QSet<QString> seen;
    readTsv(path, [&](const QStringList &cells, int line) {
        const QString here = sourceLine(path, line);
        const Tense tense = cells.size() >= 2 ? tenseFromTag(cells[1]) : TenseCount;
        if (tense == TenseCount)
            throw SourceError(here + QStringLiteral(": expected italian, a tag of forms.tsv and its cells"));
        if (cells.size() != 2 + tenseSize(tense))
            throw SourceError(QStringLiteral("%1: %2 needs %3 cells").arg(here, cells[1]).arg(tenseSize(tense)));
        if (seen.contains(cells[0] + u'\t' + cells[1]))
            throw SourceError(QStringLiteral("%1: %2 %3 given twice").arg(here, cells[0], cells[1]));
        seen.insert(cells[0] + u'\t' + cells[1]);
        const QStringList values = cells.mid(2);
        for (const QString &cell : values) {
            if (cell == QLatin1String("="))
                continue;
            const QStringList forms = variantsOf(cell);
            const QSet<QString> distinct(forms.cbegin(), forms.cend());
            if (distinct.size() != forms.size()
                || !std::all_of(forms.cbegin(), forms.cend(), [](const QString &form) { return isWordForm(form); }))
                throw SourceError(QStringLiteral("%1: malformed cell '%2' (forms are separated by \" / \")").arg(here, cell));
        }
        rules << VariantRule{cells[0], tense, values, here};
    });
    return rules;
}

} // namespace

FormRules readFormRules(const QString &folder)
{
    const QDir dir(folder);
    FormRules rules;
    rules.stressedI = readStressedI(dir.filePath(QStringLiteral("stressed-i.tsv")));
    rules.ire = readIsc(dir.filePath(QStringLiteral("isc.tsv")));
    rules.families = readFamilies(dir.filePath(QStringLiteral("families.tsv")));
    rules.defective = readDefective(dir.filePath(QStringLiteral("defective.tsv")));
    rules.variants = readVariants(dir.filePath(QStringLiteral("variants.tsv")));
    return rules;
}
