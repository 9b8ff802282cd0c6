// The whole window, loaded as the app loads it, at phone and tablet sizes and driven through
// a verb, the letter index and a swipe: any QML warning fails.
// NORVELLA_SCREENSHOT_DIR=/some/folder keeps the named steps as pictures.
#include "AdaptiveLayout.h"
#include "AppWindow.h"
#include "ConjugationServices.h"
#include "Strings.h"
#include "UserMessages.h"

#include <QAccessible>
#include <QQuickItem>

#define NORVELLA_QML_ALL
#include "QmlModules.h"

using namespace norvella;

class ScreensTest : public QObject
{
    Q_OBJECT

private:
    test::AppWindow *m_app = nullptr;
    test::QmlScreen *m_qml = nullptr;
    QQuickWindow *m_window = nullptr;
    int m_shownEvents = 0;

    // A synchronous frame; a named step is kept as a picture.
    void render(const char *step = nullptr)
    {
        const QSize size = m_window->size();
        const QString name = step ? QStringLiteral("%1-%2x%3").arg(step).arg(size.width()).arg(size.height()) : QString();
        QVERIFY(!test::grab(m_window, name).isNull());
    }

    void waitForPages()
    {
        QVERIFY(m_app->waitForPages());
        render();
    }

    // A visible (or any) row showing the verb, of this model if one is given.
    QQuickItem *row(const QString &italian, const QObject *model = nullptr, bool visibleOnly = true)
    {
        for (QQuickItem *item : m_qml->items(visibleOnly)) {
            if (item->inherits("QQuickSwipeDelegate") && item->property("italian").toString() == italian
                && (!model || item->property("table").value<QObject *>() == model))
                return item;
        }
        return nullptr;
    }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        ConjugationServices::setEventHandler([this](const QString &name, const QVariantMap &) {
            m_shownEvents += name == QLatin1String("select_content");
        });
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
        // Enough verbs under "Z" for the list to scroll.
        QString moreVerbs;
        for (int i = 100; i < 140; ++i)
            moreVerbs += QStringLiteral("INSERT INTO verb(_id, italian, simplified_italian, english) VALUES "
                                        "(%1, 'zappare%1', 'zappare%1', 'to hoe');").arg(i);
        {
            test::AppWindow app(moreVerbs);
            QVERIFY(app.launch(size));
            m_app = &app;
            m_qml = &app.qml;
            m_window = app.window();
            test::QmlScreen &qml = app.qml;
            render();
            auto *home = app.home();
            auto *list = home ? home->verbListTableViewController() : nullptr;
            QVERIFY(list);
            QCOMPARE(list->rowCount(), 45);
            QCOMPARE(app.delegate->collapsed(), size.width() < 700);

            // A row of the list opens the verb, and that counts as one view: the
            // hidden column of a narrow window must not show it too.
            m_shownEvents = 0;
            list->selectRow(0);
            waitForPages();
            render("detail");
            QVERIFY(m_app->detailShows(list->verbAtRow(0)->italian));
            QCOMPARE(Preferences::numberOfVerbsViewed(Settings::standard()), 1);
            QCOMPARE(m_shownEvents, 1);
            QTest::keyClick(m_window, Qt::Key_Escape);
            waitForPages();

            // Pressing the bottom of the letter index jumps to the last section.
            const int columnWidth = int(AdaptiveLayout::primaryWidth(size.width()));
            const QList<QQuickItem *> all = qml.items(false);
            const auto listView = std::find_if(all.begin(), all.end(), [&](QQuickItem *item) {
                return item->inherits("QQuickListView") && item->property("model").value<QObject *>() == list;
            });
            QVERIFY(listView != all.end());
            QTest::mouseClick(m_window, Qt::LeftButton, {}, QPoint(columnWidth - 10, size.height() - 90));
            render("index-jump");
            int rowAtTop = -1;
            QVERIFY(QMetaObject::invokeMethod(*listView, "indexAt", Q_RETURN_ARG(int, rowAtTop), Q_ARG(qreal, 100),
                                              Q_ARG(qreal, (*listView)->property("contentY").toReal() + 40)));
            QCOMPARE(list->verbAtRow(rowAtTop)->italian, QStringLiteral("zappare100"));
            (*listView)->setProperty("contentY", 0);
            render();

            // Mark a favourite by swiping its row and tapping the action, then visit every tab.
            // Rows are as tall as their text, which follows the system's type size: aim at the row.
            QQuickItem *swiped = row(list->verbAtRow(1)->italian, nullptr, false);
            QVERIFY(swiped);
            const qreal rowY = swiped->mapToScene(QPointF(0, swiped->height() / 2)).y();
            const QPointF from(300, rowY);
            QTest::mousePress(m_window, Qt::LeftButton, {}, from.toPoint());
            for (int step = 1; step <= 12; ++step)
                QTest::mouseMove(m_window, (from - QPointF(step * 20, 0)).toPoint());
            QTest::mouseRelease(m_window, Qt::LeftButton, {}, (from - QPointF(240, 0)).toPoint());
            QTRY_VERIFY(swiped->property("swipe").value<QObject *>()->property("complete").toBool());
            QTest::mouseClick(m_window, Qt::LeftButton, {}, QPoint(columnWidth - 60, int(rowY)));
            render("favourite-marked");
            QVERIFY(list->verbAtRow(1)->isFavourite);
            home->showTab(HomeViewController::FavouritesTab);
            render("favourites");
            QVERIFY(row("andare", home->favouritesTableViewController()));
            // Search, the other tabs and crossing the side-by-side line are walked by
            // tst_access and tst_layouts.
            QVERIFY2(app.close(), test::WarningCollector::report());
        }
    }

    // Notices posted before there is a window show once it listens, one at a time, each
    // closed with a control large enough to tap; assistive technology hears them as alerts.
    void noticesWaitForTheWindow()
    {
        test::AppWindow app;
        for (const char *text : {"The verb data was repaired.", "Could not save.", "The verb data was repaired."})
            UserMessages::post(QString::fromUtf8(text));
        {
            QVERIFY(app.launch(QSize(390, 844)));
            test::QmlScreen &qml = app.qml;
            // As the app's start does once its window is there.
            UserMessages::setListener([window = qml.window.get()](const QString &text) {
                QMetaObject::invokeMethod(window, "showMessage", Q_ARG(QString, text));
            });
            QVERIFY(UserMessages::pending().isEmpty());
            QVERIFY(qml.settle());

            auto *bar = qml.find<QQuickItem>("messageBar");
            auto *close = qml.find<QQuickItem>("messageBarClose");
            QVERIFY(bar && close);
            QVERIFY(bar->isVisible() && test::onScreen(bar));
            QCOMPARE(test::accessibleName(bar), QStringLiteral("The verb data was repaired."));
            const QObjectList attached = bar->children();
            const auto accessible = std::find_if(attached.begin(), attached.end(), [](QObject *child) {
                return qstrcmp(child->metaObject()->className(), "QQuickAccessibleAttached") == 0;
            });
            QVERIFY(accessible != attached.end());
            QCOMPARE((*accessible)->property("role").toInt(), int(QAccessible::AlertMessage));
            QCOMPARE(test::accessibleName(close), Strings::text(QStringLiteral("common.close")));
            QVERIFY(close->width() >= 44 && close->height() >= 44);
            qml.grab(QStringLiteral("notice"));

            QVERIFY(qml.click(close));
            QCOMPARE(test::accessibleName(bar), QStringLiteral("Could not save."));
            // The same notice again while it shows is not queued twice.
            UserMessages::post(QStringLiteral("Could not save."));
            QVERIFY(qml.click(close));
            QVERIFY(!bar->isVisible());
            UserMessages::setListener({});
        }
        QVERIFY2(app.close(), test::WarningCollector::report());
    }
};

QTEST_MAIN(ScreensTest)
#include "tst_screens.moc"
