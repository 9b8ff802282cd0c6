#include "Analytics.h"
#include "CommandLineQuery.h"
#include "AppDelegate.h"
#include "Appearance.h"
#include "ConjugationServices.h"
#include "CrashLog.h"
#include "Database.h"
#include "HomeViewController.h"
#include "Screenshot.h"
#include "Settings.h"
#include "SearchFormsModel.h"
#include "ShortcutChannel.h"
#include "OptionsTableViewController.h"
#include "UserMessages.h"
#include "VerbLookup.h"
#include "VerbRef.h"

#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QHash>
#include <QPointer>
#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickWindow>

#include <cstdio>
#include <cstring>

#ifdef __GLIBC__
#include <malloc.h>
#endif

#define NORVELLA_QML_ALL
#include "QmlModules.h"

using namespace norvella;

namespace {
bool wantsScreenshot(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--screenshot") == 0 || std::strncmp(argv[i], "--screenshot=", 13) == 0)
            return true;
    }
    return false;
}

// --show: a screen that opens over the home screen, by the name of the object that shows it.
bool showOver(QObject *root, const QString &name)
{
    static const QHash<QString, QString> screens{{QStringLiteral("settings"), QStringLiteral("optionsView")},
                                                 {QStringLiteral("menu"), QStringLiteral("navigationDrawer")}};
    if (!screens.contains(name)) {
        std::fprintf(stderr, "norvella: --show wants settings or menu\n");
        return false;
    }
    QObject *screen = root->findChild<QObject *>(screens.value(name));
    if (!screen || !QMetaObject::invokeMethod(screen, "open")) {
        std::fprintf(stderr, "norvella: the %s screen is missing\n", qPrintable(name));
        return false;
    }
    return true;
}

// What a screenshot run does before it draws: pick a tab, type a search.
bool prepareScreen(QObject *root, const QString &tab, bool search, const QString &text)
{
    auto *home = root->findChild<HomeViewController *>(QStringLiteral("homeViewController"));
    if (!home) {
        std::fprintf(stderr, "norvella: the home screen is missing\n");
        return false;
    }
    if (!tab.isEmpty()) {
        // "irregular" is the list tab with its filter set.
        const bool irregular = tab == QLatin1String("irregular");
        const int tag = irregular ? int(HomeViewController::ListTab) : HomeViewController::tabForName(tab);
        if (tag < 0) {
            std::fprintf(stderr, "norvella: --tab wants list, irregular, favourites or history\n");
            return false;
        }
        home->showTab(tag);
        if (irregular && home->verbListTableViewController())
            home->verbListTableViewController()->setShowsIrregular(true);
    }
    if (search) {
        auto *field = root->findChild<QQuickItem *>(QStringLiteral("searchField"));
        if (!field) {
            std::fprintf(stderr, "norvella: the search field is missing\n");
            return false;
        }
        // A screenshot shows the readings of a form, which are read in the background.
        if (home->searchResultsController())
            home->searchResultsController()->waitForForms();
        field->forceActiveFocus();
        field->setProperty("text", text);
    }
    return true;
}

// --form: type a form and choose its reading of the --open verb (the first
// reading without one), as a tap on that row of the forms section does.
bool openAtForm(QObject *root, const QString &form, const QString &italian)
{
    if (!prepareScreen(root, {}, true, form))
        return false;
    auto *home = root->findChild<HomeViewController *>(QStringLiteral("homeViewController"));
    SearchResultsTableViewController *search = home->searchResultsController();
    const SearchFormsModel *readings = search ? search->forms() : nullptr;
    for (int row = 0; readings && row < readings->rowCount(); ++row) {
        const FormReading *reading = readings->readingAt(row);
        if (italian.isEmpty() || reading->infinitive.compare(italian, Qt::CaseInsensitive) == 0) {
            search->selectForm(row);
            return true;
        }
    }
    std::fprintf(stderr, "norvella: \"%s\" is no form of %s\n", qPrintable(form),
                 italian.isEmpty() ? "any verb" : qPrintable(QLatin1Char('"') + italian + QLatin1Char('"')));
    return false;
}

// --open and --mood: show a verb's conjugation before drawing.
bool openVerb(QQuickWindow *window, AppDelegate &delegate, const QString &italian, const QString &mood)
{
    static const QStringList moods{QStringLiteral("ind"), QStringLiteral("sub"), QStringLiteral("con"), QStringLiteral("other")};
    const int moodIndex = mood.isEmpty() ? 0 : int(moods.indexOf(mood));
    if (moodIndex < 0) {
        std::fprintf(stderr, "norvella: --mood wants ind, sub, con or other\n");
        return false;
    }
    const VerbPtr verb = delegate.queue() ? verbByInfinitive(*delegate.queue(), italian) : nullptr;
    if (!verb) {
        std::fprintf(stderr, "norvella: no verb \"%s\" in the database\n", qPrintable(italian));
        return false;
    }
    // The path a tap on a list row takes: the home screen shows the verb.
    auto *home = window->findChild<HomeViewController *>(QStringLiteral("homeViewController"));
    if (!home) {
        std::fprintf(stderr, "norvella: the home screen is missing\n");
        return false;
    }
    home->showVerb(verb);
    const QString detailName = window->property("regularWidth").toBool() ? QStringLiteral("detailColumn")
                                                                          : QStringLiteral("detailPage");
    QObject *detail = window->findChild<QObject *>(detailName);
    if (!detail) {
        std::fprintf(stderr, "norvella: the conjugation screen is missing\n");
        return false;
    }
    QMetaObject::invokeMethod(detail, "selectMood", Q_ARG(int, moodIndex));
    return true;
}

// --browse: `count` infinitives spread evenly over the alphabetical list, so
// short and long, plain and reflexive verbs all take their turn.
QStringList browseSelection(DatabaseQueue &queue, int count)
{
    QStringList all;
    queue.inDatabase([&](Database &db) {
        if (auto rows = db.executeQuery(QStringLiteral("SELECT italian FROM verb ORDER BY simplified_italian, _id"))) {
            while (rows->next())
                all << rows->stringForColumn(QStringLiteral("italian"));
            rows->close();
        }
    });
    QStringList chosen;
    for (int i = 0; i < count && !all.isEmpty(); ++i)
        chosen << all.at(qsizetype(i) * all.size() / count % all.size());
    return chosen;
}
} // namespace

int main(int argc, char **argv)
{
    QElapsedTimer sinceStart;
    sinceStart.start();
#ifdef __GLIBC__
    // glibc gives every thread that allocates an arena of its own and keeps
    // what the thread freed there for that arena alone: the search index
    // build's and the database check's scratch stayed resident beside the
    // main thread's heap (6 MB of the peak after 100 verbs). One arena lets
    // the main thread reuse it. A fixed mmap threshold keeps every block of
    // 256 kB or more out of the heap, so freeing one hands it back at once;
    // glibc's moving threshold rises to the largest block freed so far (a
    // settings read reserves 4 MB), after which blocks up to that size live
    // in the heap and stay resident when freed (another 3 to 5 MB). Set
    // before any thread exists.
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_MMAP_THRESHOLD, 256 * 1024);
#endif
    // --analyse and --conjugate print and exit before any window or user data exists.
    if (const int status = runCommandLineQuery(argc, argv); status >= 0)
        return status;
    // Offscreen rendering has to be chosen before the application object exists.
    if (wantsScreenshot(argc, argv)) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("QT_QUICK_BACKEND", "software");
    }
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("norvella"));
    QGuiApplication::setOrganizationName(QStringLiteral("Norvella"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Norvella"));
    QGuiApplication::setApplicationVersion(QStringLiteral(NORVELLA_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.quorbel.Norvella"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Italian verb conjugation reference"));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption screenshotOption(QStringLiteral("screenshot"),
                                              QStringLiteral("Render offscreen, save the window as PNG and exit."),
                                              QStringLiteral("file"));
    const QCommandLineOption sizeOption(QStringLiteral("size"), QStringLiteral("Window size, e.g. 390x844."),
                                        QStringLiteral("WxH"), QStringLiteral("390x844"));
    const QCommandLineOption shortcutOption(QStringLiteral("shortcut"),
                                            QStringLiteral("Perform a quick action: search, favourite, history or list."),
                                            QStringLiteral("type"));
    const QCommandLineOption tabOption(QStringLiteral("tab"),
                                       QStringLiteral("With --screenshot: show this tab (list, irregular, favourites or history)."),
                                       QStringLiteral("tab"));
    const QCommandLineOption searchOption(QStringLiteral("search"),
                                          QStringLiteral("With --screenshot: type this text into the search field."),
                                          QStringLiteral("text"));
    const QCommandLineOption openOption(QStringLiteral("open"),
                                        QStringLiteral("With --screenshot: open this verb (its Italian infinitive)."),
                                        QStringLiteral("verb"));
    const QCommandLineOption moodOption(QStringLiteral("mood"),
                                        QStringLiteral("With --open: show this mood (ind, sub, con or other)."),
                                        QStringLiteral("mood"));
    const QCommandLineOption formOption(QStringLiteral("form"),
                                        QStringLiteral("With --screenshot: search this conjugated form and open its "
                                                       "reading of the --open verb, its cells marked."),
                                        QStringLiteral("text"));
    const QCommandLineOption showOption(QStringLiteral("show"),
                                        QStringLiteral("With --screenshot: open this over the home screen (settings "
                                                       "or menu)."),
                                        QStringLiteral("screen"));
    const QCommandLineOption appearanceOption(QStringLiteral("appearance"),
                                              QStringLiteral("Show this appearance (system, light or dark) for this "
                                                             "run, whatever the setting says."),
                                              QStringLiteral("appearance"));
    // Timing runs for the benchmark program.
    const QCommandLineOption firstFrameOption(
            QStringLiteral("first-frame"),
            QStringLiteral("Print \"first-frame <ms>\" (milliseconds since start) when the window's first frame "
                           "is drawn, then exit."));
    const QCommandLineOption browseOption(
            QStringLiteral("browse"),
            QStringLiteral("Open this many verbs one after another the way --open does, let each draw, print "
                           "\"peak-rss <kB> kB\" (VmHWM) and exit."),
            QStringLiteral("count"));
    // Handled by runCommandLineQuery above; listed here for --help.
    const QCommandLineOption analyseOption(QStringLiteral("analyse"),
                                           QStringLiteral("Print every reading of a conjugated form and exit."),
                                           QStringLiteral("text"));
    const QCommandLineOption conjugateOption(QStringLiteral("conjugate"),
                                             QStringLiteral("Print a verb's conjugation, irregular forms starred, and exit."),
                                             QStringLiteral("verb"));
    parser.addOptions({screenshotOption, sizeOption, shortcutOption, tabOption, searchOption, openOption, moodOption,
                        formOption, showOption, firstFrameOption, browseOption, analyseOption, conjugateOption,
                        appearanceOption});
    parser.process(app);

    const bool screenshot = parser.isSet(screenshotOption);
    const bool firstFrame = parser.isSet(firstFrameOption);
    const bool browse = parser.isSet(browseOption);
    bool browseCountValid = false;
    const int browseCount = parser.value(browseOption).toInt(&browseCountValid);
    if (browse && (!browseCountValid || browseCount < 1)) {
        std::fprintf(stderr, "norvella: --browse wants a number of verbs, e.g. 100\n");
        return 2;
    }
    const QString appearance = parser.value(appearanceOption);
    if (parser.isSet(appearanceOption) && !QStringList{QStringLiteral("system"), QStringLiteral("light"),
                                                        QStringLiteral("dark")}.contains(appearance)) {
        std::fprintf(stderr, "norvella: --appearance wants system, light or dark\n");
        return 2;
    }
    const QString shortcut = normalisedShortcutType(parser.value(shortcutOption));
    const QSize size = parseSize(parser.value(sizeOption));
    if (!size.isValid()) {
        std::fprintf(stderr, "norvella: --size wants WIDTHxHEIGHT, e.g. 390x844\n");
        return 2;
    }

    // One running instance, as on a phone: a later launch hands its request (the
    // window, or its quick action) to the instance that runs, and ends. Screenshot
    // and timing runs stand alone: they neither forward nor take requests.
    ShortcutChannel channel;
    if (!screenshot && !firstFrame && !browse) {
        const QString folder = ShortcutChannel::privateFolder();
        if (!folder.isEmpty() && channel.claim(folder) == ShortcutChannel::Claim::Running) {
            if (ShortcutChannel::forward(ShortcutChannel::socketPath(folder), ShortcutChannel::messageFor(shortcut)))
                return 0;
            CrashLog::log(QStringLiteral("The running instance did not answer; opening a window of this one"));
        }
    }

    QQuickStyle::setStyle(QStringLiteral("Basic"));
    QQmlApplicationEngine engine;
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));

    // Usage events from the screens go to the one local analytics service.
    ConjugationServices::setEventHandler([](const QString &name, const QVariantMap &parameters) {
        Analytics::shared().logEvent(name, parameters);
    });
    ConjugationServices::setReviewHandler([] { CrashLog::log(QStringLiteral("review requested")); });
    OptionsTableViewController::setAnalyticsEventHandler([](const QString &name, const QVariantMap &parameters) {
        Analytics::shared().logEvent(name, parameters);
    });
    OptionsTableViewController::setAnalyticsCollectionHandler([](bool on) { Analytics::shared().setCollectionEnabled(on); });

    AppDelegate delegate(LaunchEnvironment::standard(), Settings::standard());
    delegate.setWindowFactory([&](AppDelegate &d) {
        engine.setInitialProperties({{QStringLiteral("appDelegate"), QVariant::fromValue(&d)},
                                     {QStringLiteral("width"), size.width()},
                                     {QStringLiteral("height"), size.height()}});
        engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Norvella/App/Main.qml")));
    });
    delegate.didFinishLaunching(shortcut);
    if (parser.isSet(appearanceOption))
        Appearance::shared().setChoice(appearance);
    // The reason is already in the log and on stderr.
    if (delegate.status() == AppDelegate::Status::FatalError)
        return 1;
    if (engine.rootObjects().isEmpty()) {
        std::fprintf(stderr, "norvella: the main window could not be loaded\n");
        return 1;
    }
    auto *window = qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());

    // Notices reach the window from now on, those posted during the launch first.
    UserMessages::setListener([shown = QPointer<QQuickWindow>(window)](const QString &text) {
        if (shown)
            QMetaObject::invokeMethod(shown, "showMessage", Qt::AutoConnection, Q_ARG(QString, text));
    });
    const auto bringForward = [window] {
        window->setWindowStates(window->windowStates() & ~Qt::WindowMinimized);
        window->show();
        window->raise();
        window->requestActivate();
    };
    QObject::connect(&channel, &ShortcutChannel::activationRequested, window, [bringForward] {
        CrashLog::log(QStringLiteral("Another launch asked for the window"));
        bringForward();
    });
    QObject::connect(&channel, &ShortcutChannel::shortcutReceived, &delegate,
                     [&delegate, bringForward](const QString &type) {
                         CrashLog::log(QStringLiteral("Quick action from another launch: ") + type);
                         delegate.performActionForShortcutItem(type);
                         bringForward();
                     });

    if (screenshot) {
        if (!prepareScreen(window, parser.value(tabOption), parser.isSet(searchOption), parser.value(searchOption)))
            return 2;
        if (parser.isSet(formOption)) {
            if (!openAtForm(window, parser.value(formOption), parser.value(openOption)))
                return 2;
        } else if (parser.isSet(openOption)
                   && !openVerb(window, delegate, parser.value(openOption), parser.value(moodOption))) {
            return 2;
        }
        if (parser.isSet(showOption) && !showOver(window, parser.value(showOption)))
            return 2;
        auto *shot = new Screenshot(window, parser.value(screenshotOption), &app);
        shot->start();
        return app.exec();
    }
    if (firstFrame) {
        new FirstFrameReport(window, sinceStart, &app);
        return app.exec();
    }
    if (browse) {
        const QStringList verbs = delegate.queue() ? browseSelection(*delegate.queue(), browseCount) : QStringList();
        if (verbs.isEmpty()) {
            std::fprintf(stderr, "norvella: there are no verbs to browse\n");
            return 2;
        }
        auto *run = new BrowseRun(window, verbs, [&](const QString &italian) {
            return openVerb(window, delegate, italian, {});
        }, &app);
        run->start();
        return app.exec();
    }

    return app.exec();
}
