#pragma once

#include <QtGlobal>

namespace norvella::Sm2 {

// The learner's grade of one answer, on the 0-5 scale of the 1990 description:
// 5 perfect, 4 after a hesitation, 3 with serious difficulty, 2 wrong though the
// right one then seemed easy, 1 wrong but recognised, 0 a blank.
using Quality = int;

inline constexpr double InitialEasiness = 2.5;
inline constexpr double MinimumEasiness = 1.3;

// What the algorithm keeps per card. A card never answered has repetitions 0
// and interval 0.
struct State
{
    int repetitions = 0; // successful repetitions in a row
    int interval = 0;    // days until the next repetition
    double easiness = InitialEasiness;

    bool operator==(const State &) const = default;
};

// EF' = EF + (0.1 - (5-q)(0.08 + (5-q)*0.02)), never below 1.3.
double nextEasiness(double easiness, Quality quality);

// One repetition graded `quality`. A grade below 3 starts the repetitions over
// (the next interval is one day again) and leaves the E-Factor alone; otherwise
// the intervals run 1, 6, then the previous one times the E-Factor, rounded up.
State review(const State &state, Quality quality);

// Below 4 the 1990 method asks for the item again the same day, until it scores
// at least 4; those extra answers do not change the schedule.
inline bool repeatToday(Quality quality) { return quality < 4; }

} // namespace norvella::Sm2
