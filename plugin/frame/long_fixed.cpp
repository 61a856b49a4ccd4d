#include "long_fixed.h"

#include <cmath>

namespace tarvo::plugin {

LongFixed::LongFixed(double value) : negative_(value < 0.0) {
    int exponent = 0;
    const double fraction = std::frexp(std::fabs(value), &exponent);  // value = fraction * 2^exponent
    const auto mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, 53));
    // The mantissa's lowest bit, counted from the lowest one here.
    const int place = exponent - 53 + 32 * static_cast<int>(kFraction);
    for (int bit = 0; bit < 53; ++bit) {
        const int at = place + bit;
        if (mantissa >> bit & 1 && at >= 0) limbs_[static_cast<std::size_t>(at) / 32] |= 1u << at % 32;
    }
}

int LongFixed::compare(const Limbs& a, const Limbs& b) {
    for (std::size_t i = kLimbs; i-- > 0;)
        if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
    return 0;
}

LongFixed operator+(const LongFixed& a, const LongFixed& b) {
    const bool adds = a.negative_ == b.negative_;
    const bool a_is_larger = LongFixed::compare(a.limbs_, b.limbs_) >= 0;
    const LongFixed &larger = a_is_larger ? a : b, &smaller = a_is_larger ? b : a;
    LongFixed sum = larger;
    std::uint64_t carry = 0;  // or what is borrowed
    for (std::size_t i = 0; i < LongFixed::kLimbs; ++i) {
        const std::uint64_t limb = larger.limbs_[i], other = smaller.limbs_[i] + carry;
        const std::uint64_t result = adds ? limb + other : limb - other;
        sum.limbs_[i] = static_cast<std::uint32_t>(result);
        carry = result >> 32 & 1;
    }
    return sum;
}

LongFixed operator*(const LongFixed& a, const LongFixed& b) {
    std::array<std::uint32_t, 2 * LongFixed::kLimbs> whole{};
    for (std::size_t i = 0; i < LongFixed::kLimbs; ++i) {
        std::uint64_t carry = 0;
        for (std::size_t j = 0; j < LongFixed::kLimbs; ++j) {
            carry += std::uint64_t{a.limbs_[i]} * b.limbs_[j] + whole[i + j];
            whole[i + j] = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
        whole[i + LongFixed::kLimbs] = static_cast<std::uint32_t>(carry);
    }
    LongFixed product;
    for (std::size_t i = 0; i < LongFixed::kLimbs; ++i) product.limbs_[i] = whole[i + LongFixed::kFraction];
    product.negative_ = a.negative_ != b.negative_;
    return product;
}

LongFixed LongFixed::divided_by(std::uint32_t divisor) const {
    LongFixed quotient = *this;
    std::uint64_t rest = 0;
    for (std::size_t i = kLimbs; i-- > 0;) {
        rest = rest << 32 | limbs_[i];
        quotient.limbs_[i] = static_cast<std::uint32_t>(rest / divisor);
        rest %= divisor;
    }
    return quotient;
}

LongFixed LongFixed::negated() const {
    LongFixed other = *this;
    other.negative_ = !negative_;
    return other;
}

bool LongFixed::is_zero() const { return limbs_ == Limbs{}; }

LongFixed LongFixed::quarter() {
    LongFixed quarter;
    quarter.limbs_ = {0xA29410F3, 0x76273644, 0x04177D4C, 0x14CF98E8, 0x52049C11, 0x01B839A2,
                      0x898CC517, 0x42D18469, 0x921FB544, 1,          0};
    return quarter;
}

LongSineCosine sine_and_cosine(const LongFixed& angle, double approximate_angle) {
    constexpr double kQuartersOfOne = 0x1.45f306dc9c883p-1;
    const double quarters = std::floor(approximate_angle * kQuartersOfOne + 0.5);
    const LongFixed rest = angle - LongFixed(quarters) * LongFixed::quarter();
    // The sums of powers: rest^n / n!, the signs alternate.
    LongFixed sine, cosine, term(1.0);
    for (std::uint32_t n = 0; !term.is_zero(); ++n) {
        const bool subtracts = n / 2 % 2 == 1;
        LongFixed& sum = n % 2 == 0 ? cosine : sine;
        sum = subtracts ? sum - term : sum + term;
        term = (term * rest).divided_by(n + 1);
    }
    switch (static_cast<std::int64_t>(quarters) & 3) {
        case 1: return {cosine, sine.negated()};
        case 2: return {sine.negated(), cosine.negated()};
        case 3: return {cosine.negated(), sine};
        default: return {sine, cosine};
    }
}

}  // namespace tarvo::plugin
