#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <optional>

namespace norvella {

// Reads XML or binary property lists into Qt values (dict → QVariantMap,
// array → QVariantList, bool, integer, real, string, date, data).
//
// libplist trusts its input: deep nesting overflows its recursion and some
// malformed strings trip its assertions. So the bytes are checked here first,
// and only a list that passes reaches it.
namespace PropertyList {
// No settings or configuration list comes near these.
inline constexpr qsizetype MaxSize = 1024 * 1024;
inline constexpr int MaxDepth = 32;

// True when the bytes are a well-formed XML or binary ("bplist00") list within
// the limits above, with no string holding a NUL; otherwise error says why.
bool check(const QByteArray &data, QString *error);

std::optional<QVariant> fromData(const QByteArray &data, QString *error = nullptr);
std::optional<QVariant> fromFile(const QString &path, QString *error = nullptr);
}

} // namespace norvella
