#include "ListTestSupport.h"

#include "Database.h"
#include "TestSupport.h"

#include <QFile>

namespace norvella::test {

QString listFixtureSql()
{
    // 6: an infinitive whose folded form starts upper-case; 7: an empty sort
    // column; 8: an accented Portuguese initial; 9: a verb with "_" and "%"
    // in its translation, for wildcard searches.
    return QStringLiteral(
            "INSERT INTO verb(_id, italian, simplified_italian, english, german, simplified_german, french, "
            "simplified_french, spanish, simplified_spanish, dutch, simplified_dutch, portuguese, simplified_portuguese, "
            "voice_available) VALUES "
            "(6, 'Bere', 'Bere', 'to drink', 'trinken', 'trinken', 'boire', 'boire', 'beber', 'beber', 'drinken', "
            "'drinken', 'beber', 'beber', 1), "
            "(7, '', '', 'nothing', NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, 0), "
            "(8, 'amare', 'amare', 'to love', 'lieben', 'lieben', 'aimer', 'aimer', 'amar', 'amar', 'liefhebben', "
            "'liefhebben', 'ámar', 'amar', 0), "
            "(9, 'cantare', 'cantare', 'to sing_100%', 'singen', 'singen', 'chanter', 'chanter', 'cantar', 'cantar', "
            "'zingen', 'zingen', 'cantar', 'cantar', 0);");
}

bool ListFixture::create(const QString &extraSql)
{
    if (!dir.isValid())
        return false;
    databasePath = dir.filePath(QStringLiteral("verbs.db"));
    if (!createFixtureDatabase(databasePath, listFixtureSql() + extraSql))
        return false;
    settings = std::make_unique<Settings>(dir.filePath(QStringLiteral("settings.json")));
    CrashLog::setLogFilePath(dir.filePath(QStringLiteral("norvella.log")));
    PreferredLanguages::setOverride({QStringLiteral("en-GB")});
    queue = std::make_shared<DatabaseQueue>(databasePath);
    return true;
}

QString ListFixture::log() const
{
    return QString::fromUtf8(readFile(dir.filePath(QStringLiteral("norvella.log"))));
}

bool ListFixture::breakSchema(const QString &sql)
{
    if (!runSql(databasePath, sql))
        return false;
    queue->inDatabase([](Database &db) { db.close(); });
    return true;
}

QStringList roleColumn(const QAbstractItemModel &model, const QByteArray &role)
{
    const int roleId = model.roleNames().key(role, -1);
    QStringList values;
    for (int row = 0; row < model.rowCount(); ++row)
        values << model.data(model.index(row, 0), roleId).toString();
    return values;
}

QStringList italianColumn(const QAbstractItemModel &model)
{
    return roleColumn(model, "italian");
}

FavouriteNotifications::FavouriteNotifications()
{
    observers.add(Notifications::VerbFavouriteToggled, [this](const Notification &n) { posted.append(n); });
}

} // namespace norvella::test
