#pragma once

// The language's own conversions of values to a declared type, without those that classes define.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "declaration.h"
#include "value.h"

namespace tarvo::host {

// How well a value fits a type, from best to worst.
enum class Fit {
    exact,      // the value is of the type, or nil where an object or an array is wanted
    widened,    // an integer becomes a double
    loose,      // a double is truncated to an integer, integer and color become each other, nil the empty string
    converted,  // `operator_convert` of the value's class or of the type's converts it
};

struct FittedValue {
    Fit fit;
    Value value;  // a value of the type, or nil
};

// Returns the value as one of the type; none when it does not fit. Booleans become nothing else. The outcome is never
// Fit::converted.
std::optional<FittedValue> fit(const Value& value, const Type& type);

// How well the arguments of a call fit a method.
struct Match {
    std::vector<Fit> fits;     // one for each argument
    std::size_t defaults = 0;  // how many parameters get no argument
};

// Returns the match that every argument fits at least as well as any other match, and some argument better; among
// equals, the one that fills in fewer defaults. Returns null if there is no such match. `AMatch` is derived from Match.
template <class AMatch>
const AMatch* best_match(const std::vector<AMatch>& matches) {
    const auto beats = [](const Match& a, const Match& b) {
        const bool as_good = std::equal(a.fits.begin(), a.fits.end(), b.fits.begin(), std::less_equal<>{});
        return as_good && (a.fits != b.fits || a.defaults < b.defaults);
    };
    for (const AMatch& match : matches) {
        const auto yields = [&](const AMatch& other) { return &other == &match || beats(match, other); };
        if (std::all_of(matches.begin(), matches.end(), yields)) return &match;
    }
    return nullptr;
}

// Truncates toward zero. NaN and what is too small give the most negative integer, what is too large the largest.
std::int32_t truncated(double value);

}  // namespace tarvo::host
