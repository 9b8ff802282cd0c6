#pragma once

#include "Verb.h"

#include <QObject>

namespace norvella {

// Carries a shared Verb through QML (a list row picked → the conjugation
// screen), so both screens work on the same record.
class VerbRef : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString italian READ italian CONSTANT)
    Q_PROPERTY(qint64 verbId READ verbId CONSTANT)
public:
    explicit VerbRef(VerbPtr verb, QObject *parent = nullptr) : QObject(parent), m_verb(std::move(verb)) {}
    const VerbPtr &verb() const { return m_verb; }
    QString italian() const { return m_verb ? m_verb->italian : QString(); }
    qint64 verbId() const { return m_verb ? m_verb->id : -1; }

    static VerbPtr from(QObject *object)
    {
        auto *ref = qobject_cast<VerbRef *>(object);
        return ref ? ref->m_verb : nullptr;
    }

private:
    VerbPtr m_verb;
};

} // namespace norvella
