// The conjugation screen as QML: loads without warnings at phone and tablet
// sizes, keeps every text whole and every control reachable, and answers taps.
// NORVELLA_SCREENSHOT_DIR=/some/folder saves each state it visits as a PNG.
#include "ConjugationTestFixture.h"
#include "DesktopMail.h"
#include "QmlLoadHarness.h"
#include "RoundProgressView.h"
#include "SpeechSynthesizer.h"
#include "VerbLookup.h"
#include "VerbRef.h"
#include "VerbRepository.h"

#include <QQuickItem>

#define NORVELLA_QML_CONJUGATION
#define NORVELLA_QML_EXPORT
#include "QmlModules.h"

using namespace norvella;
using norvella::test::ConjugationFixture;

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
    std::unique_ptr<VerbRepository> m_queueRef;
    std::unique_ptr<VerbRepository> m_previousQueueRef; // alive until the screen has the new one
    std::unique_ptr<VerbRef> m_verbRef;
    // One window serves every test: Qt 6.4 mixes up its animation timing when a
    // window goes away while an animation runs, and the app has a single window too.
    std::unique_ptr<test::QmlScreen> m_qml;

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
    QQuickItem *button(const QString &name) const { return m_qml->button(name); }
    void click(QQuickItem *item) { QVERIFY(m_qml->click(item)); }

    // Every text on screen is whole, and every control is big enough and named.
    void checkLayout(const QString &state)
    {
        m_qml->grab(state);
        int texts = 0;
        for (QQuickItem *item : m_qml->items()) {
            if (!test::onScreen(item))
                continue;
            const QString text = item->property("text").toString();
            if (item->inherits("QQuickText") && !text.isEmpty()) {
                ++texts;
                QVERIFY2(!item->property("truncated").toBool() && item->property("contentWidth").toReal() <= item->width() + 1,
                         qPrintable(state + ": " + text + " does not fit"));
            }
            if (item->inherits("QQuickAbstractButton") && item->isEnabled()) {
                const QString name = test::accessibleName(item);
                QVERIFY2(item->width() >= 44 && item->height() >= 44 && !name.isEmpty(),
                         qPrintable(state + ": a control smaller than 44 px or without a name: " + name));
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
        m_previousQueueRef = std::move(m_queueRef);
        m_queueRef = std::make_unique<VerbRepository>(m_fixture->queue);
    }

    void cleanup()
    {
        if (m_qml->window)
            controller()->pronunciation().stop();
        QVERIFY2(m_qml->clean(), test::WarningCollector::report());
    }

    void everyMoodAtPhoneAndTabletSize()
    {
        for (const QString verb : {"andare", "alzarsi", "zittire"}) {
            for (const QSize size : {QSize(390, 844), QSize(1024, 768)}) {
                open(verbByInfinitive(*m_queueRef->queue(), verb), size);
                QCOMPARE(screen()->property("regularWidth").toBool(), size.width() >= 700);
                for (int mood = 0; mood < 4; ++mood) {
                    QVERIFY(QMetaObject::invokeMethod(screen(), "selectMood", Q_ARG(int, mood)));
                    QVERIFY(m_qml->settle());
                    checkLayout(QStringLiteral("%1-%2-%3x%4").arg(verb).arg(mood).arg(size.width()).arg(size.height()));
                }
            }
        }
    }

    void theBarsAndTheMoodControlAnswerTaps()
    {
        open(ConjugationFixture::andare(), {390, 844}, true);
        const QList<QQuickItem *> items = m_qml->items();
        const auto subjunctive = std::find_if(items.begin(), items.end(), [](QQuickItem *item) {
            return item->inherits("QQuickAbstractButton") && item->property("text").toString() == QLatin1String("Subjunctive");
        });
        click(subjunctive == items.end() ? nullptr : *subjunctive);
        QCOMPARE(controller()->selectedSegment(), 1);
        QVERIFY(button(QStringLiteral("Play “che io vada”")));

        click(button(QStringLiteral("Add to favourites")));
        QVERIFY(controller()->isFavourite());
        QVERIFY(button(QStringLiteral("Remove from favourites")));
        QSignalSpy back(screen(), SIGNAL(backRequested()));
        QSignalSpy share(screen(), SIGNAL(exportRequested(QObject*)));
        click(button(QStringLiteral("Back")));
        QCOMPARE(back.count(), 1);
        click(button(QStringLiteral("Share the conjugation")));
        QCOMPARE(share.count(), 1);
        QCOMPARE(share.first().first().value<QObject *>(), m_verbRef.get());

        // "Report a mistake" hands the mail client a mail about this verb and mood.
        QList<QStringList> runs;
        const DesktopMail::Platform system = DesktopMail::platform();
        DesktopMail::Platform fake;
        fake.findMailCommand = [] { return QStringLiteral("/usr/bin/xdg-email"); };
        fake.run = [&runs](const QString &program, const QStringList &arguments, std::function<void(bool)> done) {
            runs.append(QStringList{program} + arguments);
            done(true);
        };
        fake.openUrl = [](const QUrl &, std::function<void(bool)> done) { done(false); };
        DesktopMail::platform() = fake;
        click(button(QStringLiteral("Report a mistake")));
        DesktopMail::platform() = system;
        QCOMPARE(runs.size(), 1);
        const QStringList run = runs.first();
        QVERIFY(run.at(run.indexOf("--subject") + 1).endsWith(QStringLiteral("Mistake in “andare”")));
        QVERIFY(run.at(run.indexOf("--body") + 1).startsWith(QStringLiteral("Verb: andare\nMood: Subjunctive\n")));

        // A low volume is announced, and the alert goes away when acknowledged.
        controller()->setVolumeProbe([] { return std::optional<double>(0.05); });
        click(button(QStringLiteral("Play “che tu vada”")));
        QVERIFY(button(QStringLiteral("OK")));
        checkLayout(QStringLiteral("andare-volume-alert-390x844"));
        click(button(QStringLiteral("OK")));
        QTRY_VERIFY(!button(QStringLiteral("OK")));
    }

    void playingAFormFillsItsRingAndEndsEmpty()
    {
        open(ConjugationFixture::andare(), {1024, 768});
        QQuickItem *play = button(QStringLiteral("Play “io vado”"));
        auto *ring = play ? play->findChild<RoundProgressView *>() : nullptr;
        QVERIFY(ring);
        float highest = 0;
        connect(ring, &RoundProgressView::progressChanged, this, [&] { highest = std::max(highest, ring->progress()); });
        click(play);
        QCOMPARE(controller()->speakingKey(), QStringLiteral("6:0"));
        QVERIFY(button(QStringLiteral("Stop “io vado”")) && button(QStringLiteral("Play “tu vai”"))); // only that row turns
        QTRY_COMPARE_WITH_TIMEOUT(controller()->speakingKey(), QString(), 20000);
        QVERIFY(highest >= 0.1f);
        QCOMPARE(ring->progress(), 0.0f);
    }
};

QTEST_MAIN(VerbDetailViewTest)
#include "tst_verbdetailview.moc"
