#pragma once

#include "SessionBuilder.h"

namespace norvella {

class Settings;

// The learner's practice choices, kept in the settings file beside the
// other preferences; an absent or unusable value reads as its default.
namespace PracticeOptions {

inline const QString Deck = QStringLiteral("practice_deck");
inline const QString Tenses = QStringLiteral("practice_tenses");
inline const QString Persons = QStringLiteral("practice_persons");
inline const QString NewPerDay = QStringLiteral("practice_new_per_day");
inline const QString ReviewsPerDay = QStringLiteral("practice_reviews_per_day");

inline constexpr int DefaultNewPerDay = 10;
inline constexpr int DefaultReviewsPerDay = 100;
inline constexpr int MaximumPerDay = 999;

// fallbackDeck stands in while the learner has not chosen a deck.
SessionOptions read(const Settings &settings, PracticeDeck fallbackDeck = PracticeDeck::Favourites);
// Without withDeck the deck stays unchosen, so it keeps following the fallback.
void write(Settings &settings, const SessionOptions &options, bool withDeck = true);

} // namespace PracticeOptions

} // namespace norvella
