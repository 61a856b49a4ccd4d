#pragma once

// Division by a constant from 1 to 256, exact and in 16 bits throughout.

#include <bit>
#include <cstdint>

namespace tarvo::plugin {

// Divides numbers that are at most 255 times as large as the divisor.
struct Reciprocal {
    static constexpr int kShift = 7;

    std::uint16_t scale;      // a power of two that brings the divisor to 129 to 256
    std::uint16_t increment;  // 0 or 1
    std::uint16_t multiplier;

    // The reciprocal is rounded up; or it is rounded down, and the dividend is raised by one. Of the two, the one that
    // is closer to the true reciprocal gives exact quotients.
    static constexpr Reciprocal of(std::uint32_t divisor) {
        constexpr std::uint32_t kOne = 0x10000u << kShift;
        const std::uint32_t scale = 256 / std::bit_ceil(divisor), scaled = divisor * scale;
        const std::uint32_t missing = kOne % scaled, exceeding = scaled - missing;
        const bool round_up = exceeding < missing, raise = missing != 0 && !round_up;
        return {static_cast<std::uint16_t>(scale), static_cast<std::uint16_t>(raise),
                static_cast<std::uint16_t>(kOne / scaled + round_up)};
    }

    constexpr std::uint16_t prepare(std::uint16_t dividend) const {
        return static_cast<std::uint16_t>(std::uint32_t{dividend} * scale + increment);
    }
    // Returns the quotient of a prepared dividend.
    constexpr std::uint16_t quotient_of(std::uint16_t prepared) const {
        const auto high_half = static_cast<std::uint16_t>(std::uint32_t{prepared} * multiplier >> 16);
        return static_cast<std::uint16_t>(high_half >> kShift);
    }
};

}  // namespace tarvo::plugin
