#include "VerbLookup.h"

#include "CrashLog.h"
#include "DatabaseQueue.h"

namespace norvella {

VerbPtr verbByInfinitive(DatabaseQueue &queue, const QString &italian)
{
    VerbPtr verb;
    queue.inDatabase([&](Database &db) {
        auto row = db.executeQuery(
                QStringLiteral("SELECT verb._id, voice_available, english, german, simplified_german, french, "
                               "simplified_french, spanish, simplified_spanish, dutch, simplified_dutch, italian, "
                               "simplified_italian, portuguese, simplified_portuguese, "
                               "(SELECT favourite._id FROM favourite WHERE favourite.verbid = verb._id LIMIT 1) "
                               "as favourite_available FROM verb WHERE italian = ? LIMIT 1"),
                {italian});
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

} // namespace norvella
