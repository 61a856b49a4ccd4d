#include "careful_angles.h"

#include <bit>
#include <cmath>
#include <cstdint>

#include "long_fixed.h"

namespace tarvo::plugin::careful {
namespace {

// The double beside another one that is not 0: the next one away from 0, or towards it.
double neighbour(double value, bool away) {
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(value) + (away ? 1 : -1));
}

// Returns the double that is nearest to a value which is never in the middle between two. `compare(middle,
// approximate)` returns 1, 0 or -1 as the value is above, at or below a number of 54 bits.
template <class Compare>
double nearest(double guess, const Compare& compare) {
    const auto value_is_beyond_middle = [&](double from, double to) {
        const LongFixed middle = LongFixed(from) + LongFixed((to - from) * 0.5);
        return compare(middle, from) == (to > from ? 1 : -1);
    };
    for (;;) {
        const double up = neighbour(guess, guess > 0.0), down = neighbour(guess, guess < 0.0);
        if (value_is_beyond_middle(guess, up))
            guess = up;
        else if (value_is_beyond_middle(guess, down))
            guess = down;
        else
            return guess;
    }
}

}  // namespace

double sine(double angle, double guess) {
    const LongFixed exact = sine_and_cosine(LongFixed(angle), angle).sine;
    return nearest(guess, [&](const LongFixed& middle, double) { return (exact - middle).sign(); });
}

double cosine(double angle, double guess) {
    const LongFixed exact = sine_and_cosine(LongFixed(angle), angle).cosine;
    return nearest(guess, [&](const LongFixed& middle, double) { return (exact - middle).sign(); });
}

double tangent(double angle, double guess) {
    const LongSineCosine exact = sine_and_cosine(LongFixed(angle), angle);
    return nearest(guess, [&](const LongFixed& middle, double) {
        return (exact.sine - middle * exact.cosine).sign() * exact.cosine.sign();
    });
}

double arc_sine(double value, double guess) {
    return nearest(guess, [&](const LongFixed& middle, double approximate) {
        return (LongFixed(value) - sine_and_cosine(middle, approximate).sine).sign();
    });
}

double arc_tangent(double value, double guess) {
    return nearest(guess, [&](const LongFixed& middle, double approximate) {
        const LongSineCosine of_middle = sine_and_cosine(middle, approximate);
        return (LongFixed(value) * of_middle.cosine - of_middle.sine).sign();
    });
}

}  // namespace tarvo::plugin::careful
