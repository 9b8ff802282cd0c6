#pragma once

#include "Verb.h"

#include <QObject>

namespace norvella {

// One cell of a verb's conjugation: the form of a type ("8") for a pronoun id
// (1 io ... 6 loro), or, for the forms without one, at a place in its list
// (the past participle's m. sg., f. sg., m. pl., f. pl.).
struct FormCell
{
    QString type;
    int pronoun = 0;
    int slot = 0;
    bool operator==(const FormCell &) const = default;
};

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
    // The cells of a form the user searched for, the chosen reading first: the
    // conjugation screen opens on its mood and marks them. Empty for a plain open.
    const QList<FormCell> &matches() const { return m_matches; }
    void setMatches(QList<FormCell> cells) { m_matches = std::move(cells); }

    static VerbPtr from(QObject *object)
    {
        auto *ref = qobject_cast<VerbRef *>(object);
        return ref ? ref->m_verb : nullptr;
    }
    static QList<FormCell> matchesFrom(QObject *object)
    {
        auto *ref = qobject_cast<VerbRef *>(object);
        return ref ? ref->m_matches : QList<FormCell>();
    }

private:
    VerbPtr m_verb;
    QList<FormCell> m_matches;
};

} // namespace norvella
