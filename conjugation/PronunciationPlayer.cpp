#include "PronunciationPlayer.h"

#include "RoundProgressView.h"
#include "Settings.h"
#include "SpeechSynthesizer.h"
#include "Strings.h"
#include "SystemVolume.h"

#include <QDateTime>
#include <QRegularExpression>

#include <algorithm>

namespace norvella {

PronunciationPlayer::PronunciationPlayer(Settings &settings, QObject *parent)
    : QObject(parent), m_settings(&settings), m_volumeProbe([] { return SystemVolume::defaultOutputVolume(); })
{
}

void PronunciationPlayer::setSynthesizer(SpeechSynthesizer *synthesizer)
{
    if (m_synthesizer == synthesizer)
        return;
    delete m_synthesizer;
    m_synthesizer = synthesizer;
    if (!m_synthesizer)
        return;
    m_synthesizer->setParent(this);
    connect(m_synthesizer, &SpeechSynthesizer::willSpeakRange, this, &PronunciationPlayer::willSpeakRange);
    connect(m_synthesizer, &SpeechSynthesizer::didFinish, this, &PronunciationPlayer::didFinish);
    connect(m_synthesizer, &SpeechSynthesizer::didCancel, this, &PronunciationPlayer::didCancel);
}

SpeechSynthesizer *PronunciationPlayer::synthesizer()
{
    if (!m_synthesizer)
        setSynthesizer(new SpeechSynthesizer(QStringLiteral("it")));
    return m_synthesizer;
}

bool PronunciationPlayer::isSpeaking() const
{
    return m_synthesizer && m_synthesizer->isSpeaking();
}

void PronunciationPlayer::play(const QString &key, const QString &text, RoundProgressView *progress)
{
    warnIfVolumeIsLow();
    SpeechSynthesizer *synth = synthesizer();
    if (synth->isSpeaking())
        synth->stop();
    if (!synth->hasVoice()) {
        emit alertRequested(Strings::text(QStringLiteral("speech.voice.missing")));
        return;
    }
    m_utterance = text;
    m_currentAudioProgress = progress;
    setSpeakingKey(key);
    synth->say(text, speechRate(*m_settings));
}

void PronunciationPlayer::stop()
{
    if (m_synthesizer && m_synthesizer->isSpeaking())
        m_synthesizer->stop();
}

float PronunciationPlayer::progressFor(int start, int textLength)
{
    if (textLength <= 0)
        return 0.1f;
    return std::max(float(start) / float(textLength) * 1.1f, 0.1f);
}

// The engine will not speak slower than its minimum, so a plain product would
// make 25 % and 50 % sound the same. The slow settings share out the range the
// engine really honours, from the minimum at 25 % up to normal at 100 %; faster
// settings stay proportional.
double PronunciationPlayer::speechRate(const Settings &settings)
{
    constexpr double slowest = 0.25;
    const double speed = Preferences::audioSpeed(settings);
    if (speed >= 1.0)
        return SpeechSynthesizer::DefaultSpeechRate * speed;
    const double share = std::max(0.0, speed - slowest) / (1.0 - slowest);
    return SpeechSynthesizer::MinimumSpeechRate
            + share * (SpeechSynthesizer::DefaultSpeechRate - SpeechSynthesizer::MinimumSpeechRate);
}

QString PronunciationPlayer::spokenText(const Conjugation &form)
{
    static const QRegularExpression alternatives(QStringLiteral("/[^\\s]*"));
    static const QRegularExpression brackets(QStringLiteral("[()]"));
    QString text = (form.pronoun + QLatin1Char(' ') + form.verb);
    text.remove(alternatives);
    text.remove(brackets);
    return text.simplified();
}

void PronunciationPlayer::warnIfVolumeIsLow()
{
    const std::optional<double> volume = m_volumeProbe ? m_volumeProbe() : std::nullopt;
    if (!volume || *volume >= LowVolume)
        return;
    const double now = double(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
    const QVariant lastWarning = m_settings->objectForKey(SettingsKeys::TimeAudioWarning);
    if (lastWarning.isValid() && now - lastWarning.toDouble() <= WarningInterval)
        return;
    emit alertRequested(Strings::text(QStringLiteral("volume.low.warning")));
    m_settings->setDouble(SettingsKeys::TimeAudioWarning, now);
    m_settings->synchronize();
}

void PronunciationPlayer::willSpeakRange(int start, int)
{
    if (m_currentAudioProgress)
        m_currentAudioProgress->setProgress(progressFor(start, int(m_utterance.size())));
}

void PronunciationPlayer::didFinish()
{
    if (m_currentAudioProgress)
        m_currentAudioProgress->setProgress(1.0f);
    m_synthesizer->stop();
    if (m_currentAudioProgress)
        m_currentAudioProgress->setProgress(0.0f);
    setSpeakingKey({});
}

void PronunciationPlayer::didCancel()
{
    m_synthesizer->stop();
    if (m_currentAudioProgress)
        m_currentAudioProgress->setProgress(0.0f);
    setSpeakingKey({});
}

void PronunciationPlayer::setSpeakingKey(const QString &key)
{
    if (key == m_speakingKey)
        return;
    m_speakingKey = key;
    emit speakingKeyChanged();
}

} // namespace norvella
