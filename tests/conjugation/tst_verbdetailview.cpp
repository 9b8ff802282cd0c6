// The conjugation screen as QML: loads without warnings at phone and tablet
// sizes, keeps every text whole and every control reachable, and answers taps.
// NORVELLA_SCREENSHOT_DIR=/some/folder saves each state it visits as a PNG;
// NORVELLA_MASTER_DB=/path/verbs.db also runs the checks on real verbs
// (NORVELLA_SCREENSHOT_VERBS=andare,alzarsi,... picks them).
#include "ConjugationTestFixture.h"
#include "DatabaseQueueRef.h"
#include "QmlLoadHarness.h"
#include "RoundProgressView.h"
#include "SpeechSynthesizer.h"
#include "VerbDetailTableViewController.h"
#include "VerbLookup.h"
#include "VerbRef.h"

#include <QQuickItem>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(Norvella_ConjugationPlugin)
Q_IMPORT_QML_PLUGIN(Norvella_ResourcesPlugin)

using namespace norvella;
using norvella::test::ConjugationFixture;
using norvella::test::accessibleName;
using norvella::test::onScreen;

namespace {

const QByteArray harness = R"(
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

} // namespace

class VerbDetailViewTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ConjugationFixture> m_fixture;
    std::unique_ptr<DatabaseQueueRef> m_queueRef;
    std::unique_ptr<DatabaseQueueRef> m_previousQueueRef;
    std::unique_ptr<VerbRef> m_verbRef;
    // One window serves every test: Qt 6.4 mixes up its animation timing when a
    // window goes away while an animation runs, and the app has a single window too.
    std::unique_ptr<test::QmlScreen> m_qml;

    void useQueue(std::shared_ptr<DatabaseQueue> queue)
    {
        // The previous queue stays alive until the screen has the new one.
        m_previousQueueRef = std::move(m_queueRef);
        m_queueRef = std::make_unique<DatabaseQueueRef>(std::move(queue));
    }

    void open(const VerbPtr &verb, QSize size, bool back = false)
    {
        auto verbRef = std::make_unique<VerbRef>(verb);
        const QVariantMap properties{{"back", back},
                                     {"queue", QVariant::fromValue<QObject *>(m_queueRef.get())},
                                     {"verb", QVariant::fromValue<QObject *>(verb ? verbRef.get() : nullptr)}};
        if (!m_qml->window) {
            QVERIFY(m_qml->show(harness, size, properties));
        } else {
            // A verb chosen while the screen is up replaces the one it shows. The
            // map is sorted by key, so the queue arrives before the verb.
            m_qml->window->resize(size);
            for (auto it = properties.begin(); it != properties.end(); ++it)
                m_qml->window->setProperty(it.key().toUtf8(), it.value());
        }
        m_verbRef = std::move(verbRef);
        controller()->selectVerbTypes(0);
        for (QQuickItem *item : visibleItems()) {
            if (item->inherits("QQuickListView"))
                QMetaObject::invokeMethod(item, "positionViewAtBeginning");
        }
        QVERIFY(m_qml->settle());
        // Speech in tests is silent but keeps its pace, as on a machine without sound.
        auto *synth = new SpeechSynthesizer;
        synth->setAudioDevice(QStringLiteral("norvella-test-silence"));
        controller()->setSpeechSynthesizer(synth);
        controller()->setVolumeProbe([] { return std::optional<double>(); });
        QCOMPARE(controller()->title(), verb ? verb->italian : QString());
    }

    VerbDetailTableViewController *controller() const { return m_qml->find<VerbDetailTableViewController>(); }
    QQuickItem *screen() const { return m_qml->find<QQuickItem>(QStringLiteral("detail")); }

    QList<QQuickItem *> visibleItems() const { return m_qml->items(); }
    QQuickItem *button(const QString &name) const { return m_qml->button(name); }
    void click(QQuickItem *item) { QVERIFY(m_qml->click(item)); }

    // Every text on screen is whole, and every control is big enough and named.
    void checkLayout(const QString &state)
    {
        m_qml->grab(state);
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
                         qPrintable(state + ": a control smaller than 44 px: " + accessibleName(item)));
                QVERIFY2(!accessibleName(item).isEmpty(), qPrintable(state + ": a control without a name"));
            }
        }
        QVERIFY(texts > 0);
        QVERIFY2(m_qml->clean(), test::WarningCollector::report());
    }

private slots:
    void initTestCase() { m_qml = std::make_unique<test::QmlScreen>(); }
    void cleanupTestCase() { m_qml.reset(); }

    void init()
    {
        test::WarningCollector::warnings().clear();
        m_fixture = std::make_unique<ConjugationFixture>();
        QVERIFY(m_fixture->ready);
        Settings::standard().clear();
        useQueue(m_fixture->queue);
    }

    void cleanup()
    {
        if (m_qml->window)
            controller()->pronunciation().stop();
        QVERIFY2(m_qml->clean(), test::WarningCollector::report());
    }

    void everyMoodAtPhoneAndTabletSize_data()
    {
        QTest::addColumn<QString>("verb");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QString>("database"); // empty: the fixture
        const QString master = qEnvironmentVariable("NORVELLA_MASTER_DB");
        const QString chosen = qEnvironmentVariable("NORVELLA_SCREENSHOT_VERBS", QStringLiteral("andare,alzarsi"));
        for (const QString &database : {QString(), master}) {
            const QStringList verbs = database.isEmpty() ? QStringList{"andare", "alzarsi"}
                                                         : chosen.split(u',', Qt::SkipEmptyParts);
            for (const QString &verb : verbs) {
                for (const QSize size : {QSize(390, 844), QSize(1024, 768)}) {
                    QTest::addRow("%s%s %dx%d", database.isEmpty() ? "" : "master ", qPrintable(verb.trimmed()),
                                  size.width(), size.height()) << verb.trimmed() << size << database;
                }
            }
            if (master.isEmpty())
                break;
        }
    }

    void everyMoodAtPhoneAndTabletSize()
    {
        QFETCH(QString, verb);
        QFETCH(QSize, size);
        QFETCH(QString, database);
        if (!database.isEmpty()) {
            const QString copy = m_fixture->dir.filePath(QStringLiteral("master.db"));
            QVERIFY(QFile::copy(database, copy));
            QVERIFY(QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner));
            useQueue(std::make_shared<DatabaseQueue>(copy));
        }
        const VerbPtr record = verbByInfinitive(*m_queueRef->queue(), verb);
        QVERIFY2(record, qPrintable(verb + " is not in the database"));
        open(record, size);
        const bool tablet = size.width() >= 700;
        QCOMPARE(screen()->property("regularWidth").toBool(), tablet);
        const QStringList moods{"ind", "sub", "con", "other"};
        for (int mood = 0; mood < 4; ++mood) {
            QVERIFY(QMetaObject::invokeMethod(screen(), "selectMood", Q_ARG(int, mood)));
            QCOMPARE(controller()->selectedSegment(), mood);
            QVERIFY(m_qml->settle());
            const QString name = QStringLiteral("%1%2-%3-%4x%5")
                                         .arg(database.isEmpty() ? QString() : QStringLiteral("master-"), verb, moods[mood])
                                         .arg(size.width()).arg(size.height());
            checkLayout(name);
            // The end of the table too, where the last tense sits.
            for (QQuickItem *item : visibleItems()) {
                if (!tablet && item->inherits("QQuickListView")) {
                    QMetaObject::invokeMethod(item, "positionViewAtEnd");
                    QVERIFY(m_qml->settle());
                    checkLayout(name + QStringLiteral("-end"));
                    break;
                }
            }
        }
    }

    void theBarsAndTheMoodControlAnswerTaps()
    {
        open(ConjugationFixture::andare(), {390, 844}, true);
        QQuickItem *subjunctive = nullptr;
        for (QQuickItem *item : visibleItems()) {
            if (item->inherits("QQuickAbstractButton") && item->property("text").toString() == QLatin1String("Subjunctive"))
                subjunctive = item;
        }
        click(subjunctive);
        QCOMPARE(controller()->selectedSegment(), 1);
        QVERIFY(button(QStringLiteral("Play “io vada”")));

        click(button(QStringLiteral("Add to favourites")));
        QVERIFY(controller()->isFavourite());
        QVERIFY(button(QStringLiteral("Remove from favourites")));
        m_qml->grab(QStringLiteral("andare-favourite-390x844"));

        QSignalSpy back(screen(), SIGNAL(backRequested()));
        QSignalSpy share(screen(), SIGNAL(exportRequested(QObject*)));
        click(button(QStringLiteral("Back")));
        QCOMPARE(back.count(), 1);
        click(button(QStringLiteral("Share the conjugation")));
        QCOMPARE(share.count(), 1);
        QCOMPARE(share.first().first().value<QObject *>(), m_verbRef.get());
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
        QVERIFY(button(QStringLiteral("Play “tu vai”"))); // only the tapped row turns
        // The second word fills the ring to about half; catch it if the speech is still going.
        QTRY_VERIFY_WITH_TIMEOUT(ring->presentationProgress() >= 0.4f || controller()->speakingKey().isEmpty(), 20000);
        if (!controller()->speakingKey().isEmpty())
            m_qml->grab(QStringLiteral("andare-speaking-1024x768"));
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
        checkLayout(QStringLiteral("andare-volume-alert-390x844"));
        click(ok);
        QTRY_VERIFY(!button(QStringLiteral("OK")));
    }

    void withoutAVerbTheScreenAsksForOne()
    {
        open(ConjugationFixture::andare(), {390, 844});
        for (const QSize size : {QSize(390, 844), QSize(1024, 768)}) {
            open(nullptr, size);
            QVERIFY(!controller()->hasVerb());
            auto *footer = screen()->property("footer").value<QQuickItem *>();
            QVERIFY(footer);
            QVERIFY(!footer->isVisible() || footer->height() == 0);
            bool prompt = false;
            for (QQuickItem *item : visibleItems())
                prompt = prompt || item->property("text").toString() == Strings::text(QStringLiteral("select"));
            QVERIFY(prompt);
            checkLayout(QStringLiteral("empty-%1x%2").arg(size.width()).arg(size.height()));
        }
    }
};

QTEST_MAIN(VerbDetailViewTest)
#include "tst_verbdetailview.moc"
