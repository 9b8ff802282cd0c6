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
            verb = std::make_shared<Verb>();
            verb->id = row->longLongIntForColumn(QStringLiteral("_id"));
            verb->voice_available = row->boolForColumn(QStringLiteral("voice_available"));
            verb->english = row->stringForColumn(QStringLiteral("english"));
            verb->german = row->stringForColumn(QStringLiteral("german"));
            verb->simplified_german = row->stringForColumn(QStringLiteral("simplified_german"));
            verb->french = row->stringForColumn(QStringLiteral("french"));
            verb->simplified_french = row->stringForColumn(QStringLiteral("simplified_french"));
            verb->spanish = row->stringForColumn(QStringLiteral("spanish"));
            verb->simplified_spanish = row->stringForColumn(QStringLiteral("simplified_spanish"));
            verb->dutch = row->stringForColumn(QStringLiteral("dutch"));
            verb->simplified_dutch = row->stringForColumn(QStringLiteral("simplified_dutch"));
            verb->italian = row->stringForColumn(QStringLiteral("italian"));
            verb->simplified_italian = row->stringForColumn(QStringLiteral("simplified_italian"));
            verb->portuguese = row->stringForColumn(QStringLiteral("portuguese"));
            verb->simplified_portuguese = row->stringForColumn(QStringLiteral("simplified_portuguese"));
            verb->isFavourite = !row->columnIsNull(QStringLiteral("favourite_available"));
        }
        if (row)
            row->close();
        db.close();
    });
    return verb;
}

} // namespace norvella
