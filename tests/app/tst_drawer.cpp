#include "Analytics.h"
#include "CrashLog.h"
#include "MoreAppsTableViewController.h"
#include "NavigationDrawerTableTableViewController.h"
#include "ProductList.h"

#include <QAbstractItemModelTester>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

using namespace norvella;

class DrawerTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        CrashLog::setLogFilePath(m_dir.filePath(QStringLiteral("norvella.log")));
        Analytics::shared().start();
    }

    void drawerHasOnlyTheFourRows()
    {
        NavigationDrawerTableTableViewController drawer;
        QAbstractItemModelTester tester(&drawer);
        QStringList keys;
        for (int row = 0; row < drawer.rowCount(); ++row)
            keys << drawer.data(drawer.index(row), NavigationDrawerTableTableViewController::TitleKeyRole).toString();
        QCOMPARE(keys, (QStringList{"options.button", "moreapps", "contact", "privacy"}));
        // Titles are looked up, not shown as keys.
        QVERIFY(drawer.data(drawer.index(0), Qt::DisplayRole).toString() != QStringLiteral("options.button"));
    }

    void rowActsOnlyAfterTheDrawerHasClosed_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<QByteArray>("signal");
        QTest::newRow("settings") << 0 << QByteArray(SIGNAL(openSettings()));
        QTest::newRow("more apps") << 1 << QByteArray(SIGNAL(openMoreApps()));
        QTest::newRow("contact") << 2 << QByteArray(SIGNAL(composeSupportMail()));
        QTest::newRow("privacy") << 3 << QByteArray(SIGNAL(openPrivacyPage()));
    }

    void rowActsOnlyAfterTheDrawerHasClosed()
    {
        QFETCH(int, row);
        QFETCH(QByteArray, signal);
        NavigationDrawerTableTableViewController drawer;
        drawer.setPresented(true);
        QSignalSpy close(&drawer, &NavigationDrawerTableTableViewController::closeRequested);
        QSignalSpy action(&drawer, signal.constData());
        drawer.selectRow(1, row);
        QCOMPARE(close.count(), 1);
        QCOMPARE(action.count(), 0);
        drawer.drawerDidClose();
        QCOMPARE(action.count(), 1);
        // Closing again (a swipe, say) does not repeat the action.
        drawer.drawerDidClose();
        QCOMPARE(action.count(), 1);
    }

    void badSelectionsAreLoggedAndDoNothing()
    {
        NavigationDrawerTableTableViewController drawer;
        QSignalSpy close(&drawer, &NavigationDrawerTableTableViewController::closeRequested);
        drawer.selectRow(1, 0);
        drawer.setPresented(true);
        drawer.selectRow(0, 0);
        drawer.selectRow(1, 4);
        QCOMPARE(close.count(), 0);
        QFile log(CrashLog::logFilePath());
        QVERIFY(log.open(QIODevice::ReadOnly));
        const QByteArray text = log.readAll();
        QVERIFY(text.contains("Unable to get navigation controller"));
        QCOMPARE(text.count("Navigation option not available"), 2);
    }

    void storeAddressIsBuiltFromItsPieces()
    {
        const Product product{{"appid", "123"}, {"storedesc", "norvella-french-verbs"}, {"name", "x"}};
        auto address = [](const Product &p, const QString &country) {
            return ProductList::storeAddress(p, country, QStringLiteral("https://store.example/"), "abc123");
        };
        const QString tail = QStringLiteral("/app/norvella-french-verbs/id123?mt=8&uo=4&at=abc123");
        QCOMPARE(address(product, "IT"), "https://store.example/it" + tail);
        QCOMPARE(address(product, {}), "https://store.example/" + tail);
        QVERIFY(address({{"storedesc", "a"}}, "it").isEmpty());
        QVERIFY(address({{"appid", "1"}}, "it").isEmpty());
    }

    void bundledCatalogueIsComplete()
    {
        const ProductList list;
        QVERIFY(!list.apps().isEmpty());
        for (const Product &product : list.apps()) {
            for (const char *key : {"bundle", "appid", "storedesc", "name", "icon"})
                QVERIFY2(!product.value(QLatin1String(key)).isEmpty(), key);
            QVERIFY(QFile::exists(QStringLiteral(":/norvella/icons/%1.svg").arg(product.value(QStringLiteral("icon")))));
        }
    }

    void choosingAnAppLogsAndOpensItsPage()
    {
        MoreAppsTableViewController apps;
        QAbstractItemModelTester tester(&apps);
        QList<QUrl> opened;
        apps.setUrlOpener([&](const QUrl &url) { opened << url; });
        apps.setCountryCode(QStringLiteral("DE"));
        apps.setOtherApps({{{"appid", "7"}, {"storedesc", "one"}, {"name", "One"}},
                           {{"storedesc", "broken"}, {"name", "No id"}}});
        QCOMPARE(apps.rowCount(), 2);
        apps.selectRow(0);
        QCOMPARE(opened.size(), 1);
        QVERIFY(opened.first().toString().contains(QStringLiteral("de/app/one/id7")));
        QCOMPARE(Analytics::shared().lastEvent(), QStringLiteral("more_apps"));
        QCOMPARE(Analytics::shared().lastParameters().value(QStringLiteral("select")).toString(), QStringLiteral("one"));
        apps.selectRow(1);
        QCOMPARE(opened.size(), 1);
        apps.setOtherApps({});
        QCOMPARE(apps.rowCount(), 0);
    }

private:
    QTemporaryDir m_dir;
};

QTEST_MAIN(DrawerTest)
#include "tst_drawer.moc"
