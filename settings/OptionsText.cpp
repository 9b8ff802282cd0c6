#include "OptionsText.h"

#include "Settings.h"
#include "Strings.h"

#include <QHash>

#include <array>

namespace norvella::OptionsText {

namespace {
const QHash<QString, QString> &namedCodes()
{
    static const QHash<QString, QString> names{
            {QStringLiteral("fr"), QStringLiteral("settings.translations.french")},
            {QStringLiteral("de"), QStringLiteral("settings.translations.german")},
            {QStringLiteral("es"), QStringLiteral("settings.translations.spanish")},
            {QStringLiteral("pt"), QStringLiteral("settings.translations.portuguese")},
            {QStringLiteral("it"), QStringLiteral("settings.translations.italian")},
            {QStringLiteral("nl"), QStringLiteral("settings.translations.dutch")},
            {QStringLiteral("tr"), QStringLiteral("settings.translations.turkish")},
    };
    return names;
}
const QString englishKey = QStringLiteral("settings.translations.english");

// The language sheet, in its order; an empty code means automatic. Turkish is
// shown when stored but not offered.
const std::array<std::pair<const char *, const char *>, 8> languageChoices{{
    {"settings.translations.automatic", ""},
    {"settings.translations.english", "en"},
    {"settings.translations.dutch", "nl"},
    {"settings.translations.french", "fr"},
    {"settings.translations.german", "de"},
    {"settings.translations.italian", "it"},
    {"settings.translations.portuguese", "pt"},
    {"settings.translations.spanish", "es"},
}};

const std::array<std::pair<const char *, double>, 4> speedChoices{{
    {"100%", 1.0}, {"75%", 0.75}, {"50%", 0.5}, {"25%", 0.25},
}};
} // namespace

QString textOr(const QString &key, const QString &fallback)
{
    const QString text = Strings::text(key);
    return text == key ? fallback : text;
}

QString languageNameKey(const QString &storedCode, bool stored)
{
    if (!stored)
        return QStringLiteral("settings.translations.automatic");
    return namedCodes().value(storedCode, englishKey);
}

QString effectiveLanguageNameKey(const Settings &settings, const QStringList &preferredLanguages)
{
    const QString code = Preferences::translationLanguage(settings);
    if (code == QLatin1String("en"))
        return englishKey;
    if (namedCodes().contains(code))
        return namedCodes().value(code);
    // Automatic: the same prefix test the verb's translation makes; never Turkish.
    const QString first = preferredLanguages.value(0);
    for (const char *prefix : {"fr", "de", "es", "nl", "it", "pt"}) {
        if (first.startsWith(QLatin1String(prefix)))
            return namedCodes().value(QLatin1String(prefix));
    }
    return englishKey;
}

QString speedText(const Settings &settings)
{
    const double speed = settings.doubleForKey(SettingsKeys::AudioSpeed);
    if (speed <= 0.0)
        return QStringLiteral("100%");
    return QString::number(static_cast<qint64>(speed * 100.0)) + QLatin1Char('%');
}

const QStringList &appearanceChoices()
{
    static const QStringList choices{QStringLiteral("system"), QStringLiteral("light"), QStringLiteral("dark")};
    return choices;
}

QStringList segmentTitles(int sectionAndRow)
{
    if (sectionAndRow == 40)
        return {Strings::text(QStringLiteral("settings.appearance.system")),
                Strings::text(QStringLiteral("settings.appearance.light")),
                Strings::text(QStringLiteral("settings.appearance.dark"))};
    const char *keys[2] = {nullptr, nullptr};
    switch (sectionAndRow) {
    case 1: keys[0] = "settings.searchtype.start"; keys[1] = "settings.searchtype.wildcard"; break;
    case 2: keys[0] = "settings.sortby.translated"; keys[1] = "settings.sortby.original"; break;
    case 10: keys[0] = "settings.descriptions.translated"; keys[1] = "settings.descriptions.original"; break;
    default: return {};
    }
    return {Strings::text(QLatin1String(keys[0])), Strings::text(QLatin1String(keys[1]))};
}

QString sheetTitle(const QString &sheet)
{
    // This title is not localised.
    if (sheet == QLatin1String("speed"))
        return QStringLiteral("Audio Speed");
    if (sheet == QLatin1String("clearHistory"))
        return Strings::text(QStringLiteral("settings.history_items_clear"));
    return {};
}

QStringList sheetChoices(const QString &sheet)
{
    QStringList choices;
    if (sheet == QLatin1String("language")) {
        for (const auto &[key, code] : languageChoices)
            choices << Strings::text(QLatin1String(key));
    } else if (sheet == QLatin1String("speed")) {
        for (const auto &[title, speed] : speedChoices)
            choices << QLatin1String(title);
    } else if (sheet == QLatin1String("clearHistory")) {
        choices << Strings::text(QStringLiteral("settings.history_clear_yes"));
    }
    return choices;
}

QString sheetCancelText(const QString &sheet)
{
    return Strings::text(sheet == QLatin1String("clearHistory") ? QStringLiteral("settings.history_cancel")
                                                                : QStringLiteral("export.cancel"));
}

std::optional<QString> languageCodeForChoice(int index)
{
    if (index < 0 || index >= int(languageChoices.size()))
        return std::nullopt;
    return QString::fromLatin1(languageChoices[index].second);
}

std::optional<double> speedForChoice(int index)
{
    if (index < 0 || index >= int(speedChoices.size()))
        return std::nullopt;
    return speedChoices[index].second;
}

} // namespace norvella::OptionsText
