#include "VerbSummary.h"

#include "Settings.h"
#include "VerbRef.h"

namespace norvella {

VerbSummary::VerbSummary(QObject *parent) : QObject(parent) {}

void VerbSummary::setVerb(QObject *verb)
{
    if (verb == m_verb)
        return;
    if (m_verb)
        disconnect(m_verb, nullptr, this, nullptr);
    m_verb = verb;
    // The handle may go away while shown; the summary then shows nothing.
    if (m_verb)
        connect(m_verb, &QObject::destroyed, this, &VerbSummary::verbChanged);
    emit verbChanged();
}

bool VerbSummary::hasVerb() const
{
    return VerbRef::from(m_verb) != nullptr;
}

QString VerbSummary::italian() const
{
    const VerbPtr verb = VerbRef::from(m_verb);
    return verb ? verb->italian : QString();
}

QString VerbSummary::translation() const
{
    const VerbPtr verb = VerbRef::from(m_verb);
    return verb ? verb->translation(m_settings ? *m_settings : Settings::standard()) : QString();
}

bool VerbSummary::isFavourite() const
{
    const VerbPtr verb = VerbRef::from(m_verb);
    return verb && verb->isFavourite;
}

} // namespace norvella
