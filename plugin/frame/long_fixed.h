#pragma once

// Numbers of many bits, for the rare angles whose functions lie so close to the middle between two doubles that twice
// the precision of a double does not tell which one is nearest.

#include <array>
#include <cstddef>
#include <cstdint>

namespace tarvo::plugin {

// A sign, 64 bits before the point and 288 behind it. What is smaller is cut off.
class LongFixed {
public:
    LongFixed() = default;
    // The value must be finite and below 2^64.
    explicit LongFixed(double value);

    friend LongFixed operator+(const LongFixed& a, const LongFixed& b);
    friend LongFixed operator-(const LongFixed& a, const LongFixed& b) { return a + b.negated(); }
    // The product must be below 2^64.
    friend LongFixed operator*(const LongFixed& a, const LongFixed& b);
    // Divides by a number from 1 to 65535.
    LongFixed divided_by(std::uint32_t divisor) const;
    LongFixed negated() const;

    bool is_zero() const;
    // 1, 0 or -1.
    int sign() const { return is_zero() ? 0 : negative_ ? -1 : 1; }

    // A quarter of a circle.
    static LongFixed quarter();

private:
    static constexpr std::size_t kFraction = 9, kLimbs = kFraction + 2;
    using Limbs = std::array<std::uint32_t, kLimbs>;  // the least significant first

    static int compare(const Limbs& a, const Limbs& b);

    Limbs limbs_{};
    bool negative_ = false;
};

struct LongSineCosine {
    LongFixed sine, cosine;
};

// Of an angle of at most 2^20 in size, exact to more than 250 bits behind the point.
LongSineCosine sine_and_cosine(const LongFixed& angle, double approximate_angle);

}  // namespace tarvo::plugin
