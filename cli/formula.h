#pragma once

// Numbers as people write them for the tool: 12, 0.5, width / 2, (height - 10) * 200 / width.
//
// What is computed is computed in doubles. Where an integer is wanted it is rounded to the nearest, halves away from 0.

#include <cstddef>
#include <cstdint>
#include <span>
#include <variant>
#include <vector>

namespace tarvo::cli {

// Of the picture in hand.
struct Size {
    std::int32_t width = 0, height = 0;
    friend bool operator==(const Size&, const Size&) = default;
};

struct Term {
    enum class Kind : std::uint8_t { integer, real, width, height, negate, add, subtract, multiply, divide };
    Kind kind;
    double number;         // of an integer or a real
    std::size_t position;  // in the call's text, in bytes from 0
    friend bool operator==(const Term&, const Term&) = default;
};

// Terms in postfix order: at least one operator, or one of width and height.
struct Formula {
    std::vector<Term> terms;
    friend bool operator==(const Formula&, const Formula&) = default;
};

struct Number {
    std::variant<std::int32_t, double, Formula> value;
    std::size_t position;  // as a term's
    friend bool operator==(const Number&, const Number&) = default;
};

// True when it mentions width or height.
bool needs_picture(const Formula& formula);
bool needs_picture(const Number& number);
// True when no number in it is written with a point or an exponent.
bool is_of_integers(const Formula& formula);

// The `picture` is used only by what needs it. All throw PlacedError: for a division by
// zero, and for a result that does not fit.
double real_value(const Formula& formula, const Size& picture);
double real_value(const Number& number, const Size& picture);
std::int32_t integer_value(const Formula& formula, const Size& picture);
std::int32_t integer_value(const Number& number, const Size& picture);

// The size that keeps the picture's proportions and is as large as fits: `limits` are the longest side, or the most
// that width and height may be. Smaller pictures grow. No side is shorter than 1. Throws PlacedError.
Size fitted(std::span<const Number> limits, const Size& picture);

}  // namespace tarvo::cli
