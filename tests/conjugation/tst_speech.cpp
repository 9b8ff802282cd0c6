// Speaking a form: ring progress from word events, the end of speech, the
// speed setting, the low-volume warning, a missing voice, and espeak-ng itself
// (playing through a missing audio device is covered by the screen's test).
#include "ConjugationTestFixture.h"
#include "PronunciationPlayer.h"
#include "RoundProgressView.h"
#include "SpeechSynthesizer.h"

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
    QStringList calls;

    bool hasVoice() override { return voiceInstalled; }
    bool isSpeaking() const override { return speaking; }
    void say(const QString &text, double rate) override
    {
        if (speaking)
            stop();
        calls << QStringLiteral("say");
        said << text;
        rates << rate;
        speaking = true;
    }
    void stop() override
    {
        if (!speaking)
            return;
        calls << QStringLiteral("stop");
        speaking = false;
        emit didCancel();
    }
    void word(int start, int length) { emit willSpeakRange(start, length); }
    void finish()
    {
        speaking = false;
        emit didFinish();
    }
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
        auto &screen = m_fixture->show(ConjugationFixture::andare());
        m_synth = new ScriptedSynthesizer;
        screen.setSpeechSynthesizer(m_synth);
        screen.setVolumeProbe([this] { return m_volume; });
        connect(&screen, &VerbDetailTableViewController::alertRequested, this,
                [this](const QString &message) { m_alerts << message; });
        return screen;
    }

private slots:
    void init()
    {
        m_fixture = std::make_unique<ConjugationFixture>();
        QVERIFY(m_fixture->ready);
        m_volume.reset();
        m_alerts.clear();
    }

    void cleanup() { m_fixture.reset(); }

    void spokenTextDropsAlternatives()
    {
        auto spoken = [](const char *pronoun, const char *verb) {
            return PronunciationPlayer::spokenText(
                    {QString::fromUtf8(pronoun), QString::fromUtf8(verb), QStringLiteral("7"), 1, {}});
        };
        QCOMPARE(spoken("io", "sono andato/a"), QStringLiteral("io sono andato"));
        QCOMPARE(spoken("lui/lei", "è andato/a"), QStringLiteral("lui è andato"));
        QCOMPARE(spoken("", "andante"), QStringLiteral("andante"));
        QCOMPARE(spoken("(tu)", "va'"), QStringLiteral("tu va'"));
    }

    void wordsFillTheRingAndTheEndEmptiesIt()
    {
        m_fixture->settings->setDouble(SettingsKeys::AudioSpeed, 0.5);
        auto &screen = show();
        RoundProgressView ring;
        screen.toggleSpeech(QStringLiteral("6:0"), &ring);
        QCOMPARE(m_synth->said, QStringList{QStringLiteral("io vado")});
        QCOMPARE(m_synth->rates, QList<double>{SpeechSynthesizer::DefaultSpeechRate * 0.5});
        QCOMPARE(screen.speakingKey(), QStringLiteral("6:0"));

        // The first word shows a sliver; later ones a share of the text, a little ahead.
        m_synth->word(0, 2);
        QCOMPARE(ring.progress(), 0.1f);
        m_synth->word(3, 4);
        QCOMPARE(ring.progress(), 3.0f / 7.0f * 1.1f);

        QSignalSpy progress(&ring, &RoundProgressView::progressChanged);
        m_synth->finish();
        // Up to full, then straight back to empty.
        QCOMPARE(progress.count(), 2);
        QCOMPARE(ring.progress(), 0.0f);
        QCOMPARE(ring.presentationProgress(), 0.0f);
        QVERIFY(!ring.isAnimating());
        QCOMPARE(screen.speakingKey(), QString());
    }

    void aSecondTapStopsAndAnotherRowTakesOver()
    {
        auto &screen = show();
        RoundProgressView first;
        RoundProgressView second;
        screen.toggleSpeech(QStringLiteral("7:1"), &first);
        QCOMPARE(m_synth->said.last(), QStringLiteral("tu sei andato"));
        m_synth->word(3, 3);
        QVERIFY(first.progress() > 0.1f);
        screen.toggleSpeech(QStringLiteral("7:1"), &first);
        QVERIFY(!m_synth->speaking);
        QCOMPARE(first.progress(), 0.0f);
        QCOMPARE(screen.speakingKey(), QString());

        screen.toggleSpeech(QStringLiteral("6:0"), &first);
        m_synth->word(3, 4);
        screen.toggleSpeech(QStringLiteral("6:1"), &second);
        QCOMPARE(m_synth->calls, (QStringList{"say", "stop", "say", "stop", "say"}));
        QCOMPARE(first.progress(), 0.0f);
        QCOMPARE(screen.speakingKey(), QStringLiteral("6:1"));
        m_synth->word(3, 3);
        QCOMPARE(first.progress(), 0.0f);
        QCOMPARE(second.progress(), 3.0f / 6.0f * 1.1f);
    }

    void aRingThatWentAwayIsNotTouched()
    {
        auto &screen = show();
        auto *ring = new RoundProgressView;
        screen.toggleSpeech(QStringLiteral("6:2"), ring);
        delete ring; // the row scrolled away
        m_synth->word(0, 3);
        m_synth->finish();
        QCOMPARE(screen.speakingKey(), QString());
        // No ring at all is fine too.
        screen.toggleSpeech(QStringLiteral("6:2"), nullptr);
        m_synth->word(0, 3);
        QCOMPARE(screen.speakingKey(), QStringLiteral("6:2"));
    }

    void lowVolumeWarnsAtMostOnceADay()
    {
        auto &screen = show();
        // 0.15 and an unknown volume are fine.
        m_volume = 0.15;
        screen.toggleSpeech(QStringLiteral("6:0"), nullptr);
        m_volume.reset();
        screen.toggleSpeech(QStringLiteral("6:1"), nullptr);
        QVERIFY(m_alerts.isEmpty());
        QVERIFY(!m_fixture->settings->contains(SettingsKeys::TimeAudioWarning));

        m_volume = 0.14;
        screen.toggleSpeech(QStringLiteral("6:0"), nullptr);
        QCOMPARE(m_alerts, QStringList{Strings::text(QStringLiteral("volume.low.warning"))});
        QCOMPARE(m_synth->said.size(), 3); // the speech goes ahead
        const double stored = m_fixture->settings->doubleForKey(SettingsKeys::TimeAudioWarning);
        QVERIFY(qAbs(stored - double(QDateTime::currentSecsSinceEpoch())) < 5);
        QCOMPARE(Settings(m_fixture->settings->filePath()).doubleForKey(SettingsKeys::TimeAudioWarning), stored);

        screen.toggleSpeech(QStringLiteral("6:1"), nullptr);
        QCOMPARE(m_alerts.size(), 1);
        m_fixture->settings->setDouble(SettingsKeys::TimeAudioWarning, stored - 86401);
        screen.toggleSpeech(QStringLiteral("6:2"), nullptr);
        QCOMPARE(m_alerts.size(), 2);
    }

    void aMissingItalianVoiceIsReported()
    {
        auto &screen = show();
        m_synth->voiceInstalled = false;
        screen.toggleSpeech(QStringLiteral("6:0"), nullptr);
        QCOMPARE(m_alerts, QStringList{Strings::text(QStringLiteral("speech.voice.missing"))});
        QVERIFY(m_synth->said.isEmpty());
        QCOMPARE(screen.speakingKey(), QString());
    }

    void espeakSpeaksItalianIntoMemory()
    {
        SpeechSynthesizer synth;
        QCOMPARE(synth.language(), QStringLiteral("it"));
        QVERIFY2(synth.hasVoice(), "espeak-ng's Italian voice is missing (Debian package espeak-ng-data)");
        synth.setPlaysAudio(false);
        QSignalSpy words(&synth, &SpeechSynthesizer::willSpeakRange);
        QSignalSpy finished(&synth, &SpeechSynthesizer::didFinish);
        QSignalSpy cancelled(&synth, &SpeechSynthesizer::didCancel);
        // A stopped utterance reports nothing more; stopping twice cancels once.
        synth.say(QStringLiteral("noi eravamo andati via"), SpeechSynthesizer::DefaultSpeechRate);
        synth.stop();
        QVERIFY(!synth.isSpeaking());
        synth.stop();
        QCOMPARE(cancelled.count(), 1);

        synth.say(QStringLiteral("io sarò andato"), SpeechSynthesizer::DefaultSpeechRate);
        QVERIFY(synth.isSpeaking());
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 20000);
        QVERIFY(!synth.isSpeaking());
        QCOMPARE(cancelled.count(), 1);
        // Character positions, not bytes: "sarò" has a two-byte letter before "andato".
        QList<QVariantList> expected{{0, 2}, {3, 4}, {8, 6}};
        QCOMPARE(QList<QVariantList>(words), expected);
        QVERIFY(synth.lastSampleCount() > 10000); // well over half a second at 22 kHz
    }

    void noVoiceMeansNoOtherLanguage()
    {
        SpeechSynthesizer synth(QStringLiteral("zz"));
        QVERIFY(!synth.hasVoice());
        QSignalSpy finished(&synth, &SpeechSynthesizer::didFinish);
        QSignalSpy cancelled(&synth, &SpeechSynthesizer::didCancel);
        synth.say(QStringLiteral("vado"), SpeechSynthesizer::DefaultSpeechRate);
        QTRY_COMPARE(cancelled.count(), 1);
        QCOMPARE(finished.count(), 0);
        QVERIFY(!synth.isSpeaking());
    }
};

QTEST_MAIN(SpeechTest)
#include "tst_speech.moc"
