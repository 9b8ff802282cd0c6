// The conjugation screen as QML: loads without warnings at phone and tablet
// sizes, keeps every text whole and every control reachable, and answers taps.
// NORVELLA_SCREENSHOT_DIR=/some/folder saves each state it visits as a PNG;
// NORVELLA_MASTER_DB=/path/verbs.db also runs the checks on real verbs
// (NORVELLA_SCREENSHOT_VERBS=andare,alzarsi,... picks them).
#include "ConjugationTestFixture.h"
#include "DatabaseQueueRef.h"
#include "RoundProgressView.h"
#include "SpeechSynthesizer.h"
#include "VerbDetailTableViewController.h"
#include "VerbLookup.h"
#include "VerbRef.h"

#include <QDir>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(Norvella_ConjugationPlugin)
Q_IMPORT_QML_PLUGIN(Norvella_ResourcesPlugin)

using namespace norvella;
using norvella::test::ConjugationFixture;

namespace {

QStringList &qmlWarnings()
{
    static QStringList warnings;
    return warnings;
}

QtMessageHandler previousHandler = nullptr;

void recordWarnings(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtWarningMsg || type == QtCriticalMsg || type == QtFatalMsg)
        qmlWarnings() << message;
    if (previousHandler)
        previousHandler(type, context, message);
}

const char *harness = R"(
import QtQuick
import QtQuick.Controls
import Norvella.Conjugation

ApplicationWindow {
    id: window
    property QtObject verb
    property QtObject queue
    property bool back: false
    visible: true

    VerbDetailTableView {
        objectName: "detail"
        anchors.fill: parent
        verb: window.verb
        queue: window.queue
        showsBackButton: window.back
    }
}
)";

QObject *accessibleOf(const QObject *item)
{
    for (QObject *child : item->children()) {
        if (qstrcmp(child->metaObject()->className(), "QQuickAccessibleAttached") == 0)
            return child;
    }
    return nullptr;
}

QString accessibleName(const QObject *item)
{
    const QObject *attached = accessibleOf(item);
    return attached ? attached->property("name").toString() : QString();
}

void collect(QQuickItem *item, QList<QQuickItem *> &out)
{
    if (!item->isVisible())
        return;
    out << item;
    for (QQuickItem *child : item->childItems())
        collect(child, out);
}

// Whether the item is on screen and not scrolled out of a clipping view.
bool onScreen(QQuickItem *item)
{
    const QRectF rect = item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
    for (QQuickItem *p = item->parentItem(); p; p = p->parentItem()) {
        if (p->clip()) {
            const QRectF clipRect = p->mapRectToScene(QRectF(0, 0, p->width(), p->height()));
            if (!clipRect.intersects(rect))
                return false;
        }
    }
    return rect.intersects(QRectF(QPointF(0, 0), item->window()->size()));
}

} // namespace

class VerbDetailViewTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ConjugationFixture> m_fixture;
    std::unique_ptr<QQmlEngine> m_engine;
    std::unique_ptr<QQuickWindow> m_window;
    std::unique_ptr<DatabaseQueueRef> m_queueRef;
    std::unique_ptr<DatabaseQueueRef> m_previousQueueRef;
    std::unique_ptr<VerbRef> m_verbRef;

    // One window serves every test: Qt 6.4 mixes up its animation timing when a
    // window goes away while an animation runs, and the app has a single window too.
    void open(const VerbPtr &verb, QSize size, bool back = false)
    {
        auto verbRef = std::make_unique<VerbRef>(verb);
        QObject *verbObject = verb ? verbRef.get() : nullptr;
        if (!m_window) {
            QQmlComponent component(m_engine.get());
            component.setData(harness, QUrl(QStringLiteral("qrc:/tests/Harness.qml")));
            QObject *object = component.createWithInitialProperties(
                    {{QStringLiteral("width"), size.width()},
                     {QStringLiteral("height"), size.height()},
                     {QStringLiteral("back"), back},
                     {QStringLiteral("verb"), QVariant::fromValue(verbObject)},
                     {QStringLiteral("queue"), QVariant::fromValue<QObject *>(m_queueRef.get())}});
            QVERIFY2(object, qPrintable(component.errorString()));
            m_window.reset(qobject_cast<QQuickWindow *>(object));
            QVERIFY(m_window);
            QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        } else {
            // A verb chosen while the screen is up replaces the one it shows.
            m_window->resize(size);
            m_window->setProperty("back", back);
            m_window->setProperty("queue", QVariant::fromValue<QObject *>(m_queueRef.get()));
            m_window->setProperty("verb", QVariant::fromValue(verbObject));
        }
        m_verbRef = std::move(verbRef);
        controller()->selectVerbTypes(0);
        for (QQuickItem *item : visibleItems()) {
            if (item->inherits("QQuickListView"))
                QMetaObject::invokeMethod(item, "positionViewAtBeginning");
        }
        settle();
        // Speech in tests is silent but keeps its pace, as on a machine without sound.
        auto *synth = new SpeechSynthesizer;
        synth->setAudioDevice(QStringLiteral("norvella-test-silence"));
        controller()->setSpeechSynthesizer(synth);
        controller()->setVolumeProbe([] { return std::optional<double>(); });
        QCOMPARE(controller()->title(), verb ? verb->italian : QString());
    }

    void settle()
    {
        for (int i = 0; i < 3; ++i) {
            QSignalSpy swapped(m_window.get(), &QQuickWindow::frameSwapped);
            m_window->update();
            QVERIFY(swapped.wait(5000));
        }
    }

    VerbDetailTableViewController *controller() const
    {
        return m_window->findChild<VerbDetailTableViewController *>();
    }

    QQuickItem *screen() const { return m_window->findChild<QQuickItem *>(QStringLiteral("detail")); }

    QList<QQuickItem *> visibleItems() const
    {
        QList<QQuickItem *> items;
        // The window's root item holds the page and the overlay with any dialog.
        collect(m_window->contentItem(), items);
        return items;
    }

    QQuickItem *button(const QString &name) const
    {
        for (QQuickItem *item : visibleItems()) {
            if (item->inherits("QQuickAbstractButton") && onScreen(item) && accessibleName(item) == name)
                return item;
        }
        return nullptr;
    }

    void click(QQuickItem *item)
    {
        QVERIFY(item);
        const QPointF centre = item->mapToScene(QPointF(item->width() / 2, item->height() / 2));
        QTest::mouseClick(m_window.get(), Qt::LeftButton, {}, centre.toPoint());
        settle();
    }

    void save(const QString &name)
    {
        const QString folder = qEnvironmentVariable("NORVELLA_SCREENSHOT_DIR");
        if (folder.isEmpty())
            return;
        QDir().mkpath(folder);
        const QString path = QDir(folder).filePath(name + QStringLiteral(".png"));
        QVERIFY2(m_window->grabWindow().save(path), qPrintable(path));
    }

    // Every text on screen is whole, and every control is big enough and named.
    void checkLayout(const QString &state)
    {
        int texts = 0;
        for (QQuickItem *item : visibleItems()) {
            if (!onScreen(item))
                continue;
            const QString where = state + QStringLiteral(": ") + item->property("text").toString();
            if (item->inherits("QQuickText") && !item->property("text").toString().isEmpty()) {
                ++texts;
                QVERIFY2(!item->property("truncated").toBool(), qPrintable(where + " is truncated"));
                QVERIFY2(item->property("contentWidth").toReal() <= item->width() + 1,
                         qPrintable(where + " is wider than its box"));
                if (item->property("fontSizeMode").toInt() != 0) {
                    QVERIFY2(item->property("contentHeight").toReal() <= item->height() + 1,
                             qPrintable(where + " is taller than its box"));
                }
            }
            if (item->inherits("QQuickAbstractButton") && item->isEnabled()) {
                QVERIFY2(item->width() >= 44 && item->height() >= 44,
                         qPrintable(state + QStringLiteral(": a control smaller than 44 px: ")
                                    + accessibleName(item)));
                QVERIFY2(!accessibleName(item).isEmpty(), qPrintable(state + ": a control without a name"));
            }
        }
        QVERIFY(texts > 0);
        QVERIFY2(qmlWarnings().isEmpty(), qPrintable(qmlWarnings().join(u'\n')));
    }

private slots:
    void initTestCase()
    {
        QQuickStyle::setStyle(QStringLiteral("Basic"));
        previousHandler = qInstallMessageHandler(recordWarnings);
        m_engine = std::make_unique<QQmlEngine>();
        m_engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
    }

    void init()
    {
        qmlWarnings().clear();
        m_fixture = std::make_unique<ConjugationFixture>();
        QVERIFY(m_fixture->ready);
        Settings::standard().clear();
        // The previous test's queue stays alive until the screen has the new one.
        m_previousQueueRef = std::move(m_queueRef);
        m_queueRef = std::make_unique<DatabaseQueueRef>(m_fixture->queue);
    }

    void cleanup()
    {
        if (m_window)
            controller()->pronunciation().stop();
        QVERIFY2(qmlWarnings().isEmpty(), qPrintable(qmlWarnings().join(u'\n')));
    }

    void cleanupTestCase()
    {
        m_window.reset();
        m_engine.reset();
    }

    void everyMoodAtPhoneAndTabletSize_data()
    {
        QTest::addColumn<QString>("verb");
        QTest::addColumn<QSize>("size");
        QTest::newRow("andare phone") << "andare" << QSize(390, 844);
        QTest::newRow("andare tablet") << "andare" << QSize(1024, 768);
        QTest::newRow("alzarsi phone") << "alzarsi" << QSize(390, 844);
        QTest::newRow("alzarsi tablet") << "alzarsi" << QSize(1024, 768);
    }

    void everyMoodAtPhoneAndTabletSize()
    {
        QFETCH(QString, verb);
        QFETCH(QSize, size);
        open(verb == QLatin1String("andare") ? ConjugationFixture::andare() : ConjugationFixture::alzarsi(), size);
        const bool tablet = size.width() >= 700;
        QCOMPARE(screen()->property("regularWidth").toBool(), tablet);
        const QStringList moods{"ind", "sub", "con", "other"};
        for (int mood = 0; mood < 4; ++mood) {
            QVERIFY(QMetaObject::invokeMethod(screen(), "selectMood", Q_ARG(int, mood)));
            QCOMPARE(controller()->selectedSegment(), mood);
            settle();
            const QString name = QStringLiteral("%1-%2-%3x%4").arg(verb, moods[mood]).arg(size.width()).arg(size.height());
            checkLayout(name);
            save(name);
            if (!tablet) {
                // The end of the table too, where the last tense sits.
                for (QQuickItem *item : visibleItems()) {
                    if (item->inherits("QQuickListView")) {
                        QMetaObject::invokeMethod(item, "positionViewAtEnd");
                        settle();
                        checkLayout(name + QStringLiteral("-end"));
                        save(name + QStringLiteral("-end"));
                        break;
                    }
                }
            }
        }
    }

    void realVerbsFromTheMasterDatabase()
    {
        const QString master = qEnvironmentVariable("NORVELLA_MASTER_DB");
        if (master.isEmpty())
            QSKIP("Set NORVELLA_MASTER_DB to check real verbs too");
        const QString copy = m_fixture->dir.filePath(QStringLiteral("master.db"));
        QVERIFY(QFile::copy(master, copy));
        QVERIFY(QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner));
        auto queue = std::make_shared<DatabaseQueue>(copy);
        m_previousQueueRef = std::move(m_queueRef);
        m_queueRef = std::make_unique<DatabaseQueueRef>(queue);
        QString names = qEnvironmentVariable("NORVELLA_SCREENSHOT_VERBS");
        if (names.isEmpty())
            names = QStringLiteral("andare,alzarsi");
        for (const QString &name : names.split(u',', Qt::SkipEmptyParts)) {
            const VerbPtr verb = verbByInfinitive(*queue, name.trimmed());
            QVERIFY2(verb, qPrintable(name + QStringLiteral(" is not in the master database")));
            for (const QSize size : {QSize(390, 844), QSize(1024, 768)}) {
                open(verb, size);
                for (int mood = 0; mood < 4; ++mood) {
                    controller()->selectVerbTypes(mood);
                    settle();
                    const QString state = QStringLiteral("master-%1-%2-%3x%4")
                                                  .arg(verb->italian).arg(mood).arg(size.width()).arg(size.height());
                    checkLayout(state);
                    save(state);
                }
            }
        }
    }

    void theMoodControlSwitchesTenses()
    {
        open(ConjugationFixture::andare(), {390, 844});
        QQuickItem *subjunctive = nullptr;
        for (QQuickItem *item : visibleItems()) {
            if (item->inherits("QQuickAbstractButton") && item->property("text").toString() == QLatin1String("Subjunctive"))
                subjunctive = item;
        }
        click(subjunctive);
        QCOMPARE(controller()->selectedSegment(), 1);
        QVERIFY(button(QStringLiteral("Play “io vada”")));
    }

    void theFavouriteButtonMarksTheVerb()
    {
        open(ConjugationFixture::alzarsi(), {390, 844});
        click(button(QStringLiteral("Add to favourites")));
        QVERIFY(controller()->isFavourite());
        QCOMPARE(m_fixture->column(QStringLiteral("SELECT verbid FROM favourite")), QStringList{QStringLiteral("5")});
        QVERIFY(button(QStringLiteral("Remove from favourites")));
        save(QStringLiteral("alzarsi-favourite-390x844"));
    }

    void playingAFormFillsItsRingAndEndsEmpty()
    {
        open(ConjugationFixture::andare(), {1024, 768});
        QQuickItem *play = button(QStringLiteral("Play “io vado”"));
        QVERIFY(play);
        auto *ring = play->findChild<RoundProgressView *>();
        QVERIFY(ring);
        float highest = 0;
        connect(ring, &RoundProgressView::progressChanged, this, [&] { highest = std::max(highest, ring->progress()); });
        click(play);
        QCOMPARE(controller()->speakingKey(), QStringLiteral("6:0"));
        QVERIFY(button(QStringLiteral("Stop “io vado”")));
        // The second word fills the ring to about half; catch it if the speech is still going.
        QTRY_VERIFY_WITH_TIMEOUT(ring->presentationProgress() >= 0.4f || controller()->speakingKey().isEmpty(), 20000);
        if (!controller()->speakingKey().isEmpty())
            save(QStringLiteral("andare-speaking-1024x768"));
        QTRY_COMPARE_WITH_TIMEOUT(controller()->speakingKey(), QString(), 20000);
        QVERIFY(highest >= 0.1f);
        QCOMPARE(ring->progress(), 0.0f);
        QVERIFY(button(QStringLiteral("Play “io vado”")));
    }

    void aLowVolumeIsAnnounced()
    {
        open(ConjugationFixture::andare(), {390, 844});
        controller()->setVolumeProbe([] { return std::optional<double>(0.05); });
        click(button(QStringLiteral("Play “tu vai”")));
        QQuickItem *ok = button(QStringLiteral("OK"));
        QVERIFY(ok);
        checkLayout(QStringLiteral("volume alert"));
        save(QStringLiteral("andare-volume-alert-390x844"));
        click(ok);
        QTRY_VERIFY(!button(QStringLiteral("OK")));
        controller()->pronunciation().stop();
    }

    void withoutAVerbTheScreenAsksForOne()
    {
        open(ConjugationFixture::andare(), {390, 844});
        open(nullptr, {390, 844});
        QVERIFY(!controller()->hasVerb());
        auto *footer = screen()->property("footer").value<QQuickItem *>();
        QVERIFY(footer);
        QVERIFY(!footer->isVisible() || footer->height() == 0);
        bool prompt = false;
        for (QQuickItem *item : visibleItems())
            prompt = prompt || item->property("text").toString() == Strings::text(QStringLiteral("select"));
        QVERIFY(prompt);
        checkLayout(QStringLiteral("empty"));
        save(QStringLiteral("empty-390x844"));
        open(nullptr, {1024, 768});
        checkLayout(QStringLiteral("empty tablet"));
        save(QStringLiteral("empty-1024x768"));
    }

    void backAndShareReachTheWindow()
    {
        open(ConjugationFixture::andare(), {390, 844}, true);
        QSignalSpy back(screen(), SIGNAL(backRequested()));
        QSignalSpy share(screen(), SIGNAL(exportRequested(QObject*)));
        click(button(QStringLiteral("Back")));
        QCOMPARE(back.count(), 1);
        click(button(QStringLiteral("Share the conjugation")));
        QCOMPARE(share.count(), 1);
        QCOMPARE(share.first().first().value<QObject *>(), m_verbRef.get());
        save(QStringLiteral("andare-back-390x844"));
    }
};

QTEST_MAIN(VerbDetailViewTest)
#include "tst_verbdetailview.moc"
