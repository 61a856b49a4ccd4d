#pragma once

// The arithmetic of the operations: 32 bits wide on every machine, and defined for every operand.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

// Toward zero. Not a number and too small give the most negative integer, too large the largest.
inline std::int32_t truncate_to_int32(double value) {
    constexpr double kTooLarge = 2147483648.0;
    if (!(value > -kTooLarge - 1.0)) return std::numeric_limits<std::int32_t>::min();
    if (value >= kTooLarge) return std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(value);
}

// Toward minus infinity, with the same limits.
inline std::int32_t floor_to_int32(double value) { return truncate_to_int32(std::floor(value)); }

// A factor or weight in 256ths and in 1024ths, fractions cut off: what loops over pixels multiply by.
inline std::int32_t in_256ths(double factor) { return truncate_to_int32(factor * 256.0); }
inline std::int32_t in_1024ths(double factor) { return truncate_to_int32(factor * 1024.0); }

// Sums, differences and products of two's complement numbers, as the machine leaves them when they overflow.
constexpr std::int32_t wrapping_add(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
constexpr std::int32_t wrapping_subtract(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}
constexpr std::int32_t wrapping_multiply(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

// Toward zero; 0 for a divisor of 0, and the most negative number divided by -1 stays itself.
constexpr std::int32_t truncating_divide(std::int32_t dividend, std::int32_t divisor) {
    if (divisor == 0) return 0;
    if (divisor == -1) return wrapping_subtract(0, dividend);
    return dividend / divisor;
}

// Division by a power of two, toward minus infinity.
constexpr std::int32_t floor_shift(std::int32_t value, int bits) { return value >> bits; }

constexpr std::int32_t clamp_to_byte(std::int32_t value) { return std::clamp(value, 0, 255); }
