#include "numbers.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace tarvo::plugin;

namespace {

constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
const double kNotANumber = std::numeric_limits<double>::quiet_NaN();
const double kInfinity = std::numeric_limits<double>::infinity();

TEST(Numbers, TruncationGoesTowardZero) {
    EXPECT_EQ(truncate_to_int32(2.9), 2);
    EXPECT_EQ(truncate_to_int32(-2.9), -2);
    EXPECT_EQ(truncate_to_int32(-0.5), 0);
}

TEST(Numbers, TruncationOfWhatDoesNotFit) {
    EXPECT_EQ(truncate_to_int32(kNotANumber), kLeast);
    EXPECT_EQ(truncate_to_int32(-kInfinity), kLeast);
    EXPECT_EQ(truncate_to_int32(kInfinity), kMost);
    EXPECT_EQ(truncate_to_int32(-1e300), kLeast);
    EXPECT_EQ(truncate_to_int32(1e300), kMost);
    EXPECT_EQ(truncate_to_int32(2147483647.0), kMost);
    EXPECT_EQ(truncate_to_int32(2147483647.9), kMost);
    EXPECT_EQ(truncate_to_int32(2147483648.0), kMost);
    EXPECT_EQ(truncate_to_int32(-2147483648.0), kLeast);
    EXPECT_EQ(truncate_to_int32(-2147483648.9), kLeast);
    EXPECT_EQ(truncate_to_int32(-2147483649.0), kLeast);
    EXPECT_EQ(truncate_to_int32(-2147483647.0), kLeast + 1);
}

TEST(Numbers, FloorGoesTowardMinusInfinity) {
    EXPECT_EQ(floor_to_int32(2.9), 2);
    EXPECT_EQ(floor_to_int32(-2.1), -3);
    EXPECT_EQ(floor_to_int32(-2.0), -2);
    EXPECT_EQ(floor_to_int32(kNotANumber), kLeast);
    EXPECT_EQ(floor_to_int32(-2147483648.5), kLeast);
    EXPECT_EQ(floor_to_int32(kInfinity), kMost);
}

TEST(Numbers, SumsAndProductsWrap) {
    EXPECT_EQ(wrapping_add(kMost, 1), kLeast);
    EXPECT_EQ(wrapping_subtract(kLeast, 1), kMost);
    EXPECT_EQ(wrapping_subtract(0, kLeast), kLeast);
    EXPECT_EQ(wrapping_multiply(kLeast, -1), kLeast);
    EXPECT_EQ(wrapping_multiply(65536, 65536), 0);
    EXPECT_EQ(wrapping_multiply(-3, 7), -21);
}

TEST(Numbers, DivisionNeverTraps) {
    EXPECT_EQ(truncating_divide(7, 2), 3);
    EXPECT_EQ(truncating_divide(-7, 2), -3);
    EXPECT_EQ(truncating_divide(7, 0), 0);
    EXPECT_EQ(truncating_divide(kLeast, -1), kLeast);
    EXPECT_EQ(truncating_divide(kMost, -1), -kMost);
}

TEST(Numbers, ShiftsFloor) {
    EXPECT_EQ(floor_shift(-1, 8), -1);
    EXPECT_EQ(floor_shift(-256, 8), -1);
    EXPECT_EQ(floor_shift(-257, 8), -2);
    EXPECT_EQ(floor_shift(511, 8), 1);
}

TEST(Numbers, ClampToAByte) {
    EXPECT_EQ(clamp_to_byte(-1), 0);
    EXPECT_EQ(clamp_to_byte(kLeast), 0);
    EXPECT_EQ(clamp_to_byte(255), 255);
    EXPECT_EQ(clamp_to_byte(256), 255);
    EXPECT_EQ(clamp_to_byte(128), 128);
}

}  // namespace
