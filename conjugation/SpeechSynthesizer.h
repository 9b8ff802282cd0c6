#pragma once

#include <QObject>
#include <QString>

#include <memory>

namespace norvella {

namespace detail {
struct SpeechChannel;
}

// Speaks text with the espeak-ng voice of one language. Synthesis and
// playback run on a worker thread; the signals always arrive on the thread
// that owns the synthesizer. Without an audio device the utterance is paced
// as if it were playing, so progress and the end are still reported.
// The methods are virtual so a test can script the engine.
class SpeechSynthesizer : public QObject
{
    Q_OBJECT
public:
    // espeak-ng's normal speed, in words per minute.
    static constexpr double DefaultSpeechRate = 175.0;
    // The slowest espeak-ng speaks; a slower request sounds exactly like this.
    static constexpr double MinimumSpeechRate = 80.0;

    explicit SpeechSynthesizer(QObject *parent = nullptr);
    explicit SpeechSynthesizer(const QString &language, QObject *parent = nullptr);
    ~SpeechSynthesizer() override;

    const QString &language() const { return m_language; }
    // Whether a voice for the language is installed; no other voice stands in.
    virtual bool hasVoice();
    virtual bool isSpeaking() const { return m_speaking; }
    // Stops whatever is speaking, then speaks text at rate words per minute.
    virtual void say(const QString &text, double rate);
    // Ends the current utterance at once and reports didCancel.
    virtual void stop();

    // False synthesises into memory only and reports events as soon as they
    // are produced (tests, machines without sound).
    void setPlaysAudio(bool plays) { m_playsAudio = plays; }
    bool playsAudio() const { return m_playsAudio; }
    // The ALSA output to play through.
    void setAudioDevice(const QString &device) { m_audioDevice = device; }
    // Samples synthesised for the last finished utterance.
    int lastSampleCount() const { return m_lastSampleCount; }

signals:
    // A word starting at character `start` of the text is about to be heard.
    void willSpeakRange(int start, int length);
    void didFinish();
    void didCancel();

private:
    void deliverRange(quint64 generation, int start, int length);
    void deliverFinish(quint64 generation, int sampleCount);

    QString m_language;
    QString m_audioDevice = QStringLiteral("default");
    bool m_playsAudio = true;
    bool m_speaking = false;
    quint64 m_generation = 0;
    int m_lastSampleCount = 0;
    std::shared_ptr<detail::SpeechChannel> m_channel;
};

} // namespace norvella
