#include "Verb.h"

#include "Database.h"
#include "Settings.h"
#include "TranslationLanguages.h"

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
    return this->*TranslationLanguages::shown(settings, preferredLanguages).text;
}

VerbPtr verbFromRow(const ResultSet &row, VerbRowFields fields)
{
    auto verb = std::make_shared<Verb>();
    auto text = [&row](const char *column) { return row.stringForColumn(QLatin1String(column)); };
    verb->id = row.longLongIntForColumn(QStringLiteral("_id"));
    verb->italian = text("italian");
    for (const char *code : {"en", "de", "fr", "es", "nl", "pt", "tr"}) {
        const TranslationLanguage &language = *TranslationLanguages::withCode(QLatin1String(code));
        (*verb).*language.text = text(language.column);
    }
    verb->isFavourite = row.boolForColumn(QStringLiteral("favourite_available"));
    if (fields == VerbRowFields::Shown) {
        verb->voice_available = true;
        return verb;
    }
    verb->voice_available = row.boolForColumn(QStringLiteral("voice_available"));
    verb->simplified_italian = text("simplified_italian");
    verb->simplified_german = text("simplified_german");
    verb->simplified_french = text("simplified_french");
    verb->simplified_spanish = text("simplified_spanish");
    verb->simplified_dutch = text("simplified_dutch");
    verb->simplified_portuguese = text("simplified_portuguese");
    verb->simplified_turkish = text("simplified_turkish");
    return verb;
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

QString translationBeside(const QString &infinitive, const QString &translation)
{
    const QString shown = translation.trimmed();
    return shown.compare(infinitive.trimmed(), Qt::CaseInsensitive) == 0 ? QString() : shown;
}

QString titleWithTranslation(const QString &infinitive, const QString &translation)
{
    const QString shown = translationBeside(infinitive, translation);
    if (shown.isEmpty())
        return infinitive;
    return infinitive + QStringLiteral(" (") + shown + QLatin1Char(')');
}

} // namespace norvella
