#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

namespace norvella::detail {

// The link between one synthesizer and the worker: the worker checks the
// generation to notice a stop, and posts results only while the owner lives.
struct SpeechChannel
{
    std::mutex mutex;
    QObject *owner = nullptr;
    std::atomic<quint64> generation{0};

    // Runs `call` on the owner's thread, unless the owner is gone by then.
    void post(std::function<void()> call);
    void detach();
};

struct SpeechRequest
{
    quint64 generation = 0;
    QByteArray text;
    QByteArray voice;
    int wordsPerMinute = 175;
    bool playAudio = true;
    QByteArray device;
    std::shared_ptr<SpeechChannel> channel;
    std::function<void(int start, int length)> onRange;  // called on the worker thread
    std::function<void(int sampleCount)> onFinish;       // called on the worker thread, not after a stop
};

// espeak-ng keeps one global state per process, so all synthesis goes
// through this one worker thread, one utterance at a time.
class EspeakEngine
{
public:
    static EspeakEngine &shared();
    ~EspeakEngine();

    // The voice identifier for a language code ("it"), empty when none is installed.
    QByteArray voiceFor(const QString &language);
    void enqueue(SpeechRequest request);

private:
    EspeakEngine() = default;
    bool initialise(); // with m_espeakMutex held
    void run();
    void speak(const SpeechRequest &request);

    std::mutex m_espeakMutex;
    bool m_initialised = false;
    int m_sampleRate = 0;
    std::map<QString, QByteArray> m_voices;

    std::mutex m_queueMutex;
    std::condition_variable m_wake;
    std::deque<SpeechRequest> m_queue;
    std::atomic<bool> m_stopping{false};
    std::thread m_thread;
};

} // namespace norvella::detail
