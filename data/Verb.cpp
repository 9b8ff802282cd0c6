#include "Verb.h"

#include "Settings.h"

#include <QLocale>

#include <array>
#include <optional>

namespace norvella {

namespace {
std::optional<QStringList> &languageOverride()
{
    static std::optional<QStringList> value;
    return value;
}
} // namespace

QStringList PreferredLanguages::get()
{
    if (languageOverride())
        return *languageOverride();
    return QLocale::system().uiLanguages();
}

void PreferredLanguages::setOverride(const QStringList &languages)
{
    languageOverride() = languages;
}

void PreferredLanguages::clearOverride()
{
    languageOverride().reset();
}

QString Verb::translation(const Settings &settings) const
{
    return translation(settings, PreferredLanguages::get());
}

QString Verb::translation(const Settings &settings, const QStringList &preferredLanguages) const
{
    const QString code = Preferences::translationLanguage(settings);
    if (code == QLatin1String("en")) return english;
    if (code == QLatin1String("fr")) return french;
    if (code == QLatin1String("de")) return german;
    if (code == QLatin1String("es")) return spanish;
    if (code == QLatin1String("pt")) return portuguese;
    if (code == QLatin1String("it")) return italian;
    if (code == QLatin1String("nl")) return dutch;
    if (code == QLatin1String("tr")) return turkish;

    // Turkish is reachable only by the explicit setting, never automatically.
    if (preferredLanguages.isEmpty())
        qFatal("No preferred language available to choose a translation");
    const QString first = preferredLanguages.first();
    if (first.startsWith(QLatin1String("fr"))) return french;
    if (first.startsWith(QLatin1String("de"))) return german;
    if (first.startsWith(QLatin1String("es"))) return spanish;
    if (first.startsWith(QLatin1String("nl"))) return dutch;
    if (first.startsWith(QLatin1String("it"))) return italian;
    if (first.startsWith(QLatin1String("pt"))) return portuguese;
    return english;
}

const ConjugationList *Verb::listForType(const QString &type) const
{
    return const_cast<Verb *>(this)->listForType(type);
}

ConjugationList *Verb::listForType(const QString &type)
{
    static const std::array<ConjugationList Verb::*, 20> lists = {
        &Verb::infinito, &Verb::participioPresente, &Verb::gerundio, &Verb::participioPassato,
        &Verb::other, &Verb::indicativoPresente, &Verb::indicativoPassatoProssimo,
        &Verb::indicativoImperfetto, &Verb::indicativoTrapassatoProssimo, &Verb::indicativoFuturo,
        &Verb::indicativoFuturoAnteriore, &Verb::indicativoPassatoRemoto,
        &Verb::indicativoTrapassatoRemoto, &Verb::imperativo, &Verb::congiuntivoPresente,
        &Verb::congiuntivoPassatoProssimo, &Verb::congiuntivoImperfetto,
        &Verb::congiuntivoTrapassatoProssimo, &Verb::condizionalePresente, &Verb::condizionalePassato,
    };
    for (size_t i = 0; i < lists.size(); ++i) {
        if (type == QString::number(i + 1))
            return &(this->*lists[i]);
    }
    return nullptr;
}

bool takesChe(const QString &type)
{
    return type == QLatin1String("15") || type == QLatin1String("16") || type == QLatin1String("17")
            || type == QLatin1String("18");
}

QString withChe(const QString &pronoun)
{
    const QString trimmed = pronoun.trimmed();
    // A source that already spells the conjunction must not read "che che io".
    if (trimmed.isEmpty() || trimmed.startsWith(QLatin1String("che "), Qt::CaseInsensitive))
        return pronoun;
    return QStringLiteral("che ") + pronoun;
}

QString titleWithTranslation(const QString &infinitive, const QString &translation)
{
    const QString shown = translation.trimmed();
    if (shown.isEmpty())
        return infinitive;
    return infinitive + QStringLiteral(" (") + shown + QLatin1Char(')');
}

} // namespace norvella
