#include "AppDelegate.h"
#include "CrashLog.h"
#include "HomeViewController.h"
#include "Settings.h"
#include "TestSupport.h"

#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QtQml/qqmlextensionplugin.h>

#include "VerbRef.h"
#include <QtTest>

Q_IMPORT_QML_PLUGIN(Norvella_AppPlugin)
Q_IMPORT_QML_PLUGIN(Norvella_ListsPlugin)
Q_IMPORT_QML_PLUGIN(Norvella_ResourcesPlugin)
Q_IMPORT_QML_PLUGIN(Norvella_ConjugationPlugin)
Q_IMPORT_QML_PLUGIN(Norvella_ExportPlugin)
Q_IMPORT_QML_PLUGIN(Norvella_SettingsPlugin)

using namespace norvella;

namespace {
QStringList &warnings()
{
    static QStringList list;
    return list;
}

QtMessageHandler previousHandler = nullptr;

void collectWarnings(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtWarningMsg || type == QtCriticalMsg || type == QtFatalMsg)
        warnings() << message;
    if (previousHandler)
        previousHandler(type, context, message);
}
} // namespace

// The whole window, loaded as the app loads it, at phone and tablet sizes and
// driven through tabs, search, a verb, a swipe and a resize: any QML warning fails.
class ScreensTest : public QObject
{
    Q_OBJECT

private:
    QQuickWindow *m_window = nullptr;

    // A synchronous frame: polishes the items and creates the visible delegates.
    // With NORVELLA_SCREENS_DIR set, the named steps are kept as pictures to look at.
    void render(const char *step = nullptr)
    {
        const QImage frame = m_window->grabWindow();
        QVERIFY(!frame.isNull());
        const QString folder = qEnvironmentVariable("NORVELLA_SCREENS_DIR");
        if (step && !folder.isEmpty())
            frame.save(QStringLiteral("%1/%2-%3x%4.png").arg(folder, QLatin1String(step)).arg(m_window->width()).arg(m_window->height()));
    }

    QQuickItem *findItem(const QString &objectName)
    {
        return m_window->findChild<QQuickItem *>(objectName);
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
        QQuickItem *stack = findItem("stack");
        QVERIFY(stack);
        QTRY_VERIFY(!stack->property("busy").toBool());
        render();
    }

    // Delegates belong to the visual tree, not to the object tree.
    static QObject *swipeOfRow(QQuickItem *item, const QString &italian)
    {
        if (item->inherits("QQuickSwipeDelegate") && item->property("italian").toString() == italian)
            return item->property("swipe").value<QObject *>();
        for (QQuickItem *child : item->childItems()) {
            if (QObject *swipe = swipeOfRow(child, italian))
                return swipe;
        }
        return nullptr;
    }

    // Whether a visible row of this model shows the verb.
    static bool showsRow(QQuickItem *item, const QObject *model, const QString &italian)
    {
        if (!item->isVisible())
            return false;
        if (item->inherits("QQuickSwipeDelegate") && item->property("table").value<QObject *>() == model
            && item->property("italian").toString() == italian)
            return true;
        for (QQuickItem *child : item->childItems()) {
            if (showsRow(child, model, italian))
                return true;
        }
        return false;
    }

    static QQuickItem *listViewOf(QQuickItem *item, const QObject *model)
    {
        if (item->inherits("QQuickListView") && item->property("model").value<QObject *>() == model)
            return item;
        for (QQuickItem *child : item->childItems()) {
            if (QQuickItem *found = listViewOf(child, model))
                return found;
        }
        return nullptr;
    }

    void swipeRow(const QPointF &from)
    {
        QTest::mousePress(m_window, Qt::LeftButton, {}, from.toPoint());
        for (int step = 1; step <= 12; ++step)
            QTest::mouseMove(m_window, (from - QPointF(step * 20, 0)).toPoint());
        QTest::mouseRelease(m_window, Qt::LeftButton, {}, (from - QPointF(240, 0)).toPoint());
    }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QQuickStyle::setStyle(QStringLiteral("Basic"));
        previousHandler = qInstallMessageHandler(collectWarnings);
    }

    void homeScreenLoadsWithoutWarnings_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("phone") << QSize(390, 844);
        QTest::newRow("tablet") << QSize(1024, 768);
    }

    void homeScreenLoadsWithoutWarnings()
    {
        QFETCH(QSize, size);
        warnings().clear();
        QTemporaryDir dir;
        LaunchEnvironment environment;
        environment.documentsDirectory = dir.filePath("docs");
        environment.masterPath = dir.filePath("master.db");
        environment.appVersion = QStringLiteral("1.0");
        QVERIFY(QDir().mkpath(environment.documentsDirectory));
        // Enough verbs under "Z" for the list to scroll.
        QString moreVerbs;
        for (int i = 0; i < 40; ++i)
            moreVerbs += QStringLiteral("INSERT INTO verb(_id, italian, simplified_italian, english) VALUES "
                                        "(%1, 'zappare%1', 'zappare%1', 'to hoe');")
                                 .arg(100 + i);
        QVERIFY(test::createFixtureDatabase(environment.masterPath, moreVerbs));
        CrashLog::setLogFilePath(dir.filePath("norvella.log"));
        Settings::standard().clear();

        {
            QQmlApplicationEngine engine;
            engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
            AppDelegate delegate(environment, Settings::standard());
            delegate.setWindowFactory([&](AppDelegate &d) {
                engine.setInitialProperties({{"appDelegate", QVariant::fromValue(&d)},
                                             {"width", size.width()},
                                             {"height", size.height()}});
                engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Norvella/App/Main.qml")));
            });
            delegate.didFinishLaunching();
            QCOMPARE(engine.rootObjects().size(), 1);
            m_window = qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());
            QVERIFY(m_window);
            QVERIFY(QTest::qWaitForWindowExposed(m_window));
            render();

            auto *home = m_window->findChild<HomeViewController *>("homeViewController");
            QVERIFY(home);
            QVERIFY(home->verbListTableViewController());
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
            const int indexX = (size.width() < 700 ? size.width() : 410) - 10;
            QQuickItem *listView = listViewOf(m_window->contentItem(), list);
            QVERIFY(listView);
            QCOMPARE(listView->property("contentY").toReal(), 0.0);
            QTest::mousePress(m_window, Qt::LeftButton, {}, QPoint(indexX, size.height() - 90));
            QTest::mouseRelease(m_window, Qt::LeftButton, {}, QPoint(indexX, size.height() - 90));
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
            const int columnWidth = size.width() < 700 ? size.width() : 410;
            swipeRow(QPointF(300, 190));
            QObject *swipe = swipeOfRow(m_window->contentItem(), list->verbAtRow(1)->italian);
            QVERIFY(swipe);
            QTRY_VERIFY(swipe->property("complete").toBool());
            render("swiped");
            QTest::mouseClick(m_window, Qt::LeftButton, {}, QPoint(columnWidth - 60, 209));
            render("favourite-marked");
            QVERIFY(list->verbAtRow(1)->isFavourite);
            home->showTab(HomeViewController::FavouritesTab);
            render("favourites");
            QVERIFY(showsRow(m_window->contentItem(), home->favouritesTableViewController(), "andare"));
            home->showTab(HomeViewController::HistoryTab);
            render();
            home->showTab(HomeViewController::ListTab);
            render();

            QQuickItem *field = findItem("searchField");
            QVERIFY(field);
            field->forceActiveFocus();
            field->setProperty("text", QStringLiteral("and"));
            render();
            QCOMPARE(home->searchResultsController()->query(), QStringLiteral("and"));
            QCOMPARE(home->searchResultsController()->rowCount(), 1);
            QVERIFY(showsRow(m_window->contentItem(), home->searchResultsController(), "andare"));
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
        }
        QVERIFY2(warnings().isEmpty(), qPrintable(warnings().join('\n')));
    }
};

QTEST_MAIN(ScreensTest)
#include "tst_screens.moc"
