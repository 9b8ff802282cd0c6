// Speaking a form: ring progress from word events, the end of speech, the
// speed setting, the low-volume warning, a missing voice, and espeak-ng itself.
#include "ConjugationTestFixture.h"
#include "PronunciationPlayer.h"
#include "ConjugationSectionModel.h"
#include "RoundProgressView.h"
#include "SpeechSynthesizer.h"
#include "VerbDetailTableViewController.h"

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
    std::unique_ptr<VerbDetailTableViewController> m_screen;
    ScriptedSynthesizer *m_synth = nullptr;
    std::optional<double> m_volume;
    QStringList m_alerts;

    VerbDetailTableViewController &show(const VerbPtr &verb)
    {
        m_screen = std::make_unique<VerbDetailTableViewController>();
        m_screen->setSettings(*m_fixture->settings);
        m_screen->setLaunchArguments({});
        m_screen->setQueue(m_fixture->queue);
        m_synth = new ScriptedSynthesizer;
        m_screen->setSpeechSynthesizer(m_synth);
        m_screen->setVolumeProbe([this] { return m_volume; });
        connect(m_screen.get(), &VerbDetailTableViewController::alertRequested, this,
                [this](const QString &message) { m_alerts << message; });
        m_screen->setSelectedVerb(verb);
        m_screen->viewDidLoad();
        return *m_screen;
    }

private slots:
    void init()
    {
        m_fixture = std::make_unique<ConjugationFixture>();
        QVERIFY(m_fixture->ready);
        m_volume.reset();
        m_alerts.clear();
    }

    void cleanup() { m_screen.reset(); }

    void progressArithmetic()
    {
        QCOMPARE(PronunciationPlayer::progressFor(0, 10), 0.1f);
        QCOMPARE(PronunciationPlayer::progressFor(5, 10), 0.55f);
        QCOMPARE(PronunciationPlayer::progressFor(9, 10), 9.0f / 10.0f * 1.1f);
        QCOMPARE(PronunciationPlayer::progressFor(10, 10), 1.1f); // the ring clamps it
        QCOMPARE(PronunciationPlayer::progressFor(3, 7), std::max(3.0f / 7.0f * 1.1f, 0.1f));
    }

    void speechRateFollowsAudioSpeed()
    {
        Settings &settings = *m_fixture->settings;
        QCOMPARE(PronunciationPlayer::speechRate(settings), SpeechSynthesizer::DefaultSpeechRate);
        settings.setDouble(SettingsKeys::AudioSpeed, 0.0);
        QCOMPARE(PronunciationPlayer::speechRate(settings), SpeechSynthesizer::DefaultSpeechRate);
        settings.setDouble(SettingsKeys::AudioSpeed, 0.5);
        QCOMPARE(PronunciationPlayer::speechRate(settings), SpeechSynthesizer::DefaultSpeechRate * 0.5);
        settings.setInteger(SettingsKeys::AudioSpeed, 2);
        QCOMPARE(PronunciationPlayer::speechRate(settings), SpeechSynthesizer::DefaultSpeechRate * 2);
    }

    void spokenTextDropsAlternatives()
    {
        auto form = [](const char *pronoun, const char *verb) {
            return Conjugation{QString::fromUtf8(pronoun), QString::fromUtf8(verb), QStringLiteral("7"), 1, {}};
        };
        QCOMPARE(PronunciationPlayer::spokenText(form("io", "sono andato/a")), QStringLiteral("io sono andato"));
        QCOMPARE(PronunciationPlayer::spokenText(form("lui/lei", "è andato/a")), QStringLiteral("lui è andato"));
        QCOMPARE(PronunciationPlayer::spokenText(form("", "andante")), QStringLiteral("andante"));
        QCOMPARE(PronunciationPlayer::spokenText(form("(tu)", "va'")), QStringLiteral("tu va'"));
    }

    void wordsFillTheRingAndTheEndEmptiesIt()
    {
        m_fixture->settings->setDouble(SettingsKeys::AudioSpeed, 0.5);
        auto &screen = show(ConjugationFixture::andare());
        RoundProgressView ring;
        screen.toggleSpeech(QStringLiteral("6:0"), &ring);
        QCOMPARE(m_synth->said, QStringList{QStringLiteral("io vado")});
        QCOMPARE(m_synth->rates, QList<double>{SpeechSynthesizer::DefaultSpeechRate * 0.5});
        QCOMPARE(screen.speakingKey(), QStringLiteral("6:0"));
        QCOMPARE(screen.pronunciation().currentAudioProgress(), &ring);

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
        QCOMPARE(screen.pronunciation().currentAudioProgress(), &ring);
    }

    void tappingTheSpeakingRowStopsIt()
    {
        auto &screen = show(ConjugationFixture::andare());
        RoundProgressView ring;
        screen.toggleSpeech(QStringLiteral("7:1"), &ring);
        QCOMPARE(m_synth->said.last(), QStringLiteral("tu sei andato"));
        m_synth->word(3, 3);
        QVERIFY(ring.progress() > 0.1f);
        screen.toggleSpeech(QStringLiteral("7:1"), &ring);
        QVERIFY(!m_synth->speaking);
        QCOMPARE(m_synth->said.size(), 1);
        QCOMPARE(ring.progress(), 0.0f);
        QCOMPARE(screen.speakingKey(), QString());
    }

    void anotherRowStopsTheFirstAndTakesOver()
    {
        auto &screen = show(ConjugationFixture::andare());
        RoundProgressView first;
        RoundProgressView second;
        screen.toggleSpeech(QStringLiteral("6:0"), &first);
        m_synth->word(3, 4);
        screen.toggleSpeech(QStringLiteral("6:1"), &second);
        QCOMPARE(m_synth->calls, (QStringList{"say", "stop", "say"}));
        QCOMPARE(first.progress(), 0.0f);
        QCOMPARE(screen.speakingKey(), QStringLiteral("6:1"));
        m_synth->word(3, 3);
        QCOMPARE(first.progress(), 0.0f);
        QCOMPARE(second.progress(), 3.0f / 6.0f * 1.1f);
    }

    void aRingThatWentAwayIsNotTouched()
    {
        auto &screen = show(ConjugationFixture::andare());
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

    void formItemsFollowTheSpeakingRow()
    {
        auto &screen = show(ConjugationFixture::andare());
        const QVariantList rows = screen.tableModel()->index(1, 0).data(ConjugationSectionModel::FormsRole).toList();
        auto *vado = rows.value(0).value<QObject *>();
        auto *vai = rows.value(1).value<QObject *>();
        QVERIFY(vado && vai);
        RoundProgressView ring;
        QMetaObject::invokeMethod(vado, "toggleSpeech", Q_ARG(QObject *, &ring));
        QVERIFY(vado->property("speaking").toBool());
        QVERIFY(!vai->property("speaking").toBool());
        m_synth->finish();
        QVERIFY(!vado->property("speaking").toBool());
    }

    void lowVolumeWarnsAtMostOnceADay()
    {
        auto &screen = show(ConjugationFixture::andare());
        m_volume = 0.14;
        screen.toggleSpeech(QStringLiteral("6:0"), nullptr);
        QCOMPARE(m_alerts, QStringList{Strings::text(QStringLiteral("volume.low.warning"))});
        QCOMPARE(m_synth->said.size(), 1); // the speech goes ahead
        const double stored = m_fixture->settings->doubleForKey(SettingsKeys::TimeAudioWarning);
        QVERIFY(qAbs(stored - double(QDateTime::currentSecsSinceEpoch())) < 5);
        QCOMPARE(Settings(m_fixture->settings->filePath()).doubleForKey(SettingsKeys::TimeAudioWarning), stored);

        screen.toggleSpeech(QStringLiteral("6:1"), nullptr);
        QCOMPARE(m_alerts.size(), 1);
        QCOMPARE(m_synth->said.size(), 2);

        m_fixture->settings->setDouble(SettingsKeys::TimeAudioWarning, stored - 86401);
        screen.toggleSpeech(QStringLiteral("6:2"), nullptr);
        QCOMPARE(m_alerts.size(), 2);
    }

    void normalOrUnknownVolumeIsNotWarnedAbout()
    {
        auto &screen = show(ConjugationFixture::andare());
        m_volume = 0.15;
        screen.toggleSpeech(QStringLiteral("6:0"), nullptr);
        m_volume.reset();
        screen.toggleSpeech(QStringLiteral("6:1"), nullptr);
        QVERIFY(m_alerts.isEmpty());
        QVERIFY(!m_fixture->settings->contains(SettingsKeys::TimeAudioWarning));
        QCOMPARE(m_synth->said.size(), 2);
    }

    void aMissingItalianVoiceIsReported()
    {
        auto &screen = show(ConjugationFixture::andare());
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
        synth.say(QStringLiteral("io sarò andato"), SpeechSynthesizer::DefaultSpeechRate);
        QVERIFY(synth.isSpeaking());
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 20000);
        QVERIFY(!synth.isSpeaking());
        QCOMPARE(cancelled.count(), 0);
        QList<int> starts;
        for (const auto &args : words)
            starts << args.at(0).toInt();
        // Character positions, not bytes: "sarò" has a two-byte letter before "andato".
        QCOMPARE(starts, (QList<int>{0, 3, 8}));
        QCOMPARE(words.at(1).at(1).toInt(), 4);
        QVERIFY(synth.lastSampleCount() > 10000); // well over half a second at 22 kHz
    }

    void withoutAnAudioDeviceSpeechStillEnds()
    {
        SpeechSynthesizer synth;
        synth.setAudioDevice(QStringLiteral("norvella-no-such-device"));
        QVERIFY(synth.playsAudio());
        QSignalSpy words(&synth, &SpeechSynthesizer::willSpeakRange);
        QSignalSpy finished(&synth, &SpeechSynthesizer::didFinish);
        synth.say(QStringLiteral("vado"), SpeechSynthesizer::DefaultSpeechRate * 2);
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 20000);
        QCOMPARE(words.count(), 1);
    }

    void aStoppedUtteranceReportsNothingMore()
    {
        SpeechSynthesizer synth;
        synth.setPlaysAudio(false);
        QSignalSpy words(&synth, &SpeechSynthesizer::willSpeakRange);
        QSignalSpy finished(&synth, &SpeechSynthesizer::didFinish);
        QSignalSpy cancelled(&synth, &SpeechSynthesizer::didCancel);
        synth.say(QStringLiteral("noi eravamo andati via"), SpeechSynthesizer::DefaultSpeechRate);
        synth.stop();
        QCOMPARE(cancelled.count(), 1);
        QVERIFY(!synth.isSpeaking());
        synth.stop(); // nothing left to cancel
        QCOMPARE(cancelled.count(), 1);
        synth.say(QStringLiteral("vai"), SpeechSynthesizer::DefaultSpeechRate);
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 20000);
        // Only the second text's single word arrives.
        QCOMPARE(words.count(), 1);
        QCOMPARE(words.first().at(0).toInt(), 0);
        QCOMPARE(words.first().at(1).toInt(), 3);
        QCOMPARE(cancelled.count(), 1);
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
