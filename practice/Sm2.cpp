#include "Sm2.h"

#include <algorithm>
#include <cmath>

namespace norvella::Sm2 {

double nextEasiness(double easiness, Quality quality)
{
    const int miss = 5 - std::clamp(quality, 0, 5);
    return std::max(MinimumEasiness, easiness + (0.1 - miss * (0.08 + miss * 0.02)));
}

State review(const State &state, Quality quality)
{
    quality = std::clamp(quality, 0, 5);
    State next = state;
    if (quality < 3) {
        next.repetitions = 0;
        next.interval = 1;
        return next;
    }
    next.repetitions = state.repetitions + 1;
    if (next.repetitions == 1) {
        next.interval = 1;
    } else if (next.repetitions == 2) {
        next.interval = 6;
    } else {
        // The interval grows by the E-Factor the item had when it was asked;
        // the 1990 text rounds a fraction up. The small tolerance keeps a
        // product that is whole on paper (6 x 2.5) from rounding up to the
        // next day through binary error.
        next.interval = int(std::ceil(state.interval * state.easiness - 1e-9));
    }
    next.easiness = nextEasiness(state.easiness, quality);
    return next;
}

} // namespace norvella::Sm2
