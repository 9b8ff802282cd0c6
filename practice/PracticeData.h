#pragma once

#include "PracticeStore.h"
#include "SessionBuilder.h"

#include <QObject>
#include <QPointer>
#include <QQmlEngine>

#include <memory>

namespace norvella {

class Settings;
class VerbRepository;

// The learner's practice tables over the app's one queue: made once by the
// Practice screen and handed to both its controllers, so the drill and the
// progress page read and write through the same store.
class PracticeData : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    // The verb repository, which holds the database queue; without one
    // nothing is read.
    Q_PROPERTY(QObject *queue READ queueObject WRITE setQueueObject NOTIFY queueChanged)

public:
    explicit PracticeData(QObject *parent = nullptr);
    ~PracticeData() override;

    QObject *queueObject() const;
    void setQueueObject(QObject *queue);
    // The queue without a repository: tests and a controller used alone.
    void setQueue(std::shared_ptr<DatabaseQueue> queue);
    const std::shared_ptr<DatabaseQueue> &queue() const { return m_queue; }
    PracticeStore *store() const { return m_store.get(); }

signals:
    void queueChanged();

private:
    QPointer<VerbRepository> m_repository;
    std::shared_ptr<DatabaseQueue> m_queue;
    std::unique_ptr<PracticeStore> m_store;
};

// What the drill and the progress page share: the practice data they are
// handed, or one of their own when a test or the benchmark gives them only a
// queue. `practiceDataReplaced` runs whenever the queue behind it changes.
class PracticeDataClient : public QObject
{
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(norvella::PracticeData *practiceData READ practiceData WRITE setPracticeData NOTIFY queueChanged)

public:
    using QObject::QObject;

    PracticeData *practiceData() const { return m_data; }
    void setPracticeData(PracticeData *data);
    void setQueue(std::shared_ptr<DatabaseQueue> queue);
    PracticeStore *store() const { return m_data ? m_data->store() : nullptr; }
    std::shared_ptr<DatabaseQueue> queue() const { return m_data ? m_data->queue() : nullptr; }
    // The learner's choices, with the deck they get while they have chosen none.
    SessionOptions readOptions(const Settings &settings) const;
    PracticeDeck fallbackDeck() const;

signals:
    void queueChanged();

protected:
    virtual void practiceDataReplaced() = 0;

private:
    void attach(PracticeData *data);

    QPointer<PracticeData> m_data;
    QPointer<PracticeData> m_ownData;
};

} // namespace norvella
