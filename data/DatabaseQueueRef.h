#pragma once

#include "DatabaseQueue.h"

#include <QObject>

#include <memory>

namespace norvella {

// Carries the one database queue through QML from the app delegate to the
// screens, which keep it in their `queue` property.
class DatabaseQueueRef : public QObject
{
    Q_OBJECT
public:
    explicit DatabaseQueueRef(std::shared_ptr<DatabaseQueue> queue, QObject *parent = nullptr)
        : QObject(parent), m_queue(std::move(queue))
    {
    }
    const std::shared_ptr<DatabaseQueue> &queue() const { return m_queue; }

    // The queue behind a QML value, or null when there is none.
    static std::shared_ptr<DatabaseQueue> from(QObject *object)
    {
        auto *ref = qobject_cast<DatabaseQueueRef *>(object);
        return ref ? ref->m_queue : nullptr;
    }

private:
    std::shared_ptr<DatabaseQueue> m_queue;
};

} // namespace norvella
