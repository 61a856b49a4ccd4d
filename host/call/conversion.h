#pragma once

// How values become values of a declared type by themselves, without a class's own conversion.

#include <cstdint>
#include <optional>

#include "declaration.h"
#include "value.h"

namespace tarvo::host {

// How well a value fits a type, best first.
enum class Fit {
    exact,      // of the type; also nil, where an object or an array is wanted
    widened,    // an integer as double
    loose,      // a double cut to an integer, integer and color as one another, nil as the empty string
    converted,  // through `operator_convert` of the value's class or the type's
};

struct FittedValue {
    Fit fit;
    Value value;  // of the type; nil for no object
};

// None when the value does not fit. Booleans never become anything else. Never Fit::converted.
std::optional<FittedValue> fit(const Value& value, const Type& type);

// Toward zero; NaN and what is too small give the most negative integer, what is too large the largest.
std::int32_t truncated(double value);

}  // namespace tarvo::host
