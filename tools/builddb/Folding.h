#pragma once

#include <QString>

// The simplified_* columns: decomposed (NFD), combining marks dropped, lower case,
// so that "perché" and "Perche" match the same search text.
QString fold(const QString &text);
