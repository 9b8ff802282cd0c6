// Speaking a form: the progress ring, the speed, the low-volume warning, a missing voice, espeak-ng.
#include "ConjugationTestFixture.h"
#include "PronunciationPlayer.h"
#include "RoundProgressView.h"
#include "SpeechSynthesizer.h"

#include <QPainter>
#include <QTemporaryDir>

#include <numbers>

using namespace norvella;
using norvella::test::ConjugationFixture;

namespace {
// An engine the test drives by hand.
class ScriptedSynthesizer : public SpeechSynthesizer
{
public:
    bool voiceInstalled = true;
    bool speaking = false;
    QStringList said;
    QList<double> rates;

    bool hasVoice() override { return voiceInstalled; }
    bool isSpeaking() const override { return speaking; }
    void say(const QString &text, double rate) override
    {
        stop();
        said << text;
        rates << rate;
        speaking = true;
    }
    void stop() override
    {
        if (std::exchange(speaking, false))
            emit didCancel();
    }
    void word(int start, int length) { emit willSpeakRange(start, length); }
    void finish() { speaking = false; emit didFinish(); }
};
} // namespace

class SpeechTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ConjugationFixture> m_fixture;
    ScriptedSynthesizer *m_synth = nullptr;
    std::optional<double> m_volume;
    QStringList m_alerts;

    VerbDetailTableViewController &show()
    {
        m_fixture = std::make_unique<ConjugationFixture>();
        m_volume.reset();
        m_alerts.clear();
        auto &screen = m_fixture->show(ConjugationFixture::andare());
        m_synth = new ScriptedSynthesizer;
        screen.setSpeechSynthesizer(m_synth);
        screen.setVolumeProbe([this] { return m_volume; });
        connect(&screen, &VerbDetailTableViewController::alertRequested, this,
                [this](const QString &message) { m_alerts << message; });
        return screen;
    }

private slots:
    void ringGrowthIsAnimatedADecreaseJumps()
    {
        RoundProgressView view;
        view.setProgress(1.5f);
        QCOMPARE(view.progress(), 1.0f);
        view.setProgress(0.3f, false);
        // The model value is final at once; what is drawn catches up.
        view.setProgress(0.6f);
        QCOMPARE(view.progress(), 0.6f);
        QCOMPARE(view.presentationProgress(), 0.3f);
        QTRY_COMPARE(view.presentationProgress(), 0.6f);
        view.setAnimationDuration(5.0);
        view.setProgress(0.9f);
        QCoreApplication::processEvents(); // far from done, whatever the machine's speed
        QVERIFY(view.presentationProgress() < 0.9f);
        view.setProgress(-0.2f);
        QCoreApplication::processEvents();
        QCOMPARE(view.presentationProgress(), 0.0f);
    }

    // A quarter, clockwise from six o'clock, in a circle centred in the box and as
    // wide as its shorter side; nothing is drawn outside it.
    void ringDrawing()
    {
        const QColor tint(1, 85, 179), track(200, 200, 200);
        RoundProgressView view;
        view.setSize({100, 40});
        view.setTrackColor(track);
        view.setTintColor(tint);
        view.setStartAngle(float(std::numbers::pi / 2));
        view.setProgress(0.25f, false);
        QImage image(100, 40, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        view.paint(&painter);
        const QList<QPair<QPoint, QColor>> probes{{{42, 28}, tint}, {{58, 28}, track}, {{58, 12}, track},
                                                  {{50, 2}, track}, {{25, 20}, {}}, {{75, 20}, {}}};
        for (const auto &[point, expected] : probes) {
            const QColor c = QColor::fromRgba(image.pixel(point));
            const bool ok = expected.isValid() ? qAbs(c.red() - expected.red()) <= 2 && qAbs(c.green() - expected.green()) <= 2
                                                         && qAbs(c.blue() - expected.blue()) <= 2 && c.alpha() == 255
                                               : c.alpha() == 0;
            QVERIFY2(ok, qPrintable(QStringLiteral("(%1, %2) is %3").arg(point.x()).arg(point.y()).arg(c.name(QColor::HexArgb))));
        }
    }

    void spokenTextDropsAlternatives()
    {
        auto spoken = [](const char *pronoun, const char *verb) {
            return PronunciationPlayer::spokenText({QString::fromUtf8(pronoun), QString::fromUtf8(verb), "7", 1, {}});
        };
        QCOMPARE(spoken("lui/lei", "è andato/a"), QStringLiteral("lui è andato"));
        QCOMPARE(spoken("(tu)", "va'"), QStringLiteral("tu va'"));
    }

    void wordsFillTheRingAndATapStopsOrMovesIt()
    {
        auto &screen = show();
        m_fixture->settings->setDouble(SettingsKeys::AudioSpeed, 0.5);
        RoundProgressView first;
        RoundProgressView second;
        screen.toggleSpeech(QStringLiteral("6:0"), &first);
        QCOMPARE(m_synth->said, QStringList{QStringLiteral("io vado")});
        QCOMPARE(m_synth->rates, QList<double>{PronunciationPlayer::speechRate(*m_fixture->settings)});
        // The first word shows a sliver; later ones a share of the text, a little ahead.
        m_synth->word(0, 2);
        QCOMPARE(first.progress(), 0.1f);
        m_synth->word(3, 4);
        QCOMPARE(first.progress(), 3.0f / 7.0f * 1.1f);
        QSignalSpy progress(&first, &RoundProgressView::progressChanged);
        m_synth->finish();
        QCOMPARE(progress.count(), 2); // up to full, then straight back to empty
        QCOMPARE(first.presentationProgress(), 0.0f);
        QCOMPARE(screen.speakingKey(), QString());

        // A second tap stops; another row takes over.
        screen.toggleSpeech(QStringLiteral("7:1"), &first);
        QCOMPARE(m_synth->said.last(), QStringLiteral("tu sei andato"));
        m_synth->word(3, 3);
        screen.toggleSpeech(QStringLiteral("7:1"), &first);
        QVERIFY(!m_synth->speaking);
        QCOMPARE(first.progress(), 0.0f);
        QCOMPARE(screen.speakingKey(), QString());
        screen.toggleSpeech(QStringLiteral("6:0"), &first);
        m_synth->word(3, 4);
        screen.toggleSpeech(QStringLiteral("6:1"), &second);
        QCOMPARE(screen.speakingKey(), QStringLiteral("6:1"));
        m_synth->word(3, 3);
        QCOMPARE(first.progress(), 0.0f);
        QCOMPARE(second.progress(), 3.0f / 6.0f * 1.1f);

        // A ring that scrolled away, or none at all, is not touched.
        auto *gone = new RoundProgressView;
        screen.toggleSpeech(QStringLiteral("6:2"), gone);
        delete gone;
        m_synth->word(0, 3);
        m_synth->finish();
        screen.toggleSpeech(QStringLiteral("6:2"), nullptr);
        m_synth->word(0, 3);
        QCOMPARE(screen.speakingKey(), QStringLiteral("6:2"));
    }

    void lowVolumeWarnsAtMostOnceADayAndAMissingVoiceIsReported()
    {
        auto &screen = show();
        screen.toggleSpeech(QStringLiteral("6:0"), nullptr); // an unknown volume is fine, and so is 0.15
        m_volume = 0.15;
        screen.toggleSpeech(QStringLiteral("6:1"), nullptr);
        QVERIFY(m_alerts.isEmpty());
        QVERIFY(!m_fixture->settings->contains(SettingsKeys::TimeAudioWarning));
        m_volume = 0.14;
        screen.toggleSpeech(QStringLiteral("6:2"), nullptr);
        QCOMPARE(m_alerts, QStringList{Strings::text(QStringLiteral("volume.low.warning"))});
        QCOMPARE(m_synth->said.size(), 3); // the speech goes ahead
        const double stored = m_fixture->settings->doubleForKey(SettingsKeys::TimeAudioWarning);
        QVERIFY(qAbs(stored - double(QDateTime::currentSecsSinceEpoch())) < 5);
        QCOMPARE(Settings(m_fixture->settings->filePath()).doubleForKey(SettingsKeys::TimeAudioWarning), stored);
        screen.toggleSpeech(QStringLiteral("6:3"), nullptr);
        QCOMPARE(m_alerts.size(), 1);
        m_fixture->settings->setDouble(SettingsKeys::TimeAudioWarning, stored - 86401);
        screen.toggleSpeech(QStringLiteral("6:4"), nullptr);
        QCOMPARE(m_alerts.size(), 2);

        m_synth->voiceInstalled = false;
        m_synth->stop();
        screen.toggleSpeech(QStringLiteral("6:0"), nullptr);
        QCOMPARE(m_alerts.last(), Strings::text(QStringLiteral("speech.voice.missing")));
        QCOMPARE(m_synth->said.size(), 5);
        QCOMPARE(screen.speakingKey(), QString());
    }

    void espeakSpeaksItalianIntoMemory()
    {
        SpeechSynthesizer synth;
        QVERIFY2(synth.hasVoice(), "espeak-ng's Italian voice is missing (Debian package espeak-ng-data)");
        synth.setPlaysAudio(false);
        QSignalSpy words(&synth, &SpeechSynthesizer::willSpeakRange);
        QSignalSpy finished(&synth, &SpeechSynthesizer::didFinish);
        QSignalSpy cancelled(&synth, &SpeechSynthesizer::didCancel);
        // A stopped utterance reports nothing more; stopping twice cancels once.
        synth.say(QStringLiteral("noi eravamo andati via"), SpeechSynthesizer::DefaultSpeechRate);
        synth.stop();
        synth.stop();
        synth.say(QStringLiteral("io sarò andato"), SpeechSynthesizer::DefaultSpeechRate);
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 20000);
        QVERIFY(!synth.isSpeaking());
        QCOMPARE(cancelled.count(), 1);
        // Character positions, not bytes: "sarò" has a two-byte letter before "andato".
        QCOMPARE(QList<QVariantList>(words), (QList<QVariantList>{{0, 2}, {3, 4}, {8, 6}}));
        QVERIFY(synth.lastSampleCount() > 10000); // well over half a second at 22 kHz
    }

    // The four speeds the settings offer must sound different through the real
    // engine: each slower one makes the same words measurably longer, and none
    // asks for less than the engine will do.
    void everySpeedChoiceIsAudiblyDistinct()
    {
        SpeechSynthesizer synth;
        QVERIFY2(synth.hasVoice(), "espeak-ng's Italian voice is missing (Debian package espeak-ng-data)");
        synth.setPlaysAudio(false);
        QSignalSpy finished(&synth, &SpeechSynthesizer::didFinish);
        QTemporaryDir dir;
        Settings settings(dir.filePath("speeds.json"));
        QList<int> lengths;
        double previousRate = 1e9;
        for (const double speed : {1.0, 0.75, 0.5, 0.25}) {
            settings.setDouble(SettingsKeys::AudioSpeed, speed);
            const double rate = PronunciationPlayer::speechRate(settings);
            QVERIFY2(rate >= SpeechSynthesizer::MinimumSpeechRate && rate < previousRate, qPrintable(QString::number(rate)));
            previousRate = rate;
            synth.say(QStringLiteral("che noi fossimo andati"), rate);
            QTRY_COMPARE_WITH_TIMEOUT(finished.count(), lengths.size() + 1, 20000);
            lengths << synth.lastSampleCount();
        }
        for (int i = 1; i < lengths.size(); ++i)
            QVERIFY2(lengths[i] > lengths[i - 1] * 1.12,
                     qPrintable(QStringLiteral("samples per speed: %1").arg(QString::number(lengths[i - 1]) + " then " + QString::number(lengths[i]))));
        settings.setDouble(SettingsKeys::AudioSpeed, 0.0);
        QCOMPARE(PronunciationPlayer::speechRate(settings), SpeechSynthesizer::DefaultSpeechRate);
    }
};

QTEST_MAIN(SpeechTest)
#include "tst_speech.moc"
