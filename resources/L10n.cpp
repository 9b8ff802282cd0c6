#include "L10n.h"

#include "Strings.h"

namespace norvella {

QString L10n::text(const QString &key) const
{
    return Strings::text(key);
}

QString L10n::upper(const QString &text) const
{
    return Strings::upper(text, Strings::shared().language());
}

} // namespace norvella
