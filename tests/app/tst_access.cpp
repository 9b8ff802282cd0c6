// The window as a screen reader and a keyboard user meet it, at phone and tablet
// sizes: every control on every screen has a name, a role and an action that does
// what a tap does; modal sheets hide what is behind them; and the keys alone open
// verbs, switch moods and come back.
#include "AppWindow.h"
#include "Strings.h"

#include <QAccessible>
#include <QQuickItem>

#define NORVELLA_QML_ALL
#include "QmlModules.h"

using namespace norvella;

namespace {

bool interactive(QAccessible::Role role)
{
    switch (role) {
    case QAccessible::Button:
    case QAccessible::CheckBox:
    case QAccessible::RadioButton:
    case QAccessible::PageTab:
    case QAccessible::MenuItem:
    case QAccessible::ListItem:
    case QAccessible::Link:
    case QAccessible::EditableText:
    case QAccessible::ComboBox:
        return true;
    default:
        return false;
    }
}

QString describe(QAccessibleInterface *iface)
{
    return QStringLiteral("%1 \"%2\" (%3)")
            .arg(QString::fromLatin1(iface->object() ? iface->object()->metaObject()->className() : "?"),
                 iface->text(QAccessible::Name))
            .arg(int(iface->role()), 0, 16);
}

// What a screen reader can reach: shown, inside the window, not scrolled out of view.
QList<QAccessibleInterface *> reachable(QQuickWindow *window)
{
    QList<QAccessibleInterface *> out;
    const QRect screen(window->mapToGlobal(QPoint(0, 0)), window->size());
    const std::function<void(QAccessibleInterface *)> walk = [&](QAccessibleInterface *iface) {
        for (int i = 0; i < iface->childCount(); ++i) {
            QAccessibleInterface *child = iface->child(i);
            if (!child || child->state().invisible)
                continue;
            auto *item = qobject_cast<QQuickItem *>(child->object());
            if (item && !test::onScreen(item))
                continue;
            if (child->rect().intersects(screen))
                out << child;
            walk(child);
        }
    };
    walk(QAccessible::queryAccessibleInterface(window));
    return out;
}

} // namespace

class AccessTest : public QObject
{
    Q_OBJECT

private:
    test::AppWindow *m_app = nullptr;
    QQuickWindow *m_window = nullptr;
    test::QmlScreen *m_qml = nullptr;

    QAccessibleInterface *find(QAccessible::Role role, const QString &name) const
    {
        for (QAccessibleInterface *iface : reachable(m_window)) {
            if (iface->role() == role && iface->text(QAccessible::Name) == name)
                return iface;
        }
        return nullptr;
    }

    bool act(QAccessibleInterface *iface, const QString &action = QAccessibleActionInterface::pressAction())
    {
        if (!iface || !iface->actionInterface() || !iface->actionInterface()->actionNames().contains(action))
            return false;
        iface->actionInterface()->doAction(action);
        // A popup closing may leave nothing to draw; the checks that follow say what changed.
        m_qml->settle(400);
        return true;
    }

    // Every control a user can operate on the screen as it is now.
    void checkScreen(const char *screen, bool titled = true)
    {
        const QList<QAccessibleInterface *> all = reachable(m_window);
        int controls = 0;
        for (QAccessibleInterface *iface : all) {
            if (!interactive(iface->role()))
                continue;
            ++controls;
            const QString what = QStringLiteral("%1: %2").arg(QLatin1String(screen), describe(iface));
            QVERIFY2(!iface->text(QAccessible::Name).trimmed().isEmpty(), qPrintable(what + " has no name"));
            QVERIFY2(iface->actionInterface(), qPrintable(what + " has no actions"));
            const QStringList actions = iface->actionInterface()->actionNames();
            const bool operable = iface->role() == QAccessible::EditableText
                    ? actions.contains(QAccessibleActionInterface::setFocusAction())
                    : actions.contains(QAccessibleActionInterface::pressAction())
                            || actions.contains(QAccessibleActionInterface::toggleAction());
            QVERIFY2(operable, qPrintable(what + " offers only " + actions.join(u',')));
        }
        QVERIFY2(controls > 0, screen);
        const bool heading = std::any_of(all.begin(), all.end(),
                                         [](QAccessibleInterface *i) { return i->role() == QAccessible::Heading; });
        QVERIFY2(heading || !titled, qPrintable(QStringLiteral("%1 has no heading").arg(QLatin1String(screen))));
    }

    // Nothing behind an open sheet or drawer is exposed.
    void checkNothingBehind(const char *screen, const QStringList &behind)
    {
        for (QAccessibleInterface *iface : reachable(m_window)) {
            QVERIFY2(!behind.contains(iface->text(QAccessible::Name)),
                     qPrintable(QStringLiteral("%1 exposes %2").arg(QLatin1String(screen), describe(iface))));
        }
    }

    bool detailShows(const QString &italian) const { return m_app->detailShows(italian); }

    int selectedMood() const
    {
        for (QObject *object : m_window->findChildren<QObject *>()) {
            if (object->inherits("norvella::VerbDetailTableViewController")
                && object->property("hasVerb").toBool()) {
                auto *screen = qobject_cast<QQuickItem *>(object->parent());
                if (!screen || screen->isVisible())
                    return object->property("selectedSegment").toInt();
            }
        }
        return -1;
    }

    bool drawerOpened() const
    {
        const QList<QObject *> all = m_window->findChildren<QObject *>();
        return std::any_of(all.begin(), all.end(),
                           [](QObject *o) { return o->inherits("QQuickDrawer") && o->property("opened").toBool(); });
    }

    void waitForPages() { QVERIFY(m_app->waitForPages(400)); }

    void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(m_window, Qt::Key(key), modifiers);
        QVERIFY(m_qml->settle(400));
    }

    void type(const QString &text)
    {
        for (const QChar c : text)
            QTest::keyClick(m_window, c.toLatin1());
    }

    QString focusedName() const
    {
        QQuickItem *item = m_window->activeFocusItem();
        return item ? test::accessibleName(item) : QString();
    }

    // A fresh documents folder and database around one window of the app.
    template<typename Body>
    void withApp(const QSize &size, Body body)
    {
        test::AppWindow app;
        QVERIFY(app.launch(size));
        m_app = &app;
        m_qml = &app.qml;
        m_window = app.window();
        QVERIFY(m_qml->settle(400));
        body(app.home());
        QVERIFY2(app.close(), test::WarningCollector::report());
    }

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        // As when a screen reader runs: controls build their accessible parts.
        QAccessible::setActive(true);
    }

    void sizes_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("phone") << QSize(390, 844);
        QTest::newRow("tablet") << QSize(1024, 768);
    }

    void everyScreenThroughTheScreenReader_data() { sizes_data(); }
    void everyScreenThroughTheScreenReader()
    {
        QFETCH(QSize, size);
        const bool phone = size.width() < 700;
        withApp(size, [&](HomeViewController *home) {
            QVERIFY(home);
            const QString menu = Strings::text(QStringLiteral("menu.open"));
            const QString searchName = Strings::text(QStringLiteral("search.placeholder"));
            checkScreen("list");
            QVERIFY(find(QAccessible::PageTab, Strings::text(QStringLiteral("list.filter.irregular"))));
            // The letter strip offers its letters to a screen reader, who cannot drag over it
            // (the five fixture verbs fit the screen, so there is nothing to scroll to here).
            QVERIFY(act(find(QAccessible::Button, QStringLiteral("M"))));

            // The tabs are tabs, the chosen one is marked, and pressing one shows it.
            QAccessibleInterface *favouritesTab = find(QAccessible::PageTab, Strings::text(QStringLiteral("tabs.favourites")));
            QVERIFY(favouritesTab);
            QVERIFY(!favouritesTab->state().selected);
            QVERIFY(act(favouritesTab));
            QCOMPARE(home->selectedTab(), int(HomeViewController::FavouritesTab));
            QVERIFY(find(QAccessible::PageTab, Strings::text(QStringLiteral("tabs.favourites")))->state().selected);
            QVERIFY(act(find(QAccessible::PageTab, Strings::text(QStringLiteral("tabs.history")))));
            QCOMPARE(home->selectedTab(), int(HomeViewController::HistoryTab));
            QVERIFY(act(find(QAccessible::PageTab, Strings::text(QStringLiteral("tabs.list")))));
            QCOMPARE(home->selectedTab(), int(HomeViewController::ListTab));

            // A row's swipe action is there without a swipe, and its state is in the description.
            QAccessibleInterface *row = find(QAccessible::ListItem, QStringLiteral("essere"));
            QVERIFY(row);
            QVERIFY(!row->text(QAccessible::Description).contains(Strings::text(QStringLiteral("list.favourite"))));
            QAccessibleInterface *favourite = nullptr;
            for (int i = 0; i < row->childCount(); ++i) {
                if (row->child(i)->text(QAccessible::Name) == Strings::text(QStringLiteral("action.favourite")))
                    favourite = row->child(i);
            }
            QVERIFY(favourite);
            QVERIFY(act(favourite));
            row = find(QAccessible::ListItem, QStringLiteral("essere"));
            QVERIFY(row->text(QAccessible::Description).endsWith(Strings::text(QStringLiteral("list.favourite"))));
            QVERIFY(act(find(QAccessible::PageTab, Strings::text(QStringLiteral("tabs.favourites")))));
            checkScreen("favourites");
            QVERIFY(find(QAccessible::ListItem, QStringLiteral("essere")));
            QVERIFY(act(find(QAccessible::PageTab, Strings::text(QStringLiteral("tabs.list")))));

            // The search field is named and takes focus from the screen reader.
            QAccessibleInterface *search = find(QAccessible::EditableText, searchName);
            QVERIFY(act(search, QAccessibleActionInterface::setFocusAction()));
            QVERIFY(m_window->activeFocusItem() && m_window->activeFocusItem()->objectName() == "searchField");
            m_window->activeFocusItem()->setProperty("text", QStringLiteral("mang"));
            QVERIFY(m_qml->settle(400));
            checkScreen("search");
            QVERIFY(act(find(QAccessible::Button, Strings::text(QStringLiteral("search.cancel")))));
            QVERIFY(!find(QAccessible::Button, Strings::text(QStringLiteral("search.cancel"))));

            // A row opens its verb; on the conjugation screen the moods are tabs.
            QVERIFY(act(find(QAccessible::ListItem, QStringLiteral("andare"))));
            waitForPages();
            QVERIFY(detailShows(QStringLiteral("andare")));
            checkScreen("conjugation");
            QAccessibleInterface *moods = nullptr;
            for (QAccessibleInterface *iface : reachable(m_window)) {
                if (iface->role() == QAccessible::PageTabList && iface->text(QAccessible::Name) == Strings::text(QStringLiteral("conjugation.moods")))
                    moods = iface;
            }
            QVERIFY(moods);
            QCOMPARE(moods->childCount(), 4);
            QVERIFY(moods->child(0)->state().selected && moods->child(0)->state().checked);
            // Qt Quick Controls report their built-in role whatever Accessible.role says.
            QCOMPARE(moods->child(1)->role(), QAccessible::PageTab);
            // A form plays from its button and offers to stop while it speaks.
            QAccessibleInterface *play = nullptr;
            for (QAccessibleInterface *iface : reachable(m_window)) {
                if (iface->role() == QAccessible::Button && iface->object()->inherits("QQuickButton")
                    && iface->text(QAccessible::Name).startsWith(Strings::text(QStringLiteral("conjugation.play")).section(u'“', 0, 0)))
                    play = iface;
            }
            QVERIFY(play);
            const QString playName = play->text(QAccessible::Name);
            QVERIFY(act(play));
            QTRY_VERIFY(play->text(QAccessible::Name) != playName);
            QVERIFY(play->text(QAccessible::Name).startsWith(Strings::text(QStringLiteral("conjugation.stop")).section(u'“', 0, 0)));
            QVERIFY(act(play));
            QTRY_COMPARE(play->text(QAccessible::Name), playName);
            QVERIFY(act(moods->child(2)));
            QCOMPARE(selectedMood(), 2);
            QVERIFY(moods->child(2)->state().selected && !moods->child(0)->state().selected);

            // The toolbar's favourite.
            QAccessibleInterface *star = find(QAccessible::Button, Strings::text(QStringLiteral("conjugation.favourite.add")));
            QVERIFY(act(star));
            QVERIFY(find(QAccessible::Button, Strings::text(QStringLiteral("conjugation.favourite.remove"))));

            // The share sheet hides the screen behind it and closes from its own button.
            QVERIFY(act(find(QAccessible::Button, Strings::text(QStringLiteral("conjugation.export")))));
            checkScreen("share");
            checkNothingBehind("share", {Strings::text(QStringLiteral("conjugation.export")), menu, searchName});
            const QList<QAccessibleInterface *> shareButtons = reachable(m_window);
            const auto close = std::find_if(shareButtons.begin(), shareButtons.end(), [](QAccessibleInterface *i) {
                return i->role() == QAccessible::Button && i->object()->inherits("QQuickButton")
                        && i->object()->property("flat").toBool() && i->object()->property("font").value<QFont>().bold();
            });
            QVERIFY(close != shareButtons.end());
            QVERIFY(act(*close));
            QVERIFY(find(QAccessible::Button, Strings::text(QStringLiteral("conjugation.export"))));

            if (phone) {
                QVERIFY(act(find(QAccessible::Button, Strings::text(QStringLiteral("conjugation.back")))));
                waitForPages();
                QVERIFY(!detailShows(QStringLiteral("andare")));
            }

            // The drawer, alone while open; its rows work.
            QVERIFY(act(find(QAccessible::Button, menu)));
            QTRY_VERIFY(drawerOpened());
            checkScreen("drawer");

            checkNothingBehind("drawer", {menu, searchName, QStringLiteral("andare")});
            QVERIFY(act(find(QAccessible::ListItem, Strings::text(QStringLiteral("options.button")))));
            QTRY_VERIFY(find(QAccessible::Button, Strings::text(QStringLiteral("common.done"))));

            // Settings: switches with their state, segments as checkable buttons, rows opening sheets.
            checkScreen("settings");
            checkNothingBehind("settings", {menu, searchName, QStringLiteral("andare")});
            QAccessibleInterface *conjugations = find(QAccessible::CheckBox, Strings::text(QStringLiteral("settings.includeconjugations")));
            QVERIFY(conjugations);
            const bool wasOn = conjugations->state().checked;
            QVERIFY(act(conjugations, QAccessibleActionInterface::toggleAction()));
            QCOMPARE(find(QAccessible::CheckBox, Strings::text(QStringLiteral("settings.includeconjugations")))->state().checked, !wasOn);
            QVERIFY(act(find(QAccessible::CheckBox, Strings::text(QStringLiteral("settings.includeconjugations")))));
            QCOMPARE(find(QAccessible::CheckBox, Strings::text(QStringLiteral("settings.includeconjugations")))->state().checked, wasOn);

            const QString sortTranslated = Strings::text(QStringLiteral("settings.sortby")) + QStringLiteral(": ")
                    + Strings::text(QStringLiteral("settings.sortby.translated"));
            QAccessibleInterface *segment = find(QAccessible::RadioButton, sortTranslated);
            QVERIFY(segment);
            QVERIFY(!segment->state().checked);
            QVERIFY(act(segment));
            QVERIFY(find(QAccessible::RadioButton, sortTranslated)->state().checked);
            // The row around a switch is not a second, silent button.
            QVERIFY(!find(QAccessible::Button, Strings::text(QStringLiteral("settings.includeconjugations"))));

            const QString translation = Strings::text(QStringLiteral("settings.translations"));
            QAccessibleInterface *translationRow = nullptr;
            for (QAccessibleInterface *iface : reachable(m_window)) {
                if (iface->role() == QAccessible::Button && iface->text(QAccessible::Name).startsWith(translation + u','))
                    translationRow = iface;
            }
            QVERIFY(translationRow);
            QVERIFY(act(translationRow));
            checkScreen("choices", false); // the language sheet has no title
            checkNothingBehind("choices", {Strings::text(QStringLiteral("settings.includeconjugations")), menu});
            QVERIFY(act(find(QAccessible::ListItem, Strings::text(QStringLiteral("settings.translations.french")))));
            QVERIFY(find(QAccessible::Button, translation + QStringLiteral(", ") + Strings::text(QStringLiteral("settings.translations.french"))));
            QVERIFY(act(find(QAccessible::Button, Strings::text(QStringLiteral("common.done")))));
            QVERIFY(find(QAccessible::Button, menu));
        });
    }

    void keysAlone_data() { sizes_data(); }
    void keysAlone()
    {
        QFETCH(QSize, size);
        const bool phone = size.width() < 700;
        withApp(size, [&](HomeViewController *home) {
            QVERIFY(home);
            // Tab reads the home screen from the top: the menu, not the tab bar.
            key(Qt::Key_Tab);
            QCOMPARE(focusedName(), Strings::text(QStringLiteral("menu.open")));
            // From search: Ctrl+F, a few letters, Down into the results, Enter.
            key(Qt::Key_F, Qt::ControlModifier);
            QCOMPARE(m_window->activeFocusItem()->objectName(), QStringLiteral("searchField"));
            type(QStringLiteral("ess"));
            QVERIFY(m_qml->settle(400));
            QCOMPARE(home->searchResultsController()->rowCount(), 1);
            key(Qt::Key_Down);
            QCOMPARE(focusedName(), QStringLiteral("essere"));
            // The ring shows where the keyboard is.
            const QList<QQuickItem *> rings = m_window->activeFocusItem()->childItems();
            QVERIFY(std::any_of(rings.begin(), rings.end(), [](QQuickItem *i) {
                return i->inherits("norvella::FocusRing") && i->isVisible();
            }));
            key(Qt::Key_Return);
            waitForPages();
            QVERIFY(detailShows(QStringLiteral("essere")));

            if (!phone) {
                // Beside the list the conjugation is reached with Tab.
                for (int i = 0; i < 40 && selectedMood() >= 0; ++i) {
                    QQuickItem *focus = m_window->activeFocusItem();
                    if (focus && focus->x() >= 0 && focus->mapToScene(QPointF(0, 0)).x() > 420)
                        break;
                    key(Qt::Key_Tab);
                }
                QVERIFY(m_window->activeFocusItem()->mapToScene(QPointF(0, 0)).x() > 420);
            }
            // Left and Right step through the moods.
            QCOMPARE(selectedMood(), 0);
            key(Qt::Key_Right);
            QCOMPARE(selectedMood(), 1);
            key(Qt::Key_Right);
            key(Qt::Key_Right);
            key(Qt::Key_Right);
            QCOMPARE(selectedMood(), 3);
            key(Qt::Key_Left);
            QCOMPARE(selectedMood(), 2);
            if (phone) {
                // Tab reads the screen from the top: the way back, not the toolbar.
                key(Qt::Key_Tab);
                QCOMPARE(focusedName(), Strings::text(QStringLiteral("conjugation.back")));
            }

            // Escape closes the share sheet first, and only then leaves the verb.
            QVERIFY(m_qml->click(m_qml->button(Strings::text(QStringLiteral("conjugation.export")))));
            const auto shareOpen = [&] {
                for (QObject *o : m_window->findChildren<QObject *>())
                    if (o->inherits("norvella::ShareSheetController") && o->parent()->property("visible").toBool())
                        return true;
                return false;
            };
            QVERIFY(shareOpen());
            key(Qt::Key_Escape);
            QTRY_VERIFY(!shareOpen());
            QVERIFY(detailShows(QStringLiteral("essere")));

            if (phone) {
                // Escape comes back to the results.
                key(Qt::Key_Escape);
                waitForPages();
                QVERIFY(!detailShows(QStringLiteral("essere")));
            }
            // Escape in the search field cancels the search.
            key(Qt::Key_F, Qt::ControlModifier);
            QCOMPARE(m_window->activeFocusItem()->objectName(), QStringLiteral("searchField"));
            key(Qt::Key_Escape);
            QCOMPARE(m_window->findChild<QQuickItem *>("searchField")->property("text").toString(), QString());
            QVERIFY(!m_window->findChild<QQuickItem *>("searchField")->hasActiveFocus());

            // From the list: Down from the field to the first row, Down again, Enter.
            key(Qt::Key_F, Qt::ControlModifier);
            key(Qt::Key_Down);
            const QString first = home->verbListTableViewController()->verbAtRow(0)->italian;
            const QString second = home->verbListTableViewController()->verbAtRow(1)->italian;
            QCOMPARE(focusedName(), first);
            key(Qt::Key_Down);
            QCOMPARE(focusedName(), second);
            key(Qt::Key_Enter);
            waitForPages();
            QVERIFY(detailShows(second));
            if (phone) {
                key(Qt::Key_Escape);
                waitForPages();
                QVERIFY(!detailShows(second));
                // Back on the list, where the keyboard left it.
                QCOMPARE(focusedName(), second);
            }

            // Typing on the list goes to the search.
            m_window->findChild<QQuickItem *>("searchField")->setFocus(false);
            QTest::keyClick(m_window, Qt::Key_F, Qt::ControlModifier);
            key(Qt::Key_Down);
            type(QStringLiteral("man"));
            QVERIFY(m_qml->settle(400));
            QCOMPARE(m_window->findChild<QQuickItem *>("searchField")->property("text").toString(), QStringLiteral("man"));
            key(Qt::Key_Escape);

            // Escape closes the drawer and Settings.
            QVERIFY(m_qml->click(m_qml->button(Strings::text(QStringLiteral("menu.open")))));
            // Closed means gone, not merely closing: the next tap must reach the bar.
            const auto drawerShown = [&] {
                const QList<QObject *> all = m_window->findChildren<QObject *>();
                return std::any_of(all.begin(), all.end(),
                                   [](QObject *o) { return o->inherits("QQuickDrawer") && o->property("visible").toBool(); });
            };
            QVERIFY(drawerShown());
            key(Qt::Key_Escape);
            QTRY_VERIFY(!drawerShown());
            QVERIFY(m_qml->click(m_qml->button(Strings::text(QStringLiteral("menu.open")))));
            QTRY_VERIFY(drawerOpened());
            QCOMPARE(focusedName(), Strings::text(QStringLiteral("options.button")));
            key(Qt::Key_Return);
            QVERIFY(m_qml->settle(600));
            QVERIFY(m_qml->button(Strings::text(QStringLiteral("common.done"))));
            key(Qt::Key_Escape);
            QVERIFY(m_qml->settle(400));
            QVERIFY(!m_qml->button(Strings::text(QStringLiteral("common.done"))));
        });
    }
};

QTEST_MAIN(AccessTest)
#include "tst_access.moc"
