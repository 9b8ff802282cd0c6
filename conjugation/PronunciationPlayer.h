#pragma once

#include "RoundProgressView.h"
#include "Verb.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <optional>

namespace norvella {

class Settings;
class SpeechSynthesizer;

// Speaks one form at a time and fills that row's progress ring from the
// engine's word events; the ring ends empty whether the speech finishes or
// is stopped. Warns at most once a day when the output volume is very low.
class PronunciationPlayer : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString speakingKey READ speakingKey NOTIFY speakingKeyChanged)
public:
    using VolumeProbe = std::function<std::optional<double>()>;

    static constexpr double LowVolume = 0.15;
    static constexpr double WarningInterval = 86400.0; // seconds

    explicit PronunciationPlayer(Settings &settings, QObject *parent = nullptr);

    void setSettings(Settings &settings) { m_settings = &settings; }
    // Takes ownership. Without one, the espeak synthesizer is made on first use.
    void setSynthesizer(SpeechSynthesizer *synthesizer);
    SpeechSynthesizer *synthesizer();
    void setVolumeProbe(VolumeProbe probe) { m_volumeProbe = std::move(probe); }

    // Starts speaking `text` for the row `key`, whose ring is `progress` (may be null).
    void play(const QString &key, const QString &text, RoundProgressView *progress);
    void stop();
    bool isSpeaking() const;
    const QString &speakingKey() const { return m_speakingKey; }
    RoundProgressView *currentAudioProgress() const { return m_currentAudioProgress; }

    // Ring fill when the word at character `start` of an n-character text begins.
    static float progressFor(int start, int textLength);
    // Words per minute for the "audio_speed" setting.
    static double speechRate(const Settings &settings);
    // What is said for a form: pronoun and form, with "a/b" alternatives reduced to the first.
    static QString spokenText(const Conjugation &form);

signals:
    void speakingKeyChanged();
    void alertRequested(const QString &message);

private:
    void warnIfVolumeIsLow();
    void willSpeakRange(int start, int length);
    void didFinish();
    void didCancel();
    void setSpeakingKey(const QString &key);

    Settings *m_settings;
    SpeechSynthesizer *m_synthesizer = nullptr;
    VolumeProbe m_volumeProbe;
    QPointer<RoundProgressView> m_currentAudioProgress;
    QString m_utterance;
    QString m_speakingKey;
};

} // namespace norvella
