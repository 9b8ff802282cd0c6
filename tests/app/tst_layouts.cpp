// The window's arrangement follows the room it has: the grid wherever two tense
// blocks fit, side by side only when the list fits too, slim bars on a phone on
// its side. Rotating, or crossing into and out of the side-by-side layout, keeps
// the verb, the mood and the place, and is not another view of the verb. Lists
// keep their place across a settings change and follow the translation language.
// NORVELLA_SCREENSHOT_DIR=/some/folder keeps the named steps as pictures.
#include "AppWindow.h"
#include "ConjugationServices.h"
#include "FavouritesTableViewController.h"
#include "HistoryTableViewController.h"
#include "Strings.h"
#include "VerbDetailTableViewController.h"
#include "VerbListTableViewController.h"
#include "VerbStore.h"
#include "VerbTableModel.h"

#include <QQuickItem>

#define NORVELLA_QML_ALL
#include "QmlModules.h"

using namespace norvella;

namespace {
// Six forms in every indicative and subjunctive tense of "andare", enough for
// both presentations to scroll; forty more verbs so the list scrolls too.
QString extraRows()
{
    QString sql = QStringLiteral("DELETE FROM conjugation WHERE verbid = 1 AND conjugation_type_id > 6;");
    for (int type : {7, 8, 9, 10, 11, 12, 13, 15, 16, 17, 18}) {
        for (int person = 1; person <= 6; ++person)
            sql += QStringLiteral("INSERT INTO conjugation(verbid, pronounid, verb, conjugation_type_id, conj_order, voice_file) "
                                  "VALUES (1, %1, 'forma%2x%1', %2, %3, NULL);").arg(person).arg(type).arg((type - 6) * 6 + person + 15);
    }
    for (int i = 100; i < 140; ++i)
        // Their translations run the other way, so sorting by translation moves them.
        sql += QStringLiteral("INSERT INTO verb(_id, italian, simplified_italian, english, german) VALUES "
                              "(%1, 'zappare%1', 'zappare%1', 'to hoe %2', 'hacken %2');").arg(i).arg(239 - i);
    sql += QStringLiteral("INSERT INTO favourite(verbid) VALUES (2);"
                          "INSERT INTO history(verbid, timestamp) VALUES (3, 100.0);");
    return sql;
}
} // namespace

class LayoutsTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<test::AppWindow> m_app;
    test::QmlScreen *m_qml = nullptr;
    int m_shownEvents = 0;

    QQuickWindow *window() const { return m_app->window(); }
    HomeViewController *home() const { return m_app->home(); }

    void launch(QSize size)
    {
        m_shownEvents = 0;
        m_app = std::make_unique<test::AppWindow>(extraRows());
        m_qml = &m_app->qml;
        QVERIFY(m_app->launch(size));
        QVERIFY(m_qml->settle());
    }

    void close()
    {
        QVERIFY2(m_app->close(), test::WarningCollector::report());
        m_app.reset();
    }

    void resize(QSize size, const char *step = nullptr)
    {
        window()->resize(size);
        QVERIFY(m_qml->settle());
        QVERIFY(m_app->waitForPages());
        if (step)
            test::grab(window(), QStringLiteral("%1-%2x%3").arg(step).arg(size.width()).arg(size.height()));
    }

    // A tap on the verb's row in the alphabetical list.
    void openVerb(qint64 id)
    {
        VerbListTableViewController *list = home()->verbListTableViewController();
        const int row = list->rowForVerbId(double(id));
        QVERIFY(row >= 0);
        list->selectRow(row);
    }

    // The one conjugation screen, wherever it is shown.
    QQuickItem *detail() const
    {
        for (QQuickItem *item : m_qml->items(false)) {
            if (item->objectName() == QLatin1String("detailPage") || item->objectName() == QLatin1String("detailColumn"))
                return item;
        }
        return nullptr;
    }
    VerbDetailTableViewController *detailController() const
    {
        QQuickItem *screen = detail();
        return screen ? screen->findChild<VerbDetailTableViewController *>() : nullptr;
    }
    QQuickItem *presentation(const char *name) const
    {
        QQuickItem *screen = detail();
        return screen ? screen->findChild<QQuickItem *>(QLatin1String(name)) : nullptr;
    }
    bool visibleInWindow(QQuickItem *item) const
    {
        for (QQuickItem *p = item; p; p = p->parentItem()) {
            if (!p->isVisible())
                return false;
        }
        return test::onScreen(item);
    }
    int sectionAtTop(QQuickItem *view) const
    {
        int section = -1;
        QMetaObject::invokeMethod(view, "sectionAtTop", Q_RETURN_ARG(int, section));
        return section;
    }
    // Two tense blocks side by side in the grid: the same row, so either at the top is the place.
    bool sameGridRow(QQuickItem *grid, int section, int other) const
    {
        double top = -1;
        double otherTop = -2;
        QMetaObject::invokeMethod(grid, "blockTop", Q_RETURN_ARG(double, top), Q_ARG(int, section - 1));
        QMetaObject::invokeMethod(grid, "blockTop", Q_RETURN_ARG(double, otherTop), Q_ARG(int, other - 1));
        return top >= 0 && qFuzzyCompare(top, otherTop);
    }
    QStringList history() const
    {
        return test::querySingleColumn(VerbStore::workingCopyPath(m_app->environment.documentsDirectory),
                                       QStringLiteral("SELECT verbid || ':' || timestamp FROM history ORDER BY verbid"));
    }
    // The list's row at the top edge of its view.
    int topRow(QQuickItem *listView) const
    {
        int row = -1;
        QMetaObject::invokeMethod(listView, "indexAt", Q_RETURN_ARG(int, row), Q_ARG(qreal, 100),
                                  Q_ARG(qreal, listView->property("contentY").toReal() + 1));
        return row;
    }
    QQuickItem *listViewOf(const QObject *model) const
    {
        for (QQuickItem *item : m_qml->items(false)) {
            if (item->inherits("QQuickListView") && item->property("model").value<QObject *>() == model)
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

    void theGridWhereverTwoBlocksFit_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<bool>("sideBySide");
        QTest::addColumn<bool>("grid");
        QTest::newRow("phone") << QSize(390, 844) << false << false;
        QTest::newRow("phone on its side") << QSize(844, 390) << false << true;
        QTest::newRow("tablet upright") << QSize(768, 1024) << false << true;
        QTest::newRow("tablet on its side") << QSize(1024, 768) << true << true;
        QTest::newRow("large tablet") << QSize(1366, 1024) << true << true;
    }

    void theGridWhereverTwoBlocksFit()
    {
        QFETCH(QSize, size);
        QFETCH(bool, sideBySide);
        QFETCH(bool, grid);
        launch(size);
        QCOMPARE(m_app->delegate->collapsed(), !sideBySide);
        openVerb(1); // andare
        resize(size, "verb");
        QQuickItem *screen = detail();
        QVERIFY(screen && visibleInWindow(screen));
        QCOMPARE(detailController()->title(), QStringLiteral("andare"));
        QQuickItem *gridView = presentation("conjugationGrid");
        QQuickItem *tableView = presentation("conjugationTable");
        QCOMPARE(gridView->isVisible(), grid);
        QCOMPARE(tableView->isVisible(), !grid);
        if (sideBySide)
            QVERIFY(visibleInWindow(listViewOf(home()->verbListTableViewController())));

        if (grid) {
            // Two or more columns of blocks no smaller than the minimum, all inside the screen,
            // each tall enough for its six forms.
            QVERIFY(gridView->property("columns").toInt() >= 2);
            int blocks = 0;
            for (QQuickItem *item : m_qml->items()) {
                if (!item->inherits("QQuickControl") || !item->property("forms").isValid() || !item->property("heading").isValid())
                    continue;
                if (item->property("kind").isValid())
                    continue; // a table section
                ++blocks;
                const QRectF rect = item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
                QVERIFY(item->width() >= 300 && item->height() >= 300);
                QVERIFY2(rect.left() >= screen->mapToScene(QPointF(0, 0)).x() && rect.right() <= size.width(),
                         qPrintable(QStringLiteral("block at %1..%2").arg(rect.left()).arg(rect.right())));
                QVERIFY(item->height() >= item->implicitHeight());
            }
            QCOMPARE(blocks, 8);
        } else {
            // The hidden grid makes no blocks: they would hold every form of the mood unseen.
            for (QQuickItem *item : m_qml->items())
                QVERIFY(!item->property("forms").isValid() || item->property("kind").isValid());
        }
        if (size.height() < 500) {
            // Slim bars: the moods sit in the title bar, and most of the height shows forms.
            QVERIFY(tableView->height() + gridView->height() > 0);
            QVERIFY2(gridView->height() >= size.height() - 110, qPrintable(QString::number(gridView->height())));
        }
        close();
    }

    void aLayoutChangeKeepsThePlaceAndIsNoNewView()
    {
        launch(QSize(390, 844));
        openVerb(1);
        resize(QSize(390, 844));
        VerbDetailTableViewController *controller = detailController();
        QVERIFY(controller && controller->title() == QStringLiteral("andare"));
        controller->selectVerbTypes(1);
        QVERIFY(m_qml->settle());
        // The subjunctive's second tense: far enough down that the table has to
        // scroll to it, near enough the top that it can reach the top edge.
        const int place = 2;
        QQuickItem *table = presentation("conjugationTable");
        QVERIFY(QMetaObject::invokeMethod(table, "showSection", Q_ARG(int, place)));
        QVERIFY(m_qml->settle());
        QCOMPARE(sectionAtTop(table), place);
        test::grab(window(), QStringLiteral("place-390x844"));

        const qint64 views = Preferences::numberOfVerbsViewed(Settings::standard());
        const int events = m_shownEvents;
        const QStringList rows = history();
        QCOMPARE(views, 1);
        QCOMPARE(events, 1);
        QVERIFY(rows.contains(QStringLiteral("3:100.0")) && rows.size() == 2);

        // Rotation, then a tablet's both ways and back: across the grid and the side-by-side line.
        for (const QSize size : {QSize(844, 390), QSize(390, 844), QSize(1024, 768), QSize(768, 1024), QSize(390, 844)}) {
            resize(size, "place");
            const QString at = QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
            QCOMPARE(detailController(), controller);
            QVERIFY2(visibleInWindow(detail()), qPrintable(at));
            QCOMPARE(controller->title(), QStringLiteral("andare"));
            QCOMPARE(controller->selectedSegment(), 1);
            QQuickItem *view = presentation(size.width() >= 660 ? "conjugationGrid" : "conjugationTable");
            QVERIFY2(view->isVisible(), qPrintable(at));
            // The tense at the top stays at the top, or as near it as the content lets it go.
            const int top = sectionAtTop(view);
            const bool grid = size.width() >= 660;
            QVERIFY2(top == place || (grid && sameGridRow(view, top, place)) || (grid
                                  && view->property("contentY").toReal() + view->height()
                                          >= view->property("contentHeight").toReal() - 0.5),
                     qPrintable(at + ": section " + QString::number(top)));
            QCOMPARE(detail()->property("placeSection").toInt(), place);
            QCOMPARE(Preferences::numberOfVerbsViewed(Settings::standard()), views);
            QCOMPARE(m_shownEvents, events);
            QCOMPARE(history(), rows);
        }

        // Choosing a verb is still a view, however the window is arranged.
        openVerb(3); // mangiare
        QVERIFY(m_qml->settle());
        QCOMPARE(Preferences::numberOfVerbsViewed(Settings::standard()), views + 1);
        QCOMPARE(m_shownEvents, events + 1);
        QCOMPARE(controller->selectedSegment(), 1);
        close();
    }

    // A settings change reloads the list under the user's finger: the verb at the
    // top stays there, even when the new order moves it.
    void theListKeepsItsPlaceAcrossSettingsChanges()
    {
        launch(QSize(390, 844));
        VerbListTableViewController *list = home()->verbListTableViewController();
        QQuickItem *view = listViewOf(list);
        QVERIFY(view);
        const int row = list->rowForVerbId(120);
        QVERIFY(row > 10);
        QVERIFY(QMetaObject::invokeMethod(view, "positionViewAtIndex", Q_ARG(int, row), Q_ARG(int, 0))); // ListView.Beginning
        QVERIFY(m_qml->settle());
        QCOMPARE(list->verbIdAt(topRow(view)), 120.0);

        Settings::standard().setBool(SettingsKeys::IncludeEnglish, false);
        home()->optionsDidClose(true);
        QVERIFY(m_qml->settle());
        QCOMPARE(list->verbIdAt(topRow(view)), 120.0);

        // By translation: "to hoe 119" sorts elsewhere, and the list follows it there.
        Settings::standard().setBool(SettingsKeys::SortByLang, false);
        Settings::standard().setString(SettingsKeys::TranslationLanguage, QStringLiteral("en"));
        home()->optionsDidClose(true);
        QVERIFY(m_qml->settle());
        QVERIFY(list->rowForVerbId(120) != row);
        QCOMPARE(list->verbIdAt(topRow(view)), 120.0);
        close();
    }

    // The uncovered action is whole, clear of the letter index, and the row's verb
    // is still there beside it.
    void theSwipeActionShowsWholeBesideItsVerb()
    {
        launch(QSize(390, 844));
        QQuickItem *row = nullptr;
        for (QQuickItem *item : m_qml->items()) {
            if (item->inherits("QQuickSwipeDelegate") && item->property("italian").toString() == QLatin1String("essere"))
                row = item;
        }
        QVERIFY(row);
        const QPointF from = row->mapToScene(QPointF(300, row->height() / 2));
        QTest::mousePress(window(), Qt::LeftButton, {}, from.toPoint());
        for (int step = 1; step <= 12; ++step)
            QTest::mouseMove(window(), (from - QPointF(step * 20, 0)).toPoint());
        QTest::mouseRelease(window(), Qt::LeftButton, {}, (from - QPointF(240, 0)).toPoint());
        QTRY_VERIFY(row->property("swipe").value<QObject *>()->property("complete").toBool());
        QVERIFY(m_qml->settle(300));
        test::grab(window(), QStringLiteral("swiped-390x844"));

        const qreal inset = row->property("trailingInset").toReal();
        QVERIFY(inset > 0);
        QQuickItem *title = nullptr;
        QQuickItem *verb = nullptr;
        for (QQuickItem *item : m_qml->items()) {
            if (!row->isAncestorOf(item))
                continue;
            if (item->inherits("QQuickIconLabel") && !item->property("text").toString().isEmpty())
                title = item;
            if (item->inherits("QQuickText") && item->property("text").toString() == QLatin1String("essere"))
                verb = item;
        }
        QVERIFY(title && verb);
        // "essere" is a favourite: the longer of the two titles.
        QCOMPARE(title->property("text").toString(), Strings::text(QStringLiteral("action.favourite.remove")));
        const QRectF titleRect = title->mapRectToScene(QRectF(0, 0, title->width(), title->height()));
        QVERIFY2(titleRect.right() <= 390 - inset && titleRect.width() >= title->implicitWidth(),
                 qPrintable(QStringLiteral("title at %1..%2").arg(titleRect.left()).arg(titleRect.right())));
        const QRectF verbRect = verb->mapRectToScene(QRectF(0, 0, verb->property("contentWidth").toReal(), verb->height()));
        QVERIFY2(verbRect.left() >= 0 && verbRect.right() <= titleRect.left() && !verb->property("truncated").toBool(),
                 qPrintable(QStringLiteral("verb at %1..%2").arg(verbRect.left()).arg(verbRect.right())));
        close();
    }

    // Every tab shows the translation in the language just chosen, without a restart;
    // Italian chosen as the language shows no second infinitive.
    void everyListFollowsTheTranslationLanguage()
    {
        launch(QSize(390, 844));
        home()->showTab(HomeViewController::FavouritesTab);
        home()->showTab(HomeViewController::HistoryTab);
        home()->showTab(HomeViewController::FavouritesTab);
        QVERIFY(m_qml->settle());
        auto translation = [](VerbTableModel *model, int row) {
            return model->data(model->index(row), VerbTableModel::TranslationRole).toString();
        };
        auto shownTranslations = [this] {
            QStringList shown;
            for (QQuickItem *item : m_qml->items()) {
                if (item->inherits("QQuickSwipeDelegate") && test::onScreen(item))
                    shown << item->property("translation").toString();
            }
            return shown;
        };
        FavouritesTableViewController *favourites = home()->favouritesTableViewController();
        HistoryTableViewController *historyList = home()->historyTableViewController();
        QCOMPARE(translation(favourites, 0), QStringLiteral("to be"));
        QCOMPARE(translation(historyList, 0), QStringLiteral("to eat"));
        QVERIFY(shownTranslations().contains(QStringLiteral("to be")));

        Settings::standard().setString(SettingsKeys::TranslationLanguage, QStringLiteral("de"));
        home()->optionsDidClose(true);
        QVERIFY(m_qml->settle());
        QCOMPARE(translation(favourites, 0), QStringLiteral("sein"));
        QCOMPARE(translation(historyList, 0), QStringLiteral("essen"));
        QCOMPARE(shownTranslations(), QStringList{QStringLiteral("sein")});
        home()->showTab(HomeViewController::HistoryTab);
        QVERIFY(m_qml->settle());
        QCOMPARE(shownTranslations(), QStringList{QStringLiteral("essen")});

        Settings::standard().setString(SettingsKeys::TranslationLanguage, QStringLiteral("it"));
        home()->optionsDidClose(true);
        QVERIFY(m_qml->settle());
        QCOMPARE(translation(historyList, 0), QString());
        QCOMPARE(shownTranslations(), QStringList{QString()});
        close();
    }
};

QTEST_MAIN(LayoutsTest)
#include "tst_layouts.moc"
