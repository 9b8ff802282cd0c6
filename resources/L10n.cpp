#include "L10n.h"

#include "Strings.h"

namespace norvella {

QString L10n::text(const QString &key) const
{
    return Strings::text(key);
}

} // namespace norvella
