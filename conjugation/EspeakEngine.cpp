#include "EspeakEngine.h"
#include "SpeechSynthesizer.h"

#include "SystemVolume.h"

#include <alsa/asoundlib.h>
#include <espeak-ng/speak_lib.h>

#include <QMetaObject>

#include <algorithm>
#include <chrono>
#include <limits>
#include <vector>

static_assert(int(norvella::SpeechSynthesizer::MinimumSpeechRate) == espeakRATE_MINIMUM,
              "the slow speeds are spread above the engine's real minimum");

namespace norvella::detail {

namespace {

using Clock = std::chrono::steady_clock;

struct Word
{
    int start = 0;  // character index in the text
    int length = 0;
    long sample = 0; // where the word begins in the audio
};

// What espeak hands back for one utterance; filled by its callback.
struct Synthesis
{
    const SpeechRequest *request = nullptr;
    int sampleRate = 22050;
    std::vector<short> samples;
    std::vector<Word> words;
    bool cancelled = false;
};

Synthesis *currentSynthesis = nullptr;

bool isStopped(const SpeechRequest &request)
{
    return request.generation != request.channel->generation.load();
}

int collect(short *wav, int sampleCount, espeak_EVENT *events)
{
    Synthesis *s = currentSynthesis;
    if (!s)
        return 1;
    if (isStopped(*s->request)) {
        s->cancelled = true;
        return 1;
    }
    if (wav && sampleCount > 0)
        s->samples.insert(s->samples.end(), wav, wav + sampleCount);
    for (espeak_EVENT *event = events; event && event->type != espeakEVENT_LIST_TERMINATED; ++event) {
        // espeak counts characters from 1; an utterance cut short can leave a
        // stray event without a position behind for the next one.
        if (event->type == espeakEVENT_WORD && event->text_position > 0 && event->length > 0) {
            s->words.push_back({event->text_position - 1, event->length,
                                long(event->audio_position) * s->sampleRate / 1000});
        }
    }
    return 0;
}

// Hands out word events as the audio position passes them.
class WordReporter
{
public:
    explicit WordReporter(const Synthesis &s) : m_synthesis(s) {}
    void reportUntil(long sample)
    {
        const auto &words = m_synthesis.words;
        while (m_next < words.size() && words[m_next].sample <= sample) {
            m_synthesis.request->onRange(words[m_next].start, words[m_next].length);
            ++m_next;
        }
    }

private:
    const Synthesis &m_synthesis;
    size_t m_next = 0;
};

enum class Playback { Finished, Stopped, NoDevice };

// Plays nothing but keeps the pace of real playback from sample `from` on.
Playback pace(const Synthesis &s, WordReporter &reporter, long from, const std::atomic<bool> &stopping)
{
    const long total = long(s.samples.size());
    const auto start = Clock::now();
    for (;;) {
        if (isStopped(*s.request) || stopping)
            return Playback::Stopped;
        const double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
        const long position = from + long(elapsed * s.sampleRate);
        reporter.reportUntil(position);
        if (position >= total)
            return Playback::Finished;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

long queuedFrames(snd_pcm_t *pcm)
{
    snd_pcm_sframes_t delay = 0;
    return snd_pcm_delay(pcm, &delay) < 0 ? 0 : long(delay);
}

Playback playThroughAlsa(const Synthesis &s, WordReporter &reporter, const std::atomic<bool> &stopping)
{
    SystemVolume::silenceAlsaErrors();
    snd_pcm_t *pcm = nullptr;
    const QByteArray &device = s.request->device;
    if (snd_pcm_open(&pcm, device.constData(), SND_PCM_STREAM_PLAYBACK, SND_PCM_NONBLOCK) < 0)
        return Playback::NoDevice;
    if (snd_pcm_nonblock(pcm, 0) < 0
        || snd_pcm_set_params(pcm, SND_PCM_FORMAT_S16, SND_PCM_ACCESS_RW_INTERLEAVED, 1,
                              unsigned(s.sampleRate), 1, 120000) < 0) {
        snd_pcm_close(pcm);
        return Playback::NoDevice;
    }
    const long total = long(s.samples.size());
    const long chunk = std::max(1, s.sampleRate / 50);
    long written = 0;
    while (written < total) {
        if (isStopped(*s.request) || stopping) {
            snd_pcm_drop(pcm);
            snd_pcm_close(pcm);
            return Playback::Stopped;
        }
        snd_pcm_sframes_t frames = snd_pcm_writei(pcm, s.samples.data() + written,
                                                  snd_pcm_uframes_t(std::min(chunk, total - written)));
        if (frames < 0)
            frames = snd_pcm_recover(pcm, int(frames), 1);
        if (frames < 0) {
            // The device went away mid-utterance: finish the rest at playing pace.
            snd_pcm_close(pcm);
            return pace(s, reporter, written, stopping);
        }
        written += long(frames);
        reporter.reportUntil(written - queuedFrames(pcm));
    }
    // Let the buffered tail be heard before reporting the end.
    const auto deadline = Clock::now() + std::chrono::milliseconds(1000 + 1000L * total / s.sampleRate);
    for (long queued = queuedFrames(pcm); queued > 0 && Clock::now() < deadline; queued = queuedFrames(pcm)) {
        if (isStopped(*s.request) || stopping) {
            snd_pcm_drop(pcm);
            snd_pcm_close(pcm);
            return Playback::Stopped;
        }
        reporter.reportUntil(total - queued);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    reporter.reportUntil(total);
    snd_pcm_drain(pcm);
    snd_pcm_close(pcm);
    return Playback::Finished;
}

} // namespace

void SpeechChannel::post(std::function<void()> call)
{
    std::lock_guard lock(mutex);
    if (owner)
        QMetaObject::invokeMethod(owner, std::move(call), Qt::QueuedConnection);
}

void SpeechChannel::detach()
{
    std::lock_guard lock(mutex);
    owner = nullptr;
    ++generation;
}

EspeakEngine &EspeakEngine::shared()
{
    static EspeakEngine engine;
    return engine;
}

EspeakEngine::~EspeakEngine()
{
    m_stopping = true;
    m_wake.notify_all();
    if (m_thread.joinable())
        m_thread.join();
    std::lock_guard lock(m_espeakMutex);
    if (m_initialised)
        espeak_Terminate();
}

bool EspeakEngine::initialise()
{
    if (m_initialised)
        return m_sampleRate > 0;
    m_initialised = true;
    // DONT_EXIT: a missing data folder must not end the app.
    m_sampleRate = espeak_Initialize(AUDIO_OUTPUT_SYNCHRONOUS, 0, nullptr, espeakINITIALIZE_DONT_EXIT);
    if (m_sampleRate > 0)
        espeak_SetSynthCallback(collect);
    return m_sampleRate > 0;
}

QByteArray EspeakEngine::voiceFor(const QString &language)
{
    std::lock_guard lock(m_espeakMutex);
    if (auto it = m_voices.find(language); it != m_voices.end())
        return it->second;
    QByteArray found;
    if (initialise()) {
        const QByteArray wanted = language.toLatin1().toLower();
        const espeak_VOICE **voices = espeak_ListVoices(nullptr);
        for (int i = 0; voices && voices[i] && found.isEmpty(); ++i) {
            // languages: a priority byte, a language name, a zero byte; repeated, then a zero priority.
            for (const char *entry = voices[i]->languages; entry && *entry; entry += qstrlen(entry + 1) + 2) {
                if (QByteArray(entry + 1).toLower() == wanted) {
                    found = voices[i]->identifier;
                    break;
                }
            }
        }
    }
    m_voices[language] = found;
    return found;
}

void EspeakEngine::enqueue(SpeechRequest request)
{
    {
        std::lock_guard lock(m_queueMutex);
        if (!m_thread.joinable())
            m_thread = std::thread([this] { run(); });
        m_queue.push_back(std::move(request));
    }
    m_wake.notify_one();
}

void EspeakEngine::run()
{
    for (;;) {
        SpeechRequest request;
        {
            std::unique_lock lock(m_queueMutex);
            m_wake.wait(lock, [this] { return m_stopping || !m_queue.empty(); });
            if (m_stopping)
                return;
            request = std::move(m_queue.front());
            m_queue.pop_front();
        }
        if (!isStopped(request))
            speak(request);
    }
}

void EspeakEngine::speak(const SpeechRequest &request)
{
    Synthesis synthesis;
    synthesis.request = &request;
    {
        std::lock_guard lock(m_espeakMutex);
        if (!initialise() || espeak_SetVoiceByName(request.voice.constData()) != EE_OK) {
            request.onFinish(0);
            return;
        }
        synthesis.sampleRate = m_sampleRate;
        espeak_SetParameter(espeakRATE, std::clamp(request.wordsPerMinute, espeakRATE_MINIMUM, espeakRATE_MAXIMUM), 0);
        currentSynthesis = &synthesis;
        espeak_Synth(request.text.constData(), size_t(request.text.size()) + 1, 0, POS_CHARACTER, 0,
                     espeakCHARS_UTF8, nullptr, nullptr);
        espeak_Synchronize();
        currentSynthesis = nullptr;
        if (synthesis.cancelled)
            espeak_Cancel();
    }
    if (synthesis.cancelled || isStopped(request))
        return;

    WordReporter reporter(synthesis);
    Playback outcome = Playback::NoDevice;
    if (request.playAudio) {
        outcome = playThroughAlsa(synthesis, reporter, m_stopping);
        if (outcome == Playback::NoDevice)
            outcome = pace(synthesis, reporter, 0, m_stopping);
    } else {
        outcome = Playback::Finished;
    }
    if (outcome == Playback::Finished) {
        reporter.reportUntil(std::numeric_limits<long>::max());
        request.onFinish(int(synthesis.samples.size()));
    }
}

} // namespace norvella::detail
