#include "ConjugationText.h"

#include "FormAnalysis.h"
#include "IrregularMarks.h"

#include <QStringList>

#include <sqlite3.h>

namespace norvella {

namespace {

QString column(sqlite3_stmt *statement, int index)
{
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(statement, index));
    return text ? QString::fromUtf8(text, sqlite3_column_bytes(statement, index)) : QString();
}

} // namespace

QString patternSummary(const QString &pattern, const QString &model)
{
    if (!model.isEmpty())
        return QStringLiteral("conjugates like ") + model;
    if (pattern == QLatin1String("isc"))
        return QStringLiteral("regular (-ire, -isc-)");
    if (pattern == QLatin1String("are") || pattern == QLatin1String("ere") || pattern == QLatin1String("ire"))
        return QStringLiteral("regular (-%1)").arg(pattern);
    return QStringLiteral("irregular");
}

ConjugationText conjugationText(sqlite3 *db, const QString &infinitive)
{
    ConjugationText result;
    sqlite3_stmt *verb = nullptr;
    if (sqlite3_prepare_v2(db, "SELECT v._id, v.italian, v.pattern, m.italian FROM verb v"
                               " LEFT JOIN verb m ON m._id = v.model_id"
                               " WHERE v.simplified_italian = ? ORDER BY v.italian != ? LIMIT 1",
                           -1, &verb, nullptr) != SQLITE_OK) {
        result.error = QString::fromUtf8(sqlite3_errmsg(db));
        return result;
    }
    const QByteArray folded = FormAnalysis::fold(infinitive).toUtf8();
    const QByteArray exact = infinitive.trimmed().toUtf8();
    sqlite3_bind_text(verb, 1, folded.constData(), int(folded.size()), SQLITE_TRANSIENT);
    sqlite3_bind_text(verb, 2, exact.constData(), int(exact.size()), SQLITE_TRANSIENT);
    const int found = sqlite3_step(verb);
    if (found != SQLITE_ROW) {
        if (found != SQLITE_DONE)
            result.error = QString::fromUtf8(sqlite3_errmsg(db));
        sqlite3_finalize(verb);
        return result;
    }
    const qint64 id = sqlite3_column_int64(verb, 0);
    QString text = column(verb, 1) + QStringLiteral(": ") + patternSummary(column(verb, 2), column(verb, 3)) + u'\n';
    sqlite3_finalize(verb);

    sqlite3_stmt *forms = nullptr;
    if (sqlite3_prepare_v2(db, "SELECT c.conjugation_type_id, p.pronoun, c.verb, c.irregular FROM conjugation c"
                               " LEFT JOIN pronoun p ON p._id = c.pronounid WHERE c.verbid = ? ORDER BY c.conj_order",
                           -1, &forms, nullptr) != SQLITE_OK) {
        result.error = QString::fromUtf8(sqlite3_errmsg(db));
        return result;
    }
    sqlite3_bind_int64(forms, 1, id);
    int currentType = 0;
    bool anyIrregular = false;
    int rc;
    while ((rc = sqlite3_step(forms)) == SQLITE_ROW) {
        const int type = sqlite3_column_int(forms, 0);
        if (type != currentType) {
            currentType = type;
            text += u'\n' + FormAnalysis::moodTag(type) + u' ' + FormAnalysis::tenseTag(type) + u'\n';
        }
        const QString pronoun = column(forms, 1);
        const int mask = sqlite3_column_int(forms, 3);
        anyIrregular = anyIrregular || mask;
        text += QStringLiteral("  ") + (pronoun.isEmpty() ? QString() : pronoun + u'\t') + IrregularMarks::starred(column(forms, 2), mask)
              + u'\n';
    }
    sqlite3_finalize(forms);
    if (rc != SQLITE_DONE) {
        result.error = QString::fromUtf8(sqlite3_errmsg(db));
        return result;
    }
    if (anyIrregular)
        text += QStringLiteral("\n* irregular form\n");
    result.found = true;
    result.text = text;
    return result;
}

} // namespace norvella
