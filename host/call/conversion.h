#pragma once

// The language's own conversions of values to a declared type, without those that classes define.

#include <cstdint>
#include <optional>

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

// Truncates toward zero. NaN and what is too small give the most negative integer, what is too large the largest.
std::int32_t truncated(double value);

}  // namespace tarvo::host
