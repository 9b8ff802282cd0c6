#include "PracticeProgressController.h"

#include "PracticeCardContent.h"
#include "PracticeOptions.h"
#include "PracticeProgress.h"
#include "Settings.h"
#include "Strings.h"

#include <QDate>
#include <QDateTime>

namespace norvella {

PracticeProgressController::PracticeProgressController(QObject *parent)
    : PracticeDataClient(parent)
{
}

Settings &PracticeProgressController::settings() const
{
    return m_settings ? *m_settings : Settings::standard();
}

void PracticeProgressController::refresh()
{
    m_dueToday = m_streak = m_cardCount = 0;
    m_accuracy.clear();
    m_costlyVerbs.clear();
    if (store()) {
        const qint64 today = m_today > 0 ? m_today : QDate::currentDate().toJulianDay();
        const QHash<quint64, PracticeCard> cards = store()->cards();
        const QList<PracticeReview> reviews = store()->reviews();
        m_cardCount = int(cards.size());
        m_dueToday = PracticeProgress::dueCount(cards, today);
        m_streak = PracticeProgress::streak(reviews, today);
        for (const auto &tense : PracticeProgress::accuracyByTense(reviews, cards, today, Weeks)) {
            QVariantList values;
            for (double value : tense.weekly)
                values << value;
            m_accuracy << QVariantMap{{QStringLiteral("title"),
                                       Strings::text(PracticeCards::moodKey(tense.tense)) + QLatin1Char(' ')
                                               + Strings::text(PracticeCards::tenseKey(tense.tense))},
                                      {QStringLiteral("values"), values}};
        }
        const auto costly = PracticeProgress::costliestVerbs(reviews, cards, CostlyVerbCount);
        queue()->inDatabase([&](Database &db) {
            for (const auto &verb : costly) {
                auto rows = db.executeQuery(QStringLiteral("SELECT italian FROM verb WHERE _id = ?"), {verb.verbId});
                const QString name = rows && rows->next() ? rows->stringForColumn(QStringLiteral("italian"))
                                                          : QString::number(verb.verbId);
                m_costlyVerbs << QVariantMap{{QStringLiteral("title"), name},
                                             {QStringLiteral("detail"),
                                              Strings::text(QStringLiteral("practice.progress.misses")).arg(verb.misses)}};
            }
        });
    }
    emit progressChanged();
    // An unchosen deck follows the favourites, which may have changed meanwhile.
    emit choicesChanged();
}

void PracticeProgressController::change(const std::function<void(SessionOptions &)> &edit)
{
    const bool deckChosen = settings().contains(PracticeOptions::Deck);
    SessionOptions options = readOptions(settings());
    const PracticeDeck before = options.deck;
    edit(options);
    PracticeOptions::write(settings(), options, deckChosen || options.deck != before);
    emit choicesChanged();
}

int PracticeProgressController::deck() const
{
    return int(readOptions(settings()).deck);
}

void PracticeProgressController::setDeck(int deck)
{
    if (deck < int(PracticeDeck::Favourites) || deck > int(PracticeDeck::OneVerb) || deck == this->deck())
        return;
    change([&](SessionOptions &o) { o.deck = PracticeDeck(deck); });
}

QStringList PracticeProgressController::deckTitles() const
{
    return {Strings::text(QStringLiteral("practice.deck.favourites")),
            Strings::text(QStringLiteral("practice.deck.top")).arg(100),
            Strings::text(QStringLiteral("practice.deck.top")).arg(500),
            Strings::text(QStringLiteral("practice.deck.top")).arg(1000),
            Strings::text(QStringLiteral("practice.deck.irregular")),
            Strings::text(QStringLiteral("practice.deck.lastverb"))};
}

QVariantList PracticeProgressController::tenseChoices() const
{
    const QList<int> chosen = PracticeOptions::read(settings()).tenses;
    QVariantList list;
    for (int tense : PracticeCards::practisableTenses()) {
        list << QVariantMap{{QStringLiteral("type"), tense},
                            {QStringLiteral("title"), Strings::text(PracticeCards::moodKey(tense)) + QLatin1Char(' ')
                                     + Strings::text(PracticeCards::tenseKey(tense))},
                            {QStringLiteral("on"), chosen.contains(tense)}};
    }
    return list;
}

QVariantList PracticeProgressController::personChoices() const
{
    const QList<int> chosen = PracticeOptions::read(settings()).persons;
    QVariantList list;
    for (int person = 1; person <= 6; ++person) {
        list << QVariantMap{{QStringLiteral("person"), person},
                            {QStringLiteral("title"), PracticeCards::personName(person)},
                            {QStringLiteral("on"), chosen.contains(person)}};
    }
    return list;
}

int PracticeProgressController::newPerDay() const
{
    return PracticeOptions::read(settings()).newPerDay;
}

void PracticeProgressController::setNewPerDay(int count)
{
    if (count != newPerDay())
        change([&](SessionOptions &o) { o.newPerDay = count; });
}

int PracticeProgressController::reviewsPerDay() const
{
    return PracticeOptions::read(settings()).reviewsPerDay;
}

void PracticeProgressController::setReviewsPerDay(int count)
{
    if (count != reviewsPerDay())
        change([&](SessionOptions &o) { o.reviewsPerDay = count; });
}

void PracticeProgressController::setTenseOn(int tense, bool on)
{
    change([&](SessionOptions &o) {
        if (on && !o.tenses.contains(tense) && PracticeCards::practisableTenses().contains(tense))
            o.tenses << tense;
        else if (!on && o.tenses.size() > 1)
            o.tenses.removeAll(tense);
    });
}

void PracticeProgressController::setPersonOn(int person, bool on)
{
    change([&](SessionOptions &o) {
        if (on && !o.persons.contains(person) && person >= 1 && person <= 6)
            o.persons << person;
        else if (!on && o.persons.size() > 1)
            o.persons.removeAll(person);
    });
}

bool PracticeProgressController::resetProgress()
{
    const bool ok = store() && store()->reset();
    refresh();
    return ok;
}

} // namespace norvella
