#pragma once

#include "Verb.h"

#include <QByteArray>

#include <vector>

namespace norvella {

// A long list's rows without a record each. A Verb, with its twenty form
// lists and seventeen strings, weighs about a kilobyte before its texts, and
// the alphabetical list has over 6,000 rows of which a screen shows a dozen.
// The pool keeps what a row read (id, texts, voice and favourite flags) as
// UTF-8 in one buffer and makes the record again, equal to the one added,
// when a row is shown.
class VerbRowPool
{
public:
    // Keeps the row fields of `verb`, not its forms, usage or pattern; the
    // row's number, counting from 0, is the number of rows added before it.
    quint32 add(const Verb &verb);
    // A new record for a row added earlier.
    VerbPtr verb(quint32 row) const;
    quint32 size() const { return quint32(m_rows.size()); }
    void clear();
    // Gives back what growing left over, once every row is in.
    void squeeze();

private:
    struct Row
    {
        qint64 id;
        bool voiceAvailable;
        bool isFavourite;
    };
    std::vector<Row> m_rows;
    // Per row and text field, in field order: where its text ends in m_texts
    // (it starts where the one before ends), and whether it was null.
    std::vector<quint32> m_ends;
    std::vector<bool> m_null;
    QByteArray m_texts;
};

} // namespace norvella
