#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <optional>

namespace norvella {

// Reads XML or binary property lists into Qt values (dict → QVariantMap,
// array → QVariantList, bool, integer, real, string, date, data).
namespace PropertyList {
std::optional<QVariant> fromData(const QByteArray &data);
std::optional<QVariant> fromFile(const QString &path, QString *error = nullptr);
}

} // namespace norvella
