#pragma once

#include <QtGlobal>

namespace norvella {

// LIKE and lower() fold case for ASCII letters only, so folding both sides
// once up front and then comparing exactly gives the same answers.
inline void lowerAscii(char *text, qsizetype length)
{
    for (qsizetype i = 0; i < length; ++i) {
        if (text[i] >= 'A' && text[i] <= 'Z')
            text[i] = char(text[i] + ('a' - 'A'));
    }
}

} // namespace norvella
