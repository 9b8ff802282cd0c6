#include "Appearance.h"
#include "DatabaseQueue.h"
#include "NotificationCenter.h"
#include "OptionsTableViewController.h"
#include "Settings.h"
#include "Strings.h"
#include "TestSupport.h"
#include "UserMessages.h"
#include "Verb.h"
#include "VerbRepository.h"

#include <QAbstractItemModelTester>
#include <QTemporaryDir>
#include <QtTest>

using namespace norvella;
using Roles = OptionsTableViewController::Role;

class OptionsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QVERIFY(m_dir.isValid());
        m_tester.reset();
        m_controller.reset(new OptionsTableViewController);
        m_settingsPath = m_dir.filePath("settings.json");
        // The last-good copy too, or the store would come back from it.
        QFile::remove(m_settingsPath);
        QFile::remove(m_settingsPath + ".bak");
        m_settings.reset(new Settings(m_settingsPath));
        m_controller->setSettings(m_settings.get());
        m_tester.reset(new QAbstractItemModelTester(m_controller.get(),
                                                    QAbstractItemModelTester::FailureReportingMode::QtTest));
        PreferredLanguages::setOverride({"en-GB"});
        Strings::shared().selectLanguage({"en-GB"});
    }

    void cleanup() { OptionsTableViewController::setAnalyticsCollectionHandler({}); }

    void rowsShowTheStoreWithItsDefaults()
    {
        // Switches show on/off, segments their index and the other rows their detail.
        QCOMPARE(states(), QStringLiteral("off|0|1|off|1|Automatic|100%|on||on|0"));
        // Values of the wrong type read like absent ones.
        m_settings->setString(SettingsKeys::SortByLang, "no");
        m_settings->setString(SettingsKeys::IncludeConjugations, "yes");
        m_settings->setString(SettingsKeys::SearchFrom, "X");
        QCOMPARE(states(), QStringLiteral("off|1|1|off|1|Automatic|100%|on||on|0"));
        m_settings->setBool(SettingsKeys::SortByLang, false);
        m_settings->setBool(SettingsKeys::AnalyticsCollectionEnabled, false);
        m_settings->setDouble(SettingsKeys::AudioSpeed, 0.333);
        QCOMPARE(states(), QStringLiteral("off|1|0|off|1|Automatic|33%|on||off|0"));
    }

    void languageNames()
    {
        // Stored code and preferred language: the row's detail, and the language "Include English" names.
        const QList<std::tuple<QVariant, QString, QString, QString>> cases{
                {QVariant(), "pt-BR", "automatic", "portuguese"},
                {QVariant(), "tr-TR", "automatic", "english"}, // never the automatic choice
                {QVariant("fr"), "en-GB", "french", "french"},
                {QVariant("xx"), "en-GB", "english", "english"}};
        for (const auto &[stored, preferred, detail, included] : cases) {
            PreferredLanguages::setOverride({preferred});
            m_settings->setObject(SettingsKeys::TranslationLanguage, stored);
            QCOMPARE(value(5, Roles::DetailRole).toString(), Strings::text("settings.translations." + detail));
            QCOMPARE(value(0, Roles::LabelRole).toString(),
                     Strings::text("settings.includeenglish").arg(Strings::text("settings.translations." + included)));
        }
    }

    void controlsWriteAndSave()
    {
        m_controller->switchToggled(0, 0, true);
        m_controller->switchToggled(0, 3, true);
        m_controller->segmentChanged(0, 1, 1);
        m_controller->segmentChanged(0, 2, 0);
        m_controller->segmentChanged(1, 0, 1);
        // What a restart would read back.
        const Settings reread(m_settingsPath);
        QVariantList stored;
        for (const QString &key : {SettingsKeys::IncludeEnglish, SettingsKeys::IncludeConjugations, SettingsKeys::SearchFrom,
                                   SettingsKeys::SortByLang, SettingsKeys::ShowTranslated})
            stored << reread.objectForKey(key);
        QCOMPARE(stored, (QVariantList{true, true, "W", false, true}));
        m_controller->segmentChanged(0, 1, 0);

        // The history switch tells the lists; the analytics one the service.
        QList<QVariant> historyStates;
        ObserverSet observers;
        observers.add(Notifications::HistoryFeatureToggled, [&](const Notification &n) { historyStates << n.object; });
        QList<bool> collection;
        OptionsTableViewController::setAnalyticsCollectionHandler([&](bool on) { collection << on; });
        m_controller->switchToggled(2, 0, false);
        m_controller->switchToggled(3, 0, false);
        QCOMPARE(historyStates, QList<QVariant>{QVariant(false)});
        QCOMPARE(collection, QList<bool>{false});
        QCOMPARE(states(), QStringLiteral("on|0|0|on|1|Automatic|100%|off||off|0"));
    }

    // The appearance row stores its choice for the next start and tells the palette at once.
    void appearanceRowStoresAndSwitchesAtOnce()
    {
        const int row = m_controller->rowCount() - 1;
        QCOMPARE(value(row, Roles::SectionRole).toInt(), int(OptionsTableViewController::AppearanceSection));
        QCOMPARE(value(row, Roles::SectionHeaderRole).toString(), QStringLiteral("Appearance"));
        QCOMPARE(value(row, Roles::SegmentTitlesRole).toStringList(), (QStringList{"System", "Light", "Dark"}));
        QVERIFY(value(row, Roles::LastInSectionRole).toBool());

        qputenv("NORVELLA_COLOR_SCHEME", "light");
        Appearance &theme = Appearance::shared();
        theme.refreshSystemScheme();
        theme.setChoice(Preferences::appearance(*m_settings));
        QVERIFY(!theme.dark());

        m_controller->viewWillAppear();
        m_controller->segmentChanged(OptionsTableViewController::AppearanceSection, 0, 2);
        QVERIFY(theme.dark());
        QCOMPARE(Settings(m_settingsPath).objectForKey(SettingsKeys::Appearance), QVariant(QStringLiteral("dark")));
        QCOMPARE(value(row, Roles::SegmentIndexRole).toInt(), 2);
        QVERIFY(m_controller->fieldsChanged());

        m_controller->segmentChanged(OptionsTableViewController::AppearanceSection, 0, 1);
        QVERIFY(!theme.dark());
        QCOMPARE(Settings(m_settingsPath).objectForKey(SettingsKeys::Appearance), QVariant(QStringLiteral("light")));

        // "System" follows the desktop, here the override.
        qputenv("NORVELLA_COLOR_SCHEME", "dark");
        theme.refreshSystemScheme();
        QVERIFY(!theme.dark());
        m_controller->segmentChanged(OptionsTableViewController::AppearanceSection, 0, 0);
        QVERIFY(theme.dark());
        QCOMPARE(Settings(m_settingsPath).objectForKey(SettingsKeys::Appearance), QVariant(QStringLiteral("system")));

        // A segment that does not exist writes nothing; a stored value nobody knows shows "System".
        m_controller->segmentChanged(OptionsTableViewController::AppearanceSection, 0, 3);
        QCOMPARE(Settings(m_settingsPath).objectForKey(SettingsKeys::Appearance), QVariant(QStringLiteral("system")));
        m_settings->setString(SettingsKeys::Appearance, "sepia");
        QCOMPARE(value(row, Roles::SegmentIndexRole).toInt(), 0);
        m_settings->setBool(SettingsKeys::Appearance, true);
        QCOMPARE(Preferences::appearance(*m_settings), QStringLiteral("system"));
        qunsetenv("NORVELLA_COLOR_SCHEME");
        theme.setChoice(QStringLiteral("system"));
        theme.refreshSystemScheme();
    }

    void sheetChoicesAreStored()
    {
        const QString speed = OptionsTableViewController::SpeedSheet;
        QCOMPARE(m_controller->sheetChoices(speed), (QStringList{"100%", "75%", "50%", "25%"}));
        m_controller->choose(speed, 3);
        QCOMPARE(Settings(m_settingsPath).objectForKey(SettingsKeys::AudioSpeed), QVariant(0.25));
        QCOMPARE(value(6, Roles::DetailRole).toString(), QStringLiteral("25%"));
        // Normal speed is stored as an integer.
        m_controller->choose(speed, 0);
        QCOMPARE(Settings(m_settingsPath).objectForKey(SettingsKeys::AudioSpeed).metaType().id(), int(QMetaType::LongLong));

        const QString sheet = OptionsTableViewController::LanguageSheet;
        QCOMPARE(m_controller->sheetChoices(sheet).join(u','),
                 QStringLiteral("Automatic,English,Dutch,French,German,Italian,Portuguese,Spanish"));
        const QStringList codes{QString(), "en", "nl", "fr", "de", "it", "pt", "es"};
        for (int i = codes.size() - 1; i >= 0; --i) {
            m_controller->choose(sheet, i);
            const Settings reread(m_settingsPath);
            QCOMPARE(reread.contains(SettingsKeys::TranslationLanguage), !codes[i].isEmpty());
            QCOMPARE(reread.stringForKey(SettingsKeys::TranslationLanguage), codes[i]);
        }
        // Cancelling is not a choice.
        m_controller->viewWillAppear();
        m_controller->choose(sheet, 8);
        QVERIFY(!m_controller->fieldsChanged());
        // Without a delegate to tell, Done leaves the screen up.
        QVERIFY(!m_controller->close());
    }

    void clearingTheHistory()
    {
        const QString db = m_dir.filePath("verbs.db");
        QVERIFY(test::createFixtureDatabase(db, "INSERT INTO history(verbid, timestamp) VALUES (1, 10), (2, 20);"
                                                "INSERT INTO favourite(verbid) VALUES (3);"));
        auto queue = std::make_shared<DatabaseQueue>(db);
        // The queue as QML hands it over, inside its repository.
        VerbRepository repository(queue);
        m_controller->setQueueObject(&repository);
        int refreshes = 0;
        ObserverSet observers;
        observers.add(Notifications::RefreshHistory, [&](const Notification &) { ++refreshes; });
        m_controller->choose(OptionsTableViewController::ClearHistorySheet, 0);
        QCOMPARE(refreshes, 1);
        QCOMPARE(test::querySingleColumn(db, "SELECT count(*) FROM history"), QStringList{"0"});
        QCOMPARE(test::querySingleColumn(db, "SELECT count(*) FROM favourite"), QStringList{"1"});
        // Clearing is not a settings change.
        QVERIFY(!m_controller->fieldsChanged());

        // A failed clear is logged and the user told; the lists still refresh.
        QVERIFY(test::runSql(db, "DROP TABLE history;"));
        queue->inDatabase([](Database &d) { d.close(); });
        m_controller->clearHistory();
        QCOMPARE(refreshes, 2);
        QVERIFY(UserMessages::pending().contains(UserMessages::saveFailureText(1)));
    }

private:
    QVariant value(int row, int role) const { return m_controller->data(m_controller->index(row), role); }
    // What each row shows: a switch's state, a segment's index or a detail's text.
    QString states() const
    {
        QStringList shown;
        for (int row = 0; row < m_controller->rowCount(); ++row) {
            const QString type = value(row, Roles::CellTypeRole).toString();
            shown << (type == "switch" ? (value(row, Roles::CheckedRole).toBool() ? "on" : "off")
                      : type == "segment" ? value(row, Roles::SegmentIndexRole).toString()
                                          : value(row, Roles::DetailRole).toString());
        }
        return shown.join(u'|');
    }

    QTemporaryDir m_dir;
    QString m_settingsPath;
    std::unique_ptr<Settings> m_settings;
    std::unique_ptr<OptionsTableViewController> m_controller;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
};

QTEST_GUILESS_MAIN(OptionsTest)
#include "tst_options.moc"
