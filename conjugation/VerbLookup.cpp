#include "VerbLookup.h"

#include "CrashLog.h"
#include "DatabaseQueue.h"

namespace norvella {

namespace {
VerbPtr lookUp(DatabaseQueue &queue, const QString &where, const QVariant &value)
{
    VerbPtr verb;
    queue.inDatabase([&](Database &db) {
        auto row = db.executeQuery(
                QStringLiteral("SELECT verb._id, voice_available, english, german, simplified_german, french, "
                               "simplified_french, spanish, simplified_spanish, dutch, simplified_dutch, italian, "
                               "simplified_italian, portuguese, simplified_portuguese, "
                               "(SELECT favourite._id FROM favourite WHERE favourite.verbid = verb._id LIMIT 1) "
                               "as favourite_available FROM verb WHERE ") + where + QStringLiteral(" LIMIT 1"),
                {value});
        if (!row) {
            reportDatabaseError(DatabaseErrors::ReadingVerbList, db);
        } else if (row->next()) {
            verb = verbFromRow(*row, VerbRowFields::Full);
        }
        if (row)
            row->close();
        db.close();
    });
    return verb;
}
} // namespace

VerbPtr verbByInfinitive(DatabaseQueue &queue, const QString &italian)
{
    return lookUp(queue, QStringLiteral("italian = ?"), italian);
}

VerbPtr verbById(DatabaseQueue &queue, qint64 id)
{
    return lookUp(queue, QStringLiteral("verb._id = ?"), id);
}

} // namespace norvella
