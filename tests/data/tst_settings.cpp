#include "NotificationCenter.h"
#include "Settings.h"
#include "Verb.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

using namespace norvella;

class SettingsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QVERIFY(m_dir.isValid());
        QFile::remove(path());
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
        // No temporary files are left beside the store.
        QCOMPARE(QDir(m_dir.path()).entryList(QDir::Files), QStringList{QStringLiteral("settings.json")});
    }

    void unreadableFileIsMovedAsideAndStoreStartsEmpty()
    {
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("{ this is not json");
        file.close();
        Settings settings(path());
        QVERIFY(!settings.contains(SettingsKeys::IncludeEnglish));
        QVERIFY(Preferences::registerFirstRunValues(settings));
        const QStringList aside = QDir(m_dir.path()).entryList({QStringLiteral("settings.json.corrupt-*")});
        QCOMPARE(aside.size(), 1);
        QCOMPARE(Settings(path()).objectForKey(SettingsKeys::IncludeEnglish), QVariant(true));
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
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(SettingsTest)
#include "tst_settings.moc"
