#include "TranslationLanguages.h"

#include "Settings.h"

#include <iterator>

namespace norvella::TranslationLanguages {

namespace {
// The codes are distinct two-letter prefixes, so the order of the rows never
// decides between two of them.
const TranslationLanguage table[] = {
        {"en", &Verb::english, "english", "english", "english", false, true},
        {"de", &Verb::german, "german", "simplified_german", "simplified_german", true, true},
        {"fr", &Verb::french, "french", "simplified_french", "simplified_french", true, true},
        {"es", &Verb::spanish, "spanish", "simplified_spanish", "simplified_spanish", true, true},
        {"nl", &Verb::dutch, "dutch", "simplified_dutch", "simplified_dutch", true, true},
        {"pt", &Verb::portuguese, "portuguese", "simplified_portuguese", "portuguese", true, true},
        {"it", &Verb::italian, "italian", "simplified_italian", "simplified_italian", true, true},
        {"tr", &Verb::turkish, "turkish", "simplified_turkish", "simplified_turkish", false, false},
};

const TranslationLanguage *byPrefix(const QString &language, bool TranslationLanguage::*eligible)
{
    for (const TranslationLanguage &entry : table) {
        if (entry.*eligible && language.startsWith(QLatin1String(entry.code)))
            return &entry;
    }
    return nullptr;
}
} // namespace

const TranslationLanguage &english()
{
    return table[0];
}

const TranslationLanguage *withCode(const QString &code)
{
    for (const TranslationLanguage &entry : table) {
        if (code == QLatin1String(entry.code))
            return &entry;
    }
    return nullptr;
}

const TranslationLanguage &shown(const Settings &settings, const QStringList &preferredLanguages)
{
    if (const TranslationLanguage *chosen = withCode(Preferences::translationLanguage(settings)))
        return *chosen;
    if (preferredLanguages.isEmpty())
        qFatal("No preferred language available to choose a translation");
    const TranslationLanguage *automatic = byPrefix(preferredLanguages.first(), &TranslationLanguage::automatic);
    return automatic ? *automatic : english();
}

const TranslationLanguage &listed(const Settings &settings, const QStringList &preferredLanguages)
{
    QString language = Preferences::translationLanguage(settings);
    if (language.isEmpty())
        language = preferredLanguages.value(0);
    const TranslationLanguage *chosen = byPrefix(language, &TranslationLanguage::inListStatements);
    return chosen ? *chosen : english();
}

} // namespace norvella::TranslationLanguages
