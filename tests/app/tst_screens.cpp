// The whole window, loaded as the app loads it, at phone and tablet sizes and
// driven through tabs, search, a verb, a swipe and a resize: any QML warning fails.
// NORVELLA_SCREENSHOT_DIR=/some/folder keeps the named steps as pictures.
#include "AppDelegate.h"
#include "CrashLog.h"
#include "HomeViewController.h"
#include "QmlLoadHarness.h"
#include "Settings.h"
#include "TestSupport.h"
#include "VerbRef.h"

#include <QQuickItem>
#include <QTemporaryDir>
#include <QtQml/qqmlextensionplugin.h>

#include <functional>

Q_IMPORT_QML_PLUGIN(Norvella_AppPlugin)
Q_IMPORT_QML_PLUGIN(Norvella_ListsPlugin)
Q_IMPORT_QML_PLUGIN(Norvella_ResourcesPlugin)
Q_IMPORT_QML_PLUGIN(Norvella_ConjugationPlugin)
Q_IMPORT_QML_PLUGIN(Norvella_ExportPlugin)
Q_IMPORT_QML_PLUGIN(Norvella_SettingsPlugin)

using namespace norvella;

namespace {
QQuickItem *findItem(const QList<QQuickItem *> &items, const std::function<bool(QQuickItem *)> &match)
{
    const auto it = std::find_if(items.begin(), items.end(), match);
    return it == items.end() ? nullptr : *it;
}

bool isRow(QQuickItem *item, const QString &italian)
{
    return item->inherits("QQuickSwipeDelegate") && item->property("italian").toString() == italian;
}
} // namespace

class ScreensTest : public QObject
{
    Q_OBJECT

private:
    test::QmlScreen *m_qml = nullptr;
    QQuickWindow *m_window = nullptr;

    // A synchronous frame; a named step is kept as a picture.
    void render(const char *step = nullptr)
    {
        const QSize size = m_window->size();
        const QString name = step ? QStringLiteral("%1-%2x%3").arg(step).arg(size.width()).arg(size.height()) : QString();
        QVERIFY(!test::grab(m_window, name).isNull());
    }

    bool detailShows(const QString &italian)
    {
        // The conjugation screen in the detail column or on the pushed page.
        for (QObject *object : m_window->findChildren<QObject *>()) {
            if (object->objectName() != QLatin1String("detailColumn") && object->objectName() != QLatin1String("detailPage"))
                continue;
            const VerbPtr verb = VerbRef::from(object->property("verb").value<QObject *>());
            if (verb && verb->italian == italian && object->property("visible").toBool())
                return true;
        }
        return false;
    }

    // Page transitions block input until they end.
    void waitForPages()
    {
        auto *stack = m_window->findChild<QQuickItem *>("stack");
        QVERIFY(stack);
        QTRY_VERIFY(!stack->property("busy").toBool());
        render();
    }

    // Whether a visible row of this model shows the verb.
    bool showsRow(const QObject *model, const QString &italian)
    {
        return findItem(m_qml->items(), [&](QQuickItem *item) {
            return isRow(item, italian) && item->property("table").value<QObject *>() == model;
        });
    }

    void swipeRow(const QPointF &from)
    {
        QTest::mousePress(m_window, Qt::LeftButton, {}, from.toPoint());
        for (int step = 1; step <= 12; ++step)
            QTest::mouseMove(m_window, (from - QPointF(step * 20, 0)).toPoint());
        QTest::mouseRelease(m_window, Qt::LeftButton, {}, (from - QPointF(240, 0)).toPoint());
    }

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void homeScreenLoadsWithoutWarnings_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("phone") << QSize(390, 844);
        QTest::newRow("tablet") << QSize(1024, 768);
    }

    void homeScreenLoadsWithoutWarnings()
    {
        QFETCH(QSize, size);
        QTemporaryDir dir;
        LaunchEnvironment environment;
        environment.documentsDirectory = dir.filePath("docs");
        environment.masterPath = dir.filePath("master.db");
        environment.appVersion = QStringLiteral("1.0");
        QVERIFY(QDir().mkpath(environment.documentsDirectory));
        // Enough verbs under "Z" for the list to scroll.
        QString moreVerbs;
        for (int i = 100; i < 140; ++i)
            moreVerbs += QStringLiteral("INSERT INTO verb(_id, italian, simplified_italian, english) VALUES "
                                        "(%1, 'zappare%1', 'zappare%1', 'to hoe');").arg(i);
        QVERIFY(test::createFixtureDatabase(environment.masterPath, moreVerbs));
        CrashLog::setLogFilePath(dir.filePath("norvella.log"));
        Settings::standard().clear();

        {
            AppDelegate delegate(environment, Settings::standard());
            test::QmlScreen qml; // goes before the delegate the window shows
            delegate.setWindowFactory([&](AppDelegate &d) {
                QVERIFY(qml.show(QUrl(QStringLiteral("qrc:/qt/qml/Norvella/App/Main.qml")), size,
                                 {{"appDelegate", QVariant::fromValue(&d)}}));
            });
            delegate.didFinishLaunching();
            m_qml = &qml;
            m_window = qml.window.get();
            QVERIFY(m_window);
            render();

            auto *home = qml.find<HomeViewController>("homeViewController");
            QVERIFY(home && home->verbListTableViewController());
            QCOMPARE(home->verbListTableViewController()->rowCount(), 45);
            QCOMPARE(delegate.collapsed(), size.width() < 700);

            // A row of the list opens the verb.
            auto *list = home->verbListTableViewController();
            list->selectRow(0);
            render("detail");
            QVERIFY(detailShows(list->verbAtRow(0)->italian));
            waitForPages();
            QTest::keyClick(m_window, Qt::Key_Escape);
            waitForPages();

            // Pressing the bottom of the letter index jumps to the last section.
            const int columnWidth = size.width() < 700 ? size.width() : 410;
            QQuickItem *listView = findItem(qml.items(false), [&](QQuickItem *item) {
                return item->inherits("QQuickListView") && item->property("model").value<QObject *>() == list;
            });
            QVERIFY(listView);
            QCOMPARE(listView->property("contentY").toReal(), 0.0);
            const QPoint indexBottom(columnWidth - 10, size.height() - 90);
            QTest::mousePress(m_window, Qt::LeftButton, {}, indexBottom);
            QTest::mouseRelease(m_window, Qt::LeftButton, {}, indexBottom);
            render("index-jump");
            const qreal top = listView->property("contentY").toReal();
            QVERIFY(top > 0);
            int rowAtTop = -1;
            QVERIFY(QMetaObject::invokeMethod(listView, "indexAt", Q_RETURN_ARG(int, rowAtTop), Q_ARG(qreal, 100),
                                              Q_ARG(qreal, top + 40)));
            QCOMPARE(list->verbAtRow(rowAtTop)->italian, QStringLiteral("zappare100"));
            listView->setProperty("contentY", 0);
            render();

            // Mark a favourite by swiping its row and tapping the action, then visit every tab.
            swipeRow(QPointF(300, 190));
            const QString second = list->verbAtRow(1)->italian;
            QQuickItem *row = findItem(qml.items(false), [&](QQuickItem *item) { return isRow(item, second); });
            QVERIFY(row);
            QTRY_VERIFY(row->property("swipe").value<QObject *>()->property("complete").toBool());
            render("swiped");
            QTest::mouseClick(m_window, Qt::LeftButton, {}, QPoint(columnWidth - 60, 209));
            render("favourite-marked");
            QVERIFY(list->verbAtRow(1)->isFavourite);
            home->showTab(HomeViewController::FavouritesTab);
            render("favourites");
            QVERIFY(showsRow(home->favouritesTableViewController(), "andare"));
            home->showTab(HomeViewController::HistoryTab);
            render();
            home->showTab(HomeViewController::ListTab);
            render();

            auto *field = qml.find<QQuickItem>("searchField");
            QVERIFY(field);
            field->forceActiveFocus();
            field->setProperty("text", QStringLiteral("and"));
            render();
            QCOMPARE(home->searchResultsController()->query(), QStringLiteral("and"));
            QCOMPARE(home->searchResultsController()->rowCount(), 1);
            QVERIFY(showsRow(home->searchResultsController(), "andare"));
            home->searchResultsController()->selectRow(0);
            waitForPages();
            render("search-result-chosen");
            QVERIFY(detailShows(QStringLiteral("andare")));

            // Across the 700 px line and back, with a verb chosen.
            m_window->resize(size.width() < 700 ? QSize(1024, 768) : QSize(390, 844));
            render();
            m_window->resize(size);
            render();
            QVERIFY(detailShows(QStringLiteral("andare")));

            emit delegate.focusSearchRequested();
            render();
            QVERIFY(field->hasActiveFocus());
            field->setProperty("text", QString());
            render();
            m_window = nullptr;
            m_qml = nullptr;
        }
        QVERIFY2(test::WarningCollector::warnings().isEmpty(), test::WarningCollector::report());
    }
};

QTEST_MAIN(ScreensTest)
#include "tst_screens.moc"
