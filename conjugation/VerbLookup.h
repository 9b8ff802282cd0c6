#pragma once

#include "Verb.h"

namespace norvella {

class DatabaseQueue;

// Finds one verb by its Italian infinitive, as a list row would hand it to
// the conjugation screen (translations and favourite mark, no forms yet).
// Used to open a verb directly, for instance from the command line.
VerbPtr verbByInfinitive(DatabaseQueue &queue, const QString &italian);
// The same by id, for a link between verbs (a model verb); null when there is none.
VerbPtr verbById(DatabaseQueue &queue, qint64 id);

} // namespace norvella
