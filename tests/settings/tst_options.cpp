#include "DatabaseQueue.h"
#include "DatabaseQueueRef.h"
#include "DesktopMail.h"
#include "NotificationCenter.h"
#include "OptionsTableViewController.h"
#include "Settings.h"
#include "Strings.h"
#include "TestSupport.h"
#include "Verb.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace norvella;
using Roles = OptionsTableViewController::Role;

namespace {
// A QML-like delegate: records the calls it receives.
class Delegate : public QObject
{
    Q_OBJECT
public:
    QList<bool> calls;
    Q_INVOKABLE void optionsDidClose(bool fieldsChanged) { calls << fieldsChanged; }
};
} // namespace

class OptionsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QVERIFY(m_dir.isValid());
        m_settingsPath = m_dir.filePath("settings.json");
        QFile::remove(m_settingsPath);
        m_settings.reset(new Settings(m_settingsPath));
        m_controller.reset(new OptionsTableViewController);
        m_controller->setSettings(m_settings.get());
        m_tester.reset(new QAbstractItemModelTester(m_controller.get(),
                                                    QAbstractItemModelTester::FailureReportingMode::QtTest));
        PreferredLanguages::setOverride({"en-GB"});
        Strings::shared().selectLanguage({"en-GB"});
    }

    void cleanup()
    {
        m_tester.reset();
        m_controller.reset();
        OptionsTableViewController::setAnalyticsCollectionHandler({});
        OptionsTableViewController::setAnalyticsEventHandler({});
    }

    void layoutIsFourSectionsOfShrinkingLength()
    {
        QCOMPARE(OptionsTableViewController::numberOfRowsInSection(1), 3);
        QCOMPARE(OptionsTableViewController::numberOfRowsInSection(4), 0);
        QCOMPARE(m_controller->rowCount(), 10);
        QStringList types;
        for (int row = 0; row < 10; ++row)
            types << value(row, Roles::CellTypeRole).toString();
        QCOMPARE(types, (QStringList{"switch", "segment", "segment", "switch", "segment", "detail", "detail",
                                     "switch", "detail", "switch"}));
        QCOMPARE(value(4, Roles::SectionRole).toInt(), 1);
        QVERIFY(value(4, Roles::FirstInSectionRole).toBool());
        QVERIFY(value(6, Roles::LastInSectionRole).toBool());
        QVERIFY(!value(5, Roles::LastInSectionRole).toBool());
    }

    void headersAndFooters()
    {
        QCOMPARE(m_controller->sectionHeader(0), Strings::text("settings.search"));
        QCOMPARE(m_controller->sectionHeader(3), Strings::text("settings.analytics"));
        QCOMPARE(m_controller->sectionFooter(0), Strings::text("settings.conjugations.info"));
        QVERIFY(m_controller->sectionFooter(1).isEmpty());
        QCOMPARE(m_controller->sectionFooter(2), Strings::text("settings.history_info").arg(50));
        QCOMPARE(m_controller->sectionFooter(3), Strings::text("settings.analytics.info"));
        QCOMPARE(value(7, Roles::SectionFooterRole).toString(), m_controller->sectionFooter(2));
    }

    void rowsShowTheStoreWithItsDefaults()
    {
        QVERIFY(!m_settings->contains(SettingsKeys::IncludeEnglish));
        QCOMPARE(states(), QStringLiteral("off|0|1|off|1|Automatic|100%|on||on"));
        // Values of the wrong type read like absent ones.
        m_settings->setString(SettingsKeys::SortByLang, "no");
        m_settings->setString(SettingsKeys::UseHistory, "no");
        m_settings->setString(SettingsKeys::IncludeConjugations, "yes");
        m_settings->setString(SettingsKeys::ShowTranslated, "no");
        m_settings->setString(SettingsKeys::SearchFrom, "X");
        QCOMPARE(states(), QStringLiteral("off|1|1|off|1|Automatic|100%|on||on"));
        m_settings->setBool(SettingsKeys::ShowTranslated, false);
        m_settings->setBool(SettingsKeys::SortByLang, false);
        m_settings->setBool(SettingsKeys::AnalyticsCollectionEnabled, false);
        QCOMPARE(states(), QStringLiteral("off|1|0|off|0|Automatic|100%|on||off"));
    }

    void languageNames_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<QString>("detailKey");
        QTest::addColumn<QString>("includeKey");
        const QString automatic = "settings.translations.automatic";
        QTest::newRow("absent") << QVariant() << automatic << "settings.translations.english";
        QTest::newRow("en") << QVariant("en") << "settings.translations.english" << "settings.translations.english";
        QTest::newRow("fr") << QVariant("fr") << "settings.translations.french" << "settings.translations.french";
        QTest::newRow("de") << QVariant("de") << "settings.translations.german" << "settings.translations.german";
        QTest::newRow("es") << QVariant("es") << "settings.translations.spanish" << "settings.translations.spanish";
        QTest::newRow("pt") << QVariant("pt") << "settings.translations.portuguese" << "settings.translations.portuguese";
        QTest::newRow("it") << QVariant("it") << "settings.translations.italian" << "settings.translations.italian";
        QTest::newRow("nl") << QVariant("nl") << "settings.translations.dutch" << "settings.translations.dutch";
        QTest::newRow("tr") << QVariant("tr") << "settings.translations.turkish" << "settings.translations.turkish";
        QTest::newRow("unknown") << QVariant("xx") << "settings.translations.english" << "settings.translations.english";
    }

    void languageNames()
    {
        QFETCH(QVariant, stored);
        QFETCH(QString, detailKey);
        QFETCH(QString, includeKey);
        m_settings->setObject(SettingsKeys::TranslationLanguage, stored);
        QCOMPARE(value(5, Roles::DetailRole).toString(), Strings::text(detailKey));
        QCOMPARE(value(0, Roles::LabelRole).toString(),
                 Strings::text("settings.includeenglish").arg(Strings::text(includeKey)));
    }

    void includeEnglishNamesTheLanguageInEffect()
    {
        PreferredLanguages::setOverride({"pt-BR"});
        QCOMPARE(value(0, Roles::LabelRole).toString(),
                 Strings::text("settings.includeenglish").arg(Strings::text("settings.translations.portuguese")));
        // Turkish is never the automatic choice.
        PreferredLanguages::setOverride({"tr-TR"});
        QVERIFY(value(0, Roles::LabelRole).toString().contains(Strings::text("settings.translations.english")));
    }

    void switchesAndSegmentsWriteAndSave()
    {
        m_controller->switchToggled(0, 0, true);
        m_controller->switchToggled(0, 3, true);
        m_controller->segmentChanged(0, 1, 1);
        m_controller->segmentChanged(0, 2, 0);
        m_controller->segmentChanged(1, 0, 1);
        // What a restart would read back.
        Settings reread(m_settingsPath);
        QCOMPARE(reread.objectForKey(SettingsKeys::IncludeEnglish), QVariant(true));
        QCOMPARE(reread.objectForKey(SettingsKeys::IncludeConjugations), QVariant(true));
        QCOMPARE(reread.objectForKey(SettingsKeys::SearchFrom), QVariant("W"));
        QCOMPARE(reread.objectForKey(SettingsKeys::SortByLang), QVariant(false));
        QCOMPARE(reread.objectForKey(SettingsKeys::ShowTranslated), QVariant(true));
        m_controller->segmentChanged(0, 1, 0);
        QCOMPARE(m_settings->objectForKey(SettingsKeys::SearchFrom), QVariant("S"));
        QCOMPARE(value(1, Roles::SegmentIndexRole).toInt(), 0);
    }

    void controlsElsewhereWriteNothingButCountAsChange()
    {
        QSignalSpy changed(m_controller.get(), &OptionsTableViewController::fieldsChangedChanged);
        m_controller->switchToggled(1, 1, true);
        m_controller->segmentChanged(5, 0, 1);
        QVERIFY(!m_settings->contains(SettingsKeys::IncludeEnglish));
        QVERIFY(!m_settings->contains(SettingsKeys::SearchFrom));
        QVERIFY(m_controller->fieldsChanged());
        QCOMPARE(changed.count(), 1);
    }

    void historySwitchPostsItsNewState()
    {
        QList<QVariant> objects;
        ObserverSet observers;
        observers.add(Notifications::HistoryFeatureToggled, [&](const Notification &n) { objects << n.object; });
        m_controller->switchToggled(2, 0, false);
        m_controller->switchToggled(2, 0, true);
        QCOMPARE(objects, (QList<QVariant>{QVariant(false), QVariant(true)}));
        QCOMPARE(objects.first().metaType().id(), int(QMetaType::Bool));
        QCOMPARE(m_settings->objectForKey(SettingsKeys::UseHistory), QVariant(true));
    }

    void analyticsSwitchReachesTheService()
    {
        QList<bool> switched;
        OptionsTableViewController::setAnalyticsCollectionHandler([&](bool on) { switched << on; });
        QSignalSpy signal(m_controller.get(), &OptionsTableViewController::analyticsCollectionChanged);
        m_controller->switchToggled(3, 0, false);
        QCOMPARE(switched, QList<bool>{false});
        QCOMPARE(signal.count(), 1);
        QCOMPARE(m_settings->objectForKey(SettingsKeys::AnalyticsCollectionEnabled), QVariant(false));
        QCOMPARE(value(9, Roles::CheckedRole).toBool(), false);

        QList<QString> events;
        OptionsTableViewController::setAnalyticsEventHandler([&](const QString &name, const QVariantMap &parameters) {
            QVERIFY(parameters.isEmpty());
            events << name;
        });
        m_controller->viewDidAppear();
        QCOMPARE(events, QList<QString>{"settings"});
    }

    void speedSheet_data()
    {
        QTest::addColumn<int>("choice");
        QTest::addColumn<int>("storedType");
        QTest::addColumn<double>("stored");
        QTest::addColumn<QString>("shown");
        QTest::newRow("100%") << 0 << int(QMetaType::LongLong) << 1.0 << "100%";
        QTest::newRow("75%") << 1 << int(QMetaType::Double) << 0.75 << "75%";
        QTest::newRow("50%") << 2 << int(QMetaType::Double) << 0.5 << "50%";
        QTest::newRow("25%") << 3 << int(QMetaType::Double) << 0.25 << "25%";
    }

    void speedSheet()
    {
        QFETCH(int, choice);
        QFETCH(int, storedType);
        QFETCH(double, stored);
        QFETCH(QString, shown);
        const QString sheet = OptionsTableViewController::SpeedSheet;
        QCOMPARE(m_controller->sheetChoices(sheet), (QStringList{"100%", "75%", "50%", "25%"}));
        m_controller->choose(sheet, choice);
        const QVariant value = Settings(m_settingsPath).objectForKey(SettingsKeys::AudioSpeed);
        QCOMPARE(value.metaType().id(), storedType);
        QCOMPARE(value.toDouble(), stored);
        QCOMPARE(this->value(6, Roles::DetailRole).toString(), shown);
        QVERIFY(m_controller->fieldsChanged());
    }

    void speedDetailCutsToWholePercent()
    {
        m_settings->setDouble(SettingsKeys::AudioSpeed, 0.333);
        QCOMPARE(value(6, Roles::DetailRole).toString(), QStringLiteral("33%"));
        m_settings->setDouble(SettingsKeys::AudioSpeed, -1);
        QCOMPARE(value(6, Roles::DetailRole).toString(), QStringLiteral("100%"));
    }

    void languageSheet()
    {
        const QString sheet = OptionsTableViewController::LanguageSheet;
        QVERIFY(m_controller->sheetTitle(sheet).isEmpty());
        QCOMPARE(m_controller->sheetChoices(sheet).join(u','),
                 QStringLiteral("Automatic,English,Dutch,French,German,Italian,Portuguese,Spanish"));
        const QStringList codes{QString(), "en", "nl", "fr", "de", "it", "pt", "es"};
        for (int i = codes.size() - 1; i >= 0; --i) {
            m_controller->choose(sheet, i);
            const Settings reread(m_settingsPath);
            QCOMPARE(reread.contains(SettingsKeys::TranslationLanguage), !codes[i].isEmpty());
            QCOMPARE(reread.stringForKey(SettingsKeys::TranslationLanguage), codes[i]);
        }
        QCOMPARE(value(5, Roles::DetailRole).toString(), Strings::text("settings.translations.automatic"));
        // Cancelling is not a choice.
        m_controller->viewWillAppear();
        m_controller->choose(sheet, 8);
        QVERIFY(!m_controller->fieldsChanged());
    }

    void rowsOpenTheirSheets()
    {
        QSignalSpy sheets(m_controller.get(), &OptionsTableViewController::sheetRequested);
        for (int section = 0; section < 4; ++section) {
            for (int row = 0; row < OptionsTableViewController::numberOfRowsInSection(section); ++row)
                m_controller->rowTapped(section, row);
        }
        QCOMPARE(sheets.count(), 3);
        QCOMPARE(sheets.at(0).first().toString(), OptionsTableViewController::LanguageSheet);
        QCOMPARE(sheets.at(1).first().toString(), OptionsTableViewController::SpeedSheet);
        QCOMPARE(sheets.at(2).first().toString(), OptionsTableViewController::ClearHistorySheet);
        QCOMPARE(sheets.at(2).at(1).toInt(), 2);
        QCOMPARE(m_controller->sheetTitle(OptionsTableViewController::ClearHistorySheet),
                 Strings::text("settings.history_items_clear"));
        QCOMPARE(m_controller->sheetChoices(OptionsTableViewController::ClearHistorySheet),
                 QStringList{Strings::text("settings.history_clear_yes")});
        QCOMPARE(m_controller->sheetCancelText(OptionsTableViewController::ClearHistorySheet),
                 Strings::text("settings.history_cancel"));
    }

    void clearingTheHistory()
    {
        const QString db = m_dir.filePath("verbs.db");
        QVERIFY(test::createFixtureDatabase(db, "INSERT INTO history(verbid, timestamp) VALUES (1, 10), (2, 20);"
                                                "INSERT INTO favourite(verbid) VALUES (3);"));
        auto queue = std::make_shared<DatabaseQueue>(db);
        // The queue as QML hands it over.
        DatabaseQueueRef ref(queue);
        m_controller->setQueueObject(&ref);
        int refreshes = 0;
        ObserverSet observers;
        observers.add(Notifications::RefreshHistory, [&](const Notification &n) {
            QVERIFY(!n.object.isValid());
            ++refreshes;
        });
        m_controller->choose(OptionsTableViewController::ClearHistorySheet, 0);
        QCOMPARE(refreshes, 1);
        QCOMPARE(test::querySingleColumn(db, "SELECT count(*) FROM history"), QStringList{"0"});
        QCOMPARE(test::querySingleColumn(db, "SELECT count(*) FROM favourite"), QStringList{"1"});
        // Clearing is not a settings change.
        QVERIFY(!m_controller->fieldsChanged());
        // The connection was closed after the turn; the queue opens it again.
        bool readable = false;
        queue->inDatabase([&](Database &d) { readable = d.executeQuery("SELECT 1") != nullptr; });
        QVERIFY(readable);
    }

    void failedClearIsOnlyAConsoleLine()
    {
        const QString db = m_dir.filePath("nohistory.db");
        QVERIFY(test::runSql(db, "CREATE TABLE verb(_id INTEGER PRIMARY KEY);"));
        m_controller->setQueue(std::make_shared<DatabaseQueue>(db));
        int refreshes = 0;
        ObserverSet observers;
        observers.add(Notifications::RefreshHistory, [&](const Notification &) { ++refreshes; });
        QTest::ignoreMessage(QtWarningMsg, "Unable to delete favourites");
        m_controller->clearHistory();
        QCOMPARE(refreshes, 1);
    }

    void closingTellsTheDelegate()
    {
        Delegate delegate;
        QSignalSpy dismiss(m_controller.get(), &OptionsTableViewController::dismissRequested);
        QSignalSpy closed(m_controller.get(), &OptionsTableViewController::optionsDidClose);
        // Without a delegate the screen stays.
        QVERIFY(!m_controller->close());
        QCOMPARE(dismiss.count(), 0);

        m_controller->setDelegate(&delegate);
        m_controller->viewWillAppear();
        QVERIFY(m_controller->close());
        QCOMPARE(dismiss.count(), 1);
        m_controller->didDismiss();
        QCOMPARE(delegate.calls, QList<bool>{false});
        QCOMPARE(closed.count(), 1);
        QCOMPARE(closed.first().first().toBool(), false);

        // Any switch change counts, even when set back.
        m_controller->viewWillAppear();
        m_controller->switchToggled(0, 0, true);
        m_controller->switchToggled(0, 0, false);
        m_controller->close();
        m_controller->didDismiss();
        QCOMPARE(delegate.calls, (QList<bool>{false, true}));

        // Shown again, the flag starts over.
        m_controller->viewWillAppear();
        QVERIFY(!m_controller->fieldsChanged());
        m_controller->close();
        m_controller->didDismiss();
        QCOMPARE(delegate.calls, (QList<bool>{false, true, false}));
    }

    void aboutBlock()
    {
        QCOMPARE(m_controller->copyright(), Strings::text("settings.copyright"));
        const QUrl web(m_controller->webUrl());
        QVERIFY(web.isValid() && !web.scheme().isEmpty());
    }

    void supportMailSenderIsReplacedOnEachTap()
    {
        QObject screen;
        m_controller->setPresenter(&screen);
        DesktopMail::Platform previous = DesktopMail::platform();
        int runs = 0;
        DesktopMail::platform().findMailCommand = [] { return QStringLiteral("/usr/bin/xdg-email"); };
        DesktopMail::platform().run = [&](const QString &, const QStringList &, std::function<void(bool)> done) {
            ++runs;
            done(true);
        };
        m_controller->sendSupportEmail();
        QPointer<SupportEmailSender> first = m_controller->supportEmailSender();
        QVERIFY(first);
        QCOMPARE(first->sender(), &screen);
        m_controller->sendSupportEmail();
        QVERIFY(m_controller->supportEmailSender() != first.data());
        QCOMPARE(runs, 2);
        DesktopMail::platform() = previous;
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
