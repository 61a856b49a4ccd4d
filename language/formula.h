#pragma once

// Numbers as people write them for the tool: 12, 0.5, width / 2, (height - 10) * 200 / width.
//
// Formulas are computed in doubles. Where an integer is wanted, the result is rounded to the nearest, halves away from
// 0.

#include <cstddef>
#include <cstdint>
#include <span>
#include <variant>
#include <vector>

namespace tarvo::language {

// The size of the picture in hand.
struct Size {
    std::int32_t width = 0, height = 0;
    friend bool operator==(const Size&, const Size&) = default;
};

struct Term {
    enum class Kind : std::uint8_t { integer, real, width, height, negate, add, subtract, multiply, divide };
    Kind kind;
    double number;         // the value of an integer or a real
    std::size_t position;  // the place in the call's text, in bytes from 0
    friend bool operator==(const Term&, const Term&) = default;
};

// Terms in postfix order. They have an operator in them, or are one of width and height.
struct Formula {
    std::vector<Term> terms;
    friend bool operator==(const Formula&, const Formula&) = default;
};

struct Number {
    std::variant<std::int32_t, double, Formula> value;
    std::size_t position;  // counted as a term's
    friend bool operator==(const Number&, const Number&) = default;
};

// Whether width or height is mentioned.
bool needs_picture(const Formula& formula);
bool needs_picture(const Number& number);
// Whether no number is written with a point or an exponent.
bool is_of_integers(const Formula& formula);

// Compute a number. The `picture` counts only for what needs one. They throw PlacedError for a division by zero, and
// for a result that does not fit.
double real_value(const Formula& formula, const Size& picture);
double real_value(const Number& number, const Size& picture);
std::int32_t integer_value(const Formula& formula, const Size& picture);
std::int32_t integer_value(const Number& number, const Size& picture);

// Returns the size that keeps the picture's proportions and is as large as the limits allow: one for the longer side,
// or two for width and height. Small pictures grow, and no side becomes shorter than 1. Throws PlacedError.
Size fitted(std::span<const Number> limits, const Size& picture);

}  // namespace tarvo::language
