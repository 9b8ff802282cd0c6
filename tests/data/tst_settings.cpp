#include "CrashLog.h"
#include "NotificationCenter.h"
#include "PermissionsEnforced.h"
#include "Settings.h"
#include "TestSupport.h"
#include "Verb.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QtTest>

#include <optional>

using namespace norvella;
using test::readFile;
using test::writeFile;

namespace {
QStringList keysIn(const QString &path)
{
    return QJsonDocument::fromJson(readFile(path)).object().keys();
}
} // namespace

class SettingsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid() && m_logDir.isValid());
        CrashLog::setLogFilePath(m_logDir.filePath(QStringLiteral("norvella.log")));
    }

    void init()
    {
        QFile::setPermissions(m_dir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        const QDir dir(m_dir.path());
        for (const QFileInfo &entry : dir.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden)) {
            if (entry.isDir())
                QDir(entry.filePath()).removeRecursively();
            else
                QFile::remove(entry.filePath());
        }
        takeLog();
    }

    void typesSurviveARestart()
    {
        {
            Settings settings(path());
            settings.setBool(QStringLiteral("b"), true);
            settings.setInteger(QStringLiteral("one"), 1);
            settings.setDouble(QStringLiteral("threeQuarters"), 0.75);
            // A whole double must not come back as an integer.
            settings.setDouble(QStringLiteral("wholeDouble"), 2.0);
            settings.setString(QStringLiteral("s"), QStringLiteral("W"));
            settings.setInteger(QStringLiteral("big"), Q_INT64_C(9007199254740993));
        }
        Settings restarted(path());
        QCOMPARE(restarted.objectForKey(QStringLiteral("b")).metaType().id(), int(QMetaType::Bool));
        QCOMPARE(restarted.objectForKey(QStringLiteral("one")).metaType().id(), int(QMetaType::LongLong));
        QCOMPARE(restarted.objectForKey(QStringLiteral("wholeDouble")).metaType().id(), int(QMetaType::Double));
        QCOMPARE(restarted.doubleForKey(QStringLiteral("threeQuarters")), 0.75);
        QCOMPARE(restarted.integerForKey(QStringLiteral("big")), Q_INT64_C(9007199254740993));
        QCOMPARE(restarted.stringForKey(QStringLiteral("s")), QStringLiteral("W"));
    }

    void everyChangeIsOnDiskAtOnce()
    {
        Settings settings(path());
        settings.setBool(SettingsKeys::UseHistory, false);
        QCOMPARE(Settings(path()).objectForKey(SettingsKeys::UseHistory), QVariant(false));
        settings.removeObject(SettingsKeys::UseHistory);
        QVERIFY(!Settings(path()).contains(SettingsKeys::UseHistory));
        // Beside the store only its last-good copy, the store before the last change:
        // no temporary file, no lock left behind.
        QCOMPARE(QDir(m_dir.path()).entryList(QDir::Files | QDir::Hidden),
                 (QStringList{QStringLiteral("settings.json"), QStringLiteral("settings.json.bak")}));
        QCOMPARE(keysIn(backupPath()), QStringList{SettingsKeys::UseHistory});
    }

    // A counter changed at every tap reaches the disk a moment later, with
    // the other changes of that moment, and at the latest when the store goes.
    void countersAreWrittenSoonNotAtOnce()
    {
        {
            Settings settings(path());
            settings.setIntegerSoon(SettingsKeys::NumberOfVerbsViewed, 7);
            QCOMPARE(settings.integerForKey(SettingsKeys::NumberOfVerbsViewed), 7);
            QVERIFY(!Settings(path()).contains(SettingsKeys::NumberOfVerbsViewed));
            QTRY_COMPARE_WITH_TIMEOUT(Settings(path()).integerForKey(SettingsKeys::NumberOfVerbsViewed), 7,
                                      Settings::SoonSaveDelayMs * 3);
            settings.setIntegerSoon(SettingsKeys::NumberOfVerbsViewed, 8);
            settings.setBool(SettingsKeys::UseHistory, false);
            QCOMPARE(Settings(path()).integerForKey(SettingsKeys::NumberOfVerbsViewed), 8);
            settings.setIntegerSoon(SettingsKeys::NumberOfVerbsViewed, 9);
        }
        QCOMPARE(Settings(path()).integerForKey(SettingsKeys::NumberOfVerbsViewed), 9);
    }

    // Whatever happened to the file, the store reads what it can, says so, and keeps one damaged copy.
    void damagedFileFallsBackToTheLastGoodCopy_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::addColumn<bool>("withBackup");
        for (const char *damage : {"empty", "truncated", "garbage", "not an object", "wrong types", "directory", "unreadable"}) {
            QTest::addRow("%s, last-good copy", damage) << QString::fromLatin1(damage) << true;
            QTest::addRow("%s, nothing else", damage) << QString::fromLatin1(damage) << false;
        }
    }

    void damagedFileFallsBackToTheLastGoodCopy()
    {
        QFETCH(QString, damage);
        QFETCH(bool, withBackup);
        {
            Settings settings(path());
            settings.setBool(SettingsKeys::UseHistory, false);
            settings.setString(SettingsKeys::SearchFrom, QStringLiteral("W"));
        }
        if (!withBackup)
            QVERIFY(QFile::remove(backupPath()));
        const QByteArray good = readFile(path());
        std::optional<test::PermissionsEnforced> enforced;
        if (damage == QLatin1String("empty"))
            QVERIFY(writeFile(path(), {}));
        else if (damage == QLatin1String("truncated"))
            QVERIFY(writeFile(path(), good.left(good.size() / 2)));
        else if (damage == QLatin1String("garbage"))
            QVERIFY(writeFile(path(), QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16)));
        else if (damage == QLatin1String("not an object"))
            QVERIFY(writeFile(path(), R"([{"type": "bool", "value": false}])"));
        else if (damage == QLatin1String("wrong types"))
            QVERIFY(writeFile(path(), R"({"UseHistory": {"type": "bool", "value": "no"},
                                          "SearchFrom": {"type": "string", "value": "W"}, "SortByLang": 7})"));
        else if (damage == QLatin1String("directory"))
            QVERIFY(QFile::remove(path()) && QDir().mkpath(path() + QStringLiteral("/inside")));
        else if (damage == QLatin1String("unreadable")) {
            enforced.emplace();
            if (!enforced->active())
                QSKIP("cannot make a file unreadable for this user");
            QVERIFY(QFile::setPermissions(path(), {}));
        }

        Settings settings(path());
        // A file with some good entries gives them up as well.
        const bool salvaged = damage == QLatin1String("wrong types");
        QCOMPARE(settings.objectForKey(SettingsKeys::UseHistory), withBackup ? QVariant(false) : QVariant());
        QCOMPARE(settings.objectForKey(SettingsKeys::SearchFrom), salvaged ? QVariant(QStringLiteral("W")) : QVariant());
        QVERIFY(!settings.contains(SettingsKeys::SortByLang));
        const QByteArray log = takeLog();
        QVERIFY2(log.contains("is damaged"), log.constData());
        QVERIFY2(log.contains(withBackup ? "restored from the last good copy"
                              : salvaged ? "values that could still be read"
                                         : "starting with default settings"),
                 log.constData());
        QCOMPARE(corruptCopies().size(), 1);
        // What could be recovered is written back at once.
        QCOMPARE(Settings(path()).objectForKey(SettingsKeys::SearchFrom), settings.objectForKey(SettingsKeys::SearchFrom));

        // Damaged again later, the store goes back to the file as it was before its last change.
        settings.setBool(SettingsKeys::SortByLang, false);
        settings.setInteger(SettingsKeys::NumberOfVerbsViewed, 1);
        enforced.reset();
        QVERIFY(writeFile(path(), "{\"SortByLang\": {\"type\": \"bo"));
        Settings again(path());
        QCOMPARE(again.objectForKey(SettingsKeys::SortByLang), QVariant(false));
        QCOMPARE(again.objectForKey(SettingsKeys::UseHistory), settings.objectForKey(SettingsKeys::UseHistory));
        // Only the newest damaged copy is kept.
        QCOMPARE(corruptCopies().size(), 1);
        QCOMPARE(readFile(m_dir.filePath(corruptCopies().constFirst())), QByteArray("{\"SortByLang\": {\"type\": \"bo"));
    }

    void missingFileIsTakenFromTheLastGoodCopy()
    {
        {
            Settings settings(path());
            settings.setBool(SettingsKeys::UseHistory, false);
            settings.setString(SettingsKeys::SearchFrom, QStringLiteral("W"));
        }
        QVERIFY(QFile::remove(path()));
        Settings settings(path());
        QCOMPARE(settings.objectForKey(SettingsKeys::UseHistory), QVariant(false));
        QVERIFY(takeLog().contains("is missing; using the last good copy"));
        QCOMPARE(keysIn(path()), QStringList{SettingsKeys::UseHistory});
        QVERIFY(corruptCopies().isEmpty());
    }

    // Two windows, two stores, one file: a save writes only its own changes on top of the file.
    void twoStoresOnOneFileKeepEachOthersChanges()
    {
        Settings first(path());
        Settings second(path());
        first.setBool(SettingsKeys::UseHistory, false);
        second.setInteger(SettingsKeys::NumberOfVerbsViewed, 3);
        QCOMPARE(second.objectForKey(SettingsKeys::UseHistory), QVariant(false));
        first.removeObject(SettingsKeys::UseHistory);
        second.setString(SettingsKeys::SearchFrom, QStringLiteral("W"));
        {
            Settings third(path());
            QVERIFY(!third.contains(SettingsKeys::UseHistory));
            QCOMPARE(third.integerForKey(SettingsKeys::NumberOfVerbsViewed), 3);
            QCOMPARE(third.stringForKey(SettingsKeys::SearchFrom), QStringLiteral("W"));
        }

        // While another process holds the lock, the change waits in memory for the next save.
        {
            QLockFile held(path() + QStringLiteral(".lock"));
            QVERIFY(held.tryLock(0));
            first.setBool(SettingsKeys::SortByLang, false);
            QCOMPARE(first.objectForKey(SettingsKeys::SortByLang), QVariant(false));
            QVERIFY(!keysIn(path()).contains(SettingsKeys::SortByLang));
            QVERIFY(takeLog().contains("Unable to save settings " + path().toUtf8()));
        }
        QVERIFY(first.synchronize());
        QCOMPARE(Settings(path()).objectForKey(SettingsKeys::SortByLang), QVariant(false));

        second.clear();
        QVERIFY(keysIn(path()).isEmpty());
    }

    void readOnlyFolderKeepsValuesInMemory()
    {
        Settings(path()).setBool(SettingsKeys::UseHistory, false);
        const QByteArray before = readFile(path());
        test::PermissionsEnforced enforced;
        if (!enforced.active())
            QSKIP("cannot make a folder read-only for this user");
        auto restore = qScopeGuard([&] {
            QFile::setPermissions(m_dir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        });
        QVERIFY(QFile::setPermissions(m_dir.path(), QFile::ReadOwner | QFile::ExeOwner));

        Settings settings(path());
        settings.setString(SettingsKeys::SearchFrom, QStringLiteral("W"));
        settings.setInteger(SettingsKeys::NumberOfVerbsViewed, 2);
        settings.removeObject(SettingsKeys::UseHistory);
        QCOMPARE(settings.stringForKey(SettingsKeys::SearchFrom), QStringLiteral("W"));
        QCOMPARE(settings.integerForKey(SettingsKeys::NumberOfVerbsViewed), 2);
        QVERIFY(!settings.contains(SettingsKeys::UseHistory));
        QCOMPARE(takeLog().count("Unable to save settings"), 1);
        QCOMPARE(readFile(path()), before);

        // Once the folder can be written again, the next save writes every change made meanwhile.
        restore.dismiss();
        QVERIFY(QFile::setPermissions(m_dir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QVERIFY(settings.synchronize());
        Settings reread(path());
        QCOMPARE(reread.stringForKey(SettingsKeys::SearchFrom), QStringLiteral("W"));
        QCOMPARE(reread.integerForKey(SettingsKeys::NumberOfVerbsViewed), 2);
        QVERIFY(!reread.contains(SettingsKeys::UseHistory));
    }

    void absentKeysReadAsTheirRules()
    {
        Settings settings(path());
        // Flags count only when they really are booleans; otherwise their default holds.
        settings.setString(SettingsKeys::SortByLang, QStringLiteral("false"));
        settings.setInteger(SettingsKeys::UseHistory, 0);
        settings.setInteger(SettingsKeys::IncludeConjugations, 1);
        QCOMPARE(Preferences::sortByLang(settings), true);
        QCOMPARE(Preferences::useHistory(settings), true);
        QCOMPARE(Preferences::includeConjugations(settings), false);
        settings.setBool(SettingsKeys::UseHistory, false);
        QCOMPARE(Preferences::useHistory(settings), false);
        // Normal speed is stored as an integer, the others as fractions.
        settings.setInteger(SettingsKeys::AudioSpeed, 1);
        QCOMPARE(Preferences::audioSpeed(settings), 1.0);
    }

    void firstRunValuesAreWrittenOnce()
    {
        Settings settings(path());
        QVERIFY(Preferences::registerFirstRunValues(settings));
        QCOMPARE(settings.objectForKey(SettingsKeys::SearchFrom), QVariant(QStringLiteral("S")));
        QCOMPARE(settings.objectForKey(SettingsKeys::SortByLang), QVariant(true));
        QCOMPARE(settings.objectForKey(SettingsKeys::ShowTranslated), QVariant(false));
        QCOMPARE(settings.objectForKey(SettingsKeys::SearchConjugations), QVariant(false));

        // One write for all five: the last-good copy is the store as it was before them.
        const QString earlier = m_dir.filePath(QStringLiteral("earlier.json"));
        Settings existing(earlier);
        existing.setInteger(SettingsKeys::AudioSpeed, 1);
        QVERIFY(Preferences::registerFirstRunValues(existing));
        QCOMPARE(keysIn(earlier + QStringLiteral(".bak")), QStringList{SettingsKeys::AudioSpeed});
        QCOMPARE(keysIn(earlier).size(), 6);

        Settings onlyIncludeEnglish(m_dir.filePath(QStringLiteral("other.json")));
        onlyIncludeEnglish.setBool(SettingsKeys::IncludeEnglish, false);
        QVERIFY(!Preferences::registerFirstRunValues(onlyIncludeEnglish));
        QVERIFY(!onlyIncludeEnglish.contains(SettingsKeys::SearchFrom));
        QCOMPARE(Preferences::searchFrom(onlyIncludeEnglish), QStringLiteral("S"));
    }

    void translationFollowsSettingThenPreferredLanguage()
    {
        Verb verb;
        verb.english = QStringLiteral("to eat");
        verb.german = QStringLiteral("essen");
        verb.french = QStringLiteral("manger");
        verb.spanish = QStringLiteral("comer (es)");
        verb.portuguese = QStringLiteral("comer (pt)");
        verb.turkish = QStringLiteral("yemek");
        // The stored language, then the preferred ones; Turkish only when chosen, unknown codes are automatic.
        const QList<std::tuple<QString, QStringList, QString>> cases{
                {"fr", {"en-GB"}, "manger"}, {"tr", {"en-GB"}, "yemek"}, {"", {"pt-BR", "en"}, "comer (pt)"},
                {"", {"tr-TR"}, "to eat"}, {"xx", {"de-AT"}, "essen"}};
        for (const auto &[setting, languages, expected] : cases) {
            Settings settings(path());
            settings.setObject(SettingsKeys::TranslationLanguage, setting.isEmpty() ? QVariant() : QVariant(setting));
            QCOMPARE(verb.translation(settings, languages), expected);
        }
    }

    void observersCanLeaveWhileANotificationIsDelivered()
    {
        auto &center = NotificationCenter::defaultCenter();
        int first = 0, second = 0;
        NotificationCenter::Token secondToken = 0;
        const auto firstToken = center.addObserver(Notifications::VerbViewed, [&](const Notification &n) {
            ++first;
            QCOMPARE(n.userInfo.value(QStringLiteral("k")).toString(), QStringLiteral("v"));
            center.removeObserver(secondToken);
        });
        secondToken = center.addObserver(Notifications::VerbViewed, [&](const Notification &) { ++second; });
        center.post(Notifications::VerbViewed, QVariant(), {{QStringLiteral("k"), QStringLiteral("v")}});
        QCOMPARE(first, 1);
        QCOMPARE(second, 0);
        // An observer set takes its observers with it.
        {
            ObserverSet scoped;
            scoped.add(Notifications::RefreshHistory, [&](const Notification &) { ++second; });
            center.post(Notifications::RefreshHistory);
        }
        center.post(Notifications::RefreshHistory);
        QCOMPARE(second, 1);
        center.removeObserver(firstToken);
        QCOMPARE(center.observerCount(Notifications::VerbViewed), 0);
    }

private:
    QString path() const { return m_dir.filePath(QStringLiteral("settings.json")); }
    QString backupPath() const { return path() + QStringLiteral(".bak"); }
    QStringList corruptCopies() const
    {
        return QDir(m_dir.path()).entryList({QStringLiteral("settings.json.corrupt-*")}, QDir::AllEntries | QDir::Hidden);
    }
    QByteArray takeLog()
    {
        const QByteArray log = readFile(CrashLog::logFilePath());
        QFile::remove(CrashLog::logFilePath());
        return log;
    }
    QTemporaryDir m_dir;
    QTemporaryDir m_logDir;
};

QTEST_GUILESS_MAIN(SettingsTest)
#include "tst_settings.moc"
