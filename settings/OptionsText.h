#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace norvella {

class Settings;

// The words the settings screen derives from stored values.
namespace OptionsText {

// A localised text, or `fallback` when the string tables lack the key.
QString textOr(const QString &key, const QString &fallback);
// Name key of a stored "translation_language" code, as the language row shows it.
QString languageNameKey(const QString &storedCode, bool stored);
// Name key of the translation language in effect, for the include-English row.
QString effectiveLanguageNameKey(const Settings &settings, const QStringList &preferredLanguages);
// "100%", "75%": the audio speed row's detail.
QString speedText(const Settings &settings);

// The segment titles of the row at section * 10 + row; empty for other rows.
QStringList segmentTitles(int sectionAndRow);
// What the appearance row's segments store, in their order.
const QStringList &appearanceChoices();

// Choice sheets, named as the controller names them ("language", "speed", "clearHistory").
QString sheetTitle(const QString &sheet);
QStringList sheetChoices(const QString &sheet);
QString sheetCancelText(const QString &sheet);
// What a choice of the language sheet stores: a code, or empty for automatic.
std::optional<QString> languageCodeForChoice(int index);
std::optional<double> speedForChoice(int index);

} // namespace OptionsText

} // namespace norvella
