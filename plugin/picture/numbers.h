#pragma once

// The arithmetic of the operations: 32 bits wide on every machine, and defined for every operand.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace tarvo::plugin {

// Truncates toward zero. NaN and what is too small give the most negative integer, what is too large the largest.
inline std::int32_t truncate_to_int32(double value) {
    constexpr double kTooLarge = 2147483648.0;
    if (!(value > -kTooLarge - 1.0)) return std::numeric_limits<std::int32_t>::min();
    if (value >= kTooLarge) return std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(value);
}

// Rounds toward minus infinity, with the same limits.
inline std::int32_t floor_to_int32(double value) { return truncate_to_int32(std::floor(value)); }

// Convert a factor or weight to whole 256ths or 1024ths, truncated. Loops over pixels multiply by these.
inline std::int32_t in_256ths(double factor) { return truncate_to_int32(factor * 256.0); }
inline std::int32_t in_1024ths(double factor) { return truncate_to_int32(factor * 1024.0); }

// Sums, differences and products that wrap when they overflow, as two's complement numbers do.
constexpr std::int32_t wrapping_add(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
constexpr std::int32_t wrapping_subtract(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}
constexpr std::int32_t wrapping_multiply(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

// Divides and truncates toward zero. A divisor of 0 gives 0; the most negative number divided by -1 gives itself.
constexpr std::int32_t truncating_divide(std::int32_t dividend, std::int32_t divisor) {
    if (divisor == 0) return 0;
    if (divisor == -1) return wrapping_subtract(0, dividend);
    return dividend / divisor;
}

// Divides by 2^bits and rounds toward minus infinity.
constexpr std::int32_t floor_shift(std::int32_t value, int bits) { return value >> bits; }

constexpr std::int32_t clamp_to_byte(std::int32_t value) { return std::clamp(value, 0, 255); }

}  // namespace tarvo::plugin
