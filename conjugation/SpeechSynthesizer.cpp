#include "SpeechSynthesizer.h"

#include "EspeakEngine.h"

#include <cmath>

namespace norvella {

using detail::EspeakEngine;

SpeechSynthesizer::SpeechSynthesizer(QObject *parent) : SpeechSynthesizer(QStringLiteral("it"), parent) {}

SpeechSynthesizer::SpeechSynthesizer(const QString &language, QObject *parent)
    : QObject(parent), m_language(language), m_channel(std::make_shared<detail::SpeechChannel>())
{
    m_channel->owner = this;
}

SpeechSynthesizer::~SpeechSynthesizer()
{
    m_channel->detach();
}

bool SpeechSynthesizer::hasVoice()
{
    return !EspeakEngine::shared().voiceFor(m_language).isEmpty();
}

void SpeechSynthesizer::say(const QString &text, double rate)
{
    if (m_speaking)
        stop();
    const quint64 generation = ++m_generation;
    m_channel->generation = generation;
    m_speaking = true;

    const QByteArray voice = EspeakEngine::shared().voiceFor(m_language);
    if (voice.isEmpty()) {
        // Never fall back to another language's voice; end the utterance so nobody waits for it.
        QMetaObject::invokeMethod(this, [this, generation] {
            if (generation == m_generation && m_speaking) {
                m_speaking = false;
                emit didCancel();
            }
        }, Qt::QueuedConnection);
        return;
    }

    detail::SpeechRequest request;
    request.generation = generation;
    request.text = text.toUtf8();
    request.voice = voice;
    request.wordsPerMinute = int(std::lround(rate));
    request.playAudio = m_playsAudio;
    request.device = m_audioDevice.toUtf8();
    request.channel = m_channel;
    const auto channel = m_channel;
    request.onRange = [this, channel, generation](int start, int length) {
        channel->post([this, generation, start, length] { deliverRange(generation, start, length); });
    };
    request.onFinish = [this, channel, generation](int sampleCount) {
        channel->post([this, generation, sampleCount] { deliverFinish(generation, sampleCount); });
    };
    EspeakEngine::shared().enqueue(std::move(request));
}

void SpeechSynthesizer::stop()
{
    if (!m_speaking)
        return;
    m_speaking = false;
    // The worker sees the new generation at its next check and drops the utterance.
    m_channel->generation = ++m_generation;
    emit didCancel();
}

void SpeechSynthesizer::deliverRange(quint64 generation, int start, int length)
{
    if (generation == m_generation && m_speaking)
        emit willSpeakRange(start, length);
}

void SpeechSynthesizer::deliverFinish(quint64 generation, int sampleCount)
{
    if (generation != m_generation || !m_speaking)
        return;
    m_speaking = false;
    m_lastSampleCount = sampleCount;
    emit didFinish();
}

} // namespace norvella
