#include "IrregularMarks.h"

#include "CrashLog.h"
#include "Database.h"
#include "Strings.h"

#include <QStringList>

#include <atomic>

namespace norvella::IrregularMarks {

namespace {
const QString separator = QStringLiteral(" / ");
// The master keeps one bit per variant in an INTEGER; no cell has more than a few.
constexpr int MaxVariants = 30;

void logOnce(const Database &db)
{
    static std::atomic_bool logged = false;
    if (!logged.exchange(true))
        CrashLog::log(errorReport("Irregular marks are unavailable, forms shown unmarked: %@ (%d)",
                                  db.lastErrorMessage(), db.lastErrorCode()));
}
} // namespace

QList<Variant> variants(const QString &cell, int mask)
{
    QList<Variant> result;
    const QStringList parts = cell.split(separator);
    for (int i = 0; i < parts.size(); ++i)
        result.append({parts[i], i < MaxVariants && (mask & (1 << i)) != 0});
    return result;
}

QString starred(const QString &cell, int mask)
{
    QStringList parts;
    for (const Variant &variant : variants(cell, mask))
        parts << (variant.irregular ? variant.text + QChar(Star) : variant.text);
    return parts.join(separator);
}

bool read(Database &db, Verb &verb, ConjugationList &formsInOrder)
{
    verb.pattern = {};
    auto marks = db.executeQuery(QStringLiteral("SELECT irregular FROM conjugation WHERE verbid = ? "
                                                "ORDER BY conj_order"),
                                 {verb.id});
    if (!marks) {
        logOnce(db);
        return false;
    }
    QList<int> masks;
    while (marks->next())
        masks.append(marks->intForColumn(QStringLiteral("irregular")));
    marks->close();
    // Both statements walk the same rows in the same order; a count that
    // differs means the copy changed between them, and no mark is better than a wrong one.
    if (masks.size() == formsInOrder.size()) {
        for (int i = 0; i < masks.size(); ++i)
            formsInOrder[i].irregular = masks[i];
    }

    auto row = db.executeQuery(QStringLiteral("SELECT verb.pattern AS pattern, verb.model_id AS model_id, "
                                              "model.italian AS model FROM verb LEFT OUTER JOIN verb AS model "
                                              "ON model._id = verb.model_id WHERE verb._id = ?"),
                               {verb.id});
    if (!row) {
        logOnce(db);
        return false;
    }
    if (row->next()) {
        verb.pattern.pattern = row->stringForColumn(QStringLiteral("pattern"));
        verb.pattern.modelItalian = row->stringForColumn(QStringLiteral("model"));
        verb.pattern.modelId = verb.pattern.modelItalian.isEmpty() ? -1
                                                                    : row->longLongIntForColumn(QStringLiteral("model_id"));
    }
    row->close();
    return true;
}

QString patternText(const VerbPattern &pattern)
{
    if (!pattern.modelItalian.isEmpty())
        return Strings::text(QStringLiteral("conjugation.pattern.like")).arg(pattern.modelItalian);
    const QString &kind = pattern.pattern;
    if (kind == QLatin1String("are") || kind == QLatin1String("ere") || kind == QLatin1String("ire"))
        return Strings::text(QStringLiteral("conjugation.pattern.regular")).arg(QLatin1Char('-') + kind);
    if (kind == QLatin1String("isc"))
        return Strings::text(QStringLiteral("conjugation.pattern.regular")).arg(QStringLiteral("-ire, -isc-"));
    if (kind == QLatin1String("irregular"))
        return Strings::text(QStringLiteral("conjugation.pattern.irregular"));
    return {};
}

PatternLine patternLine(const VerbPattern &pattern)
{
    PatternLine line;
    line.sentence = patternText(pattern);
    // A character no translation holds shows where the language puts the model.
    const QChar slot(0xFFFC);
    const QString around = Strings::text(QStringLiteral("conjugation.pattern.like")).arg(slot);
    const qsizetype at = around.indexOf(slot);
    if (pattern.modelItalian.isEmpty() || at < 0) {
        line.before = line.sentence;
        return line;
    }
    line.before = around.left(at);
    line.model = pattern.modelItalian;
    line.after = around.mid(at + 1);
    return line;
}

} // namespace norvella::IrregularMarks
