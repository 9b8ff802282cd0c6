#include "PracticeData.h"

#include "PracticeOptions.h"
#include "Settings.h"
#include "VerbRepository.h"

namespace norvella {

PracticeData::PracticeData(QObject *parent) : QObject(parent) {}

PracticeData::~PracticeData() = default;

QObject *PracticeData::queueObject() const
{
    return m_repository;
}

void PracticeData::setQueueObject(QObject *queue)
{
    VerbRepository *repository = VerbRepository::from(queue);
    if (repository == m_repository)
        return;
    m_repository = repository;
    setQueue(repository ? repository->queue() : nullptr);
}

void PracticeData::setQueue(std::shared_ptr<DatabaseQueue> queue)
{
    m_queue = std::move(queue);
    m_store = m_queue ? std::make_unique<PracticeStore>(m_queue) : nullptr;
    emit queueChanged();
}

void PracticeDataClient::setPracticeData(PracticeData *data)
{
    if (data == m_data)
        return;
    if (m_ownData && m_ownData != data) {
        // Later: QML may still read the old value while it takes the new one.
        m_ownData->deleteLater();
        m_ownData = nullptr;
    }
    attach(data);
}

void PracticeDataClient::setQueue(std::shared_ptr<DatabaseQueue> queue)
{
    if (!m_ownData) {
        auto *own = new PracticeData(this);
        setPracticeData(own);
        m_ownData = own;
    }
    m_ownData->setQueue(std::move(queue));
}

PracticeDeck PracticeDataClient::fallbackDeck() const
{
    PracticeDeck deck = PracticeDeck::Favourites;
    if (const auto q = queue())
        q->inDatabase([&](Database &db) { deck = SessionBuilder::defaultDeck(db); });
    return deck;
}

SessionOptions PracticeDataClient::readOptions(const Settings &settings) const
{
    // The favourites are looked at only while the learner has no deck of their own.
    return PracticeOptions::read(settings, settings.contains(PracticeOptions::Deck) ? PracticeDeck::Favourites
                                                                                    : fallbackDeck());
}

void PracticeDataClient::attach(PracticeData *data)
{
    if (m_data)
        disconnect(m_data, nullptr, this, nullptr);
    m_data = data;
    if (data) {
        connect(data, &PracticeData::queueChanged, this, [this] {
            practiceDataReplaced();
            emit queueChanged();
        });
    }
    practiceDataReplaced();
    emit queueChanged();
}

} // namespace norvella
