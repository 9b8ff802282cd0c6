#include "PracticeOptions.h"

#include "CrashLog.h"
#include "PracticeCardContent.h"
#include "Settings.h"

#include <algorithm>

namespace norvella::PracticeOptions {

namespace {
QList<int> numbers(const QString &text, const QList<int> &allowed)
{
    QList<int> values;
    for (const QString &part : text.split(u',', Qt::SkipEmptyParts)) {
        bool ok = false;
        const int value = part.trimmed().toInt(&ok);
        if (ok && allowed.contains(value) && !values.contains(value))
            values << value;
    }
    return values;
}

QString joined(const QList<int> &values)
{
    QStringList parts;
    for (int value : values)
        parts << QString::number(value);
    return parts.join(u',');
}

int limit(const Settings &settings, const QString &key, int fallback)
{
    if (!settings.contains(key))
        return fallback;
    const qint64 value = settings.integerForKey(key);
    if (value < 0 || value > MaximumPerDay) {
        CrashLog::log(QStringLiteral("The practice setting %1 holds %2; using %3").arg(key).arg(value).arg(fallback));
        return fallback;
    }
    return int(value);
}
} // namespace

SessionOptions read(const Settings &settings, PracticeDeck fallbackDeck)
{
    SessionOptions options;
    options.deck = fallbackDeck;
    const qint64 deck = settings.contains(Deck) ? settings.integerForKey(Deck) : -1;
    if (deck >= int(PracticeDeck::Favourites) && deck <= int(PracticeDeck::OneVerb))
        options.deck = PracticeDeck(deck);
    const QList<int> tenses = numbers(settings.stringForKey(Tenses), PracticeCards::practisableTenses());
    if (!tenses.isEmpty())
        options.tenses = tenses;
    if (settings.contains(Persons)) {
        const QList<int> persons = numbers(settings.stringForKey(Persons), {1, 2, 3, 4, 5, 6});
        if (!persons.isEmpty())
            options.persons = persons;
    }
    options.newPerDay = limit(settings, NewPerDay, DefaultNewPerDay);
    options.reviewsPerDay = limit(settings, ReviewsPerDay, DefaultReviewsPerDay);
    return options;
}

void write(Settings &settings, const SessionOptions &options, bool withDeck)
{
    if (withDeck)
        settings.setInteger(Deck, int(options.deck));
    settings.setString(Tenses, joined(options.tenses));
    QList<int> persons = options.persons;
    std::sort(persons.begin(), persons.end());
    settings.setString(Persons, joined(persons));
    settings.setInteger(NewPerDay, std::clamp(options.newPerDay, 0, MaximumPerDay));
    settings.setInteger(ReviewsPerDay, std::clamp(options.reviewsPerDay, 0, MaximumPerDay));
    settings.synchronize();
}

} // namespace norvella::PracticeOptions
