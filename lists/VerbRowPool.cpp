#include "VerbRowPool.h"

#include <array>

namespace norvella {

namespace {
// Every text a verb row can fill, whichever statement read it.
constexpr std::array<QString Verb::*, 15> textFields = {
        &Verb::italian,    &Verb::simplified_italian,    &Verb::english,    &Verb::german,
        &Verb::simplified_german, &Verb::french,         &Verb::simplified_french, &Verb::spanish,
        &Verb::simplified_spanish, &Verb::dutch,         &Verb::simplified_dutch, &Verb::portuguese,
        &Verb::simplified_portuguese, &Verb::turkish,    &Verb::simplified_turkish,
};
constexpr size_t fieldCount = textFields.size();
} // namespace

quint32 VerbRowPool::add(const Verb &verb)
{
    m_rows.push_back({verb.id, verb.voice_available, verb.isFavourite});
    for (size_t field = 0; field < fieldCount; ++field) {
        const QString &text = verb.*textFields[field];
        m_texts += text.toUtf8();
        m_ends.push_back(quint32(m_texts.size()));
        m_null.push_back(text.isNull());
    }
    return quint32(m_rows.size() - 1);
}

VerbPtr VerbRowPool::verb(quint32 row) const
{
    if (row >= m_rows.size())
        return nullptr;
    auto verb = std::make_shared<Verb>();
    verb->id = m_rows[row].id;
    verb->voice_available = m_rows[row].voiceAvailable;
    verb->isFavourite = m_rows[row].isFavourite;
    const size_t first = row * fieldCount;
    for (size_t field = 0; field < fieldCount; ++field) {
        const size_t text = first + field;
        if (m_null[text])
            continue;
        const quint32 start = text == 0 ? 0 : m_ends[text - 1];
        (*verb).*textFields[field] = QString::fromUtf8(m_texts.constData() + start, qsizetype(m_ends[text] - start));
    }
    return verb;
}

void VerbRowPool::clear()
{
    m_rows = {};
    m_ends = {};
    m_null = {};
    m_texts = {};
}

void VerbRowPool::squeeze()
{
    m_rows.shrink_to_fit();
    m_ends.shrink_to_fit();
    m_null.shrink_to_fit();
    m_texts.squeeze();
}

} // namespace norvella
