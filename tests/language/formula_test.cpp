#include "formula.h"

#include <gtest/gtest.h>

#include "call_expression.h"
#include "placed_error.h"

namespace tarvo::language {
namespace {

constexpr Size kPicture{300, 200};

Number number(const std::string& text) {
    return std::get<Form>(parse_call("F(matrix(" + text + ",0,0,0,0,0,0,0,0))").arguments[0].value).numbers[0];
}

Size fit(const std::string& limits, const Size& picture) {
    const auto form = std::get<Form>(parse_call("F(fit(" + limits + "))").arguments[0].value);
    return fitted(form.numbers, picture);
}

TEST(Formula, IntegersAreTheNearestHalvesAwayFromZero) {
    EXPECT_EQ(integer_value(number("height * 200 / width"), kPicture), 133);
    EXPECT_EQ(integer_value(number("5/2"), {}), 3);
    EXPECT_EQ(integer_value(number("-5/2"), {}), -3);
    EXPECT_EQ(integer_value(number("1/3*3"), {}), 1);
    EXPECT_EQ(integer_value(number("2/3"), {}), 1);
    EXPECT_EQ(integer_value(number("0.4 + 0"), {}), 0);
    EXPECT_EQ(integer_value(number("2147483647 * 1000 / 1000"), {}), 2147483647);
    EXPECT_DOUBLE_EQ(real_value(number("1/3"), {}), 1.0 / 3);
    EXPECT_DOUBLE_EQ(real_value(number("7"), {}), 7);
}

TEST(Formula, TellsWhatItIsMadeOf) {
    EXPECT_TRUE(needs_picture(number("1 + height")));
    EXPECT_FALSE(needs_picture(number("1 + 2")));
    EXPECT_FALSE(needs_picture(number("1")));
    EXPECT_TRUE(is_of_integers(std::get<Formula>(number("width / 3").value)));
    EXPECT_FALSE(is_of_integers(std::get<Formula>(number("width / 3.0").value)));
}

// `position` is where the fault is, in F(matrix(...
void expect_error(const std::string& text, const std::string& what, std::size_t position) {
    try {
        integer_value(number(text), kPicture);
        ADD_FAILURE() << text << " has a value";
    } catch (const PlacedError& error) {
        EXPECT_EQ(error.what(), what) << text;
        EXPECT_EQ(error.position(), position + 9) << text;
    }
}

TEST(Formula, WhatHasNoValueIsAnError) {
    expect_error("1 / 0", "division by zero", 2);
    expect_error("5 + 2 / (width - 300)", "division by zero", 6);
    expect_error("0 / 0", "division by zero", 2);
    expect_error("2147483647 + 1", "the result is too large for an integer of 32 bits", 0);
    expect_error("  -2147483648 - 1", "the result is too small for an integer of 32 bits", 2);
    expect_error("1e300 * 1e300", "the result is too large", 6);
    expect_error("1 - 1e300 / 1e-300", "the result is too large", 10);
    EXPECT_EQ(integer_value(number("-2147483647 - 1"), {}), -2147483647 - 1);
}

TEST(Formula, FitKeepsTheProportions) {
    EXPECT_EQ(fit("150", kPicture), (Size{150, 100}));
    EXPECT_EQ(fit("150", {200, 300}), (Size{100, 150}));
    EXPECT_EQ(fit("50", {7, 7}), (Size{50, 50}));
    EXPECT_EQ(fit("800, 600", kPicture), (Size{800, 533}));
    EXPECT_EQ(fit("800, 500", kPicture), (Size{750, 500}));
    EXPECT_EQ(fit("10, 600", kPicture), (Size{10, 7}));
    EXPECT_EQ(fit("width, height", kPicture), kPicture);
    EXPECT_EQ(fit("10", {32767, 1}), (Size{10, 1}));  // no side vanishes
    EXPECT_EQ(fit("2147483647", {32767, 32766}), (Size{2147483647, 2147418109}));
}

TEST(Formula, FitNeedsSides) {
    EXPECT_THROW(fit("0", kPicture), PlacedError);
    EXPECT_THROW(fit("10, -1", kPicture), PlacedError);
    EXPECT_THROW(fit("width - 300", kPicture), PlacedError);
    EXPECT_THROW(fit("10", {}), PlacedError);
    EXPECT_THROW(fit("10", {10, 0}), PlacedError);
    EXPECT_THROW(fit("10", {0, 10}), PlacedError);
}

}  // namespace
}  // namespace tarvo::language
