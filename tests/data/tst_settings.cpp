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
        QCOMPARE(Preferences::includeEnglish(settings), false);
        QCOMPARE(Preferences::searchFrom(settings), QStringLiteral("S"));
        QCOMPARE(Preferences::analyticsCollectionEnabled(settings), true);
        QCOMPARE(Preferences::audioSpeed(settings), 1.0);
        QVERIFY(Preferences::translationLanguage(settings).isEmpty());
        // Flags count only when they really are booleans; otherwise their default holds.
        settings.setString(SettingsKeys::SortByLang, QStringLiteral("false"));
        settings.setInteger(SettingsKeys::UseHistory, 0);
        settings.setInteger(SettingsKeys::IncludeConjugations, 1);
        QCOMPARE(Preferences::sortByLang(settings), true);
        QCOMPARE(Preferences::useHistory(settings), true);
        QCOMPARE(Preferences::includeConjugations(settings), false);
        settings.setBool(SettingsKeys::UseHistory, false);
        QCOMPARE(Preferences::useHistory(settings), false);
        settings.setInteger(SettingsKeys::AudioSpeed, 1);
        QCOMPARE(Preferences::audioSpeed(settings), 1.0);
        settings.setDouble(SettingsKeys::AudioSpeed, 0.25);
        QCOMPARE(Preferences::audioSpeed(settings), 0.25);
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

    void translationFollowsSettingThenPreferredLanguage_data()
    {
        QTest::addColumn<QString>("setting");
        QTest::addColumn<QStringList>("languages");
        QTest::addColumn<QString>("expected");
        const QStringList english{QStringLiteral("en-GB")};
        QTest::newRow("explicit fr") << QStringLiteral("fr") << english << QStringLiteral("manger");
        QTest::newRow("explicit tr") << QStringLiteral("tr") << english << QStringLiteral("yemek");
        QTest::newRow("explicit it") << QStringLiteral("it") << english << QStringLiteral("mangiare");
        QTest::newRow("automatic pt-BR") << QStringLiteral("") << QStringList{QStringLiteral("pt-BR"), QStringLiteral("en")} << QStringLiteral("comer (pt)");
        QTest::newRow("automatic tr gives english") << QStringLiteral("") << QStringList{QStringLiteral("tr-TR")} << QStringLiteral("to eat");
        QTest::newRow("automatic nl") << QStringLiteral("") << QStringList{QStringLiteral("nl")} << QStringLiteral("eten");
        QTest::newRow("unknown code is automatic") << QStringLiteral("xx") << QStringList{QStringLiteral("de-AT")} << QStringLiteral("essen");
    }

    void translationFollowsSettingThenPreferredLanguage()
    {
        QFETCH(QString, setting);
        QFETCH(QStringList, languages);
        QFETCH(QString, expected);
        Settings settings(path());
        if (!setting.isEmpty())
            settings.setString(SettingsKeys::TranslationLanguage, setting);
        Verb verb;
        verb.italian = QStringLiteral("mangiare");
        verb.english = QStringLiteral("to eat");
        verb.german = QStringLiteral("essen");
        verb.french = QStringLiteral("manger");
        verb.spanish = QStringLiteral("comer (es)");
        verb.portuguese = QStringLiteral("comer (pt)");
        verb.dutch = QStringLiteral("eten");
        verb.turkish = QStringLiteral("yemek");
        QCOMPARE(verb.translation(settings, languages), expected);
    }

    void typeIdsMapToTenseLists()
    {
        Verb verb;
        QCOMPARE(verb.listForType(QStringLiteral("1")), &verb.infinito);
        QCOMPARE(verb.listForType(QStringLiteral("12")), &verb.indicativoPassatoRemoto);
        QCOMPARE(verb.listForType(QStringLiteral("20")), &verb.condizionalePassato);
        QCOMPARE(verb.listForType(QStringLiteral("21")), nullptr);
        QCOMPARE(verb.listForType(QStringLiteral("07")), nullptr);
        QCOMPARE(verb.listForType(QString()), nullptr);
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
