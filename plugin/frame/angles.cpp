#include "angles.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "careful_angles.h"

namespace tarvo::plugin {
namespace {

// --- twice the precision of a double ---------------------------------------------------------------------------------

// The sum of two doubles, of which the low one is at most half of the high one's last bit. The operations below are
// exact to more than 100 bits.
struct Twofold {
    double high = 0.0, low = 0.0;
};

// Exact, if `a` is not the smaller one.
Twofold ordered_sum(double a, double b) {
    const double sum = a + b;
    return {sum, b - (sum - a)};
}

// Exact.
Twofold exact_sum(double a, double b) {
    const double sum = a + b, of_b = sum - a;
    return {sum, (a - (sum - of_b)) + (b - of_b)};
}

// Exact: of the factors' halves, which have 26 bits, all products are.
Twofold exact_product(double a, double b) {
    const auto halves = [](double value) {
        constexpr double kSplit = (1 << 27) + 1;
        const double shifted = value * kSplit, high = shifted - (shifted - value);
        return Twofold{high, value - high};
    };
    const Twofold x = halves(a), y = halves(b);
    const double product = a * b;
    return {product, ((x.high * y.high - product) + x.high * y.low + x.low * y.high) + x.low * y.low};
}

Twofold operator+(Twofold a, Twofold b) {
    const Twofold high = exact_sum(a.high, b.high), low = exact_sum(a.low, b.low);
    const Twofold sum = ordered_sum(high.high, high.low + low.high);
    return ordered_sum(sum.high, sum.low + low.low);
}

Twofold operator-(Twofold a) { return {-a.high, -a.low}; }
Twofold operator-(Twofold a, Twofold b) { return a + -b; }

Twofold operator*(Twofold a, Twofold b) {
    const Twofold high = exact_product(a.high, b.high);
    return ordered_sum(high.high, high.low + (a.high * b.low + a.low * b.high));
}

Twofold operator/(Twofold a, Twofold b) {
    const double first = a.high / b.high;
    const Twofold rest = a - b * Twofold{first};
    const double second = rest.high / b.high;
    const Twofold last = rest - b * Twofold{second};
    return ordered_sum(first, second) + Twofold{last.high / b.high};
}

Twofold square_root(Twofold a) {
    const double first = std::sqrt(a.high);
    const Twofold rest = a - exact_product(first, first);
    return ordered_sum(first, rest.high / (2.0 * first));
}

// --- sine and cosine -------------------------------------------------------------------------------------------------

constexpr double kQuartersOfOne = 0x1.45f306dc9c883p-1;
constexpr double kQuarter = 0x1.921fb54442d18p+0;

// 1 / n! with alternating signs, of odd and of even n.
constexpr Twofold kSinePowers[] = {
    {0x1.0000000000000p+0, 0x0.0p+0},
    {-0x1.5555555555555p-3, -0x1.5555555555555p-57},
    {0x1.1111111111111p-7, 0x1.1111111111111p-63},
    {-0x1.a01a01a01a01ap-13, -0x1.a01a01a01a01ap-73},
    {0x1.71de3a556c734p-19, -0x1.c154f8ddc6c00p-73},
    {-0x1.ae64567f544e4p-26, 0x1.c062e06d1f209p-80},
    {0x1.6124613a86d09p-33, 0x1.f28e0cc748ebep-87},
    {-0x1.ae7f3e733b81fp-41, -0x1.1d8656b0ee8cbp-97},
    {0x1.952c77030ad4ap-49, 0x1.ac981465ddc6cp-103},
    {-0x1.2f49b46814157p-57, -0x1.2650f61dbdcb4p-112},
    {0x1.71b8ef6dcf572p-66, -0x1.d043ae40c4647p-120},
    {-0x1.761b41316381ap-75, 0x1.3423c7d91404fp-130},
    {0x1.3f3ccdd165fa9p-84, -0x1.58ddadf344487p-139},
    {-0x1.d1ab1c2dccea3p-94, -0x1.054d0c78aea14p-149},
};
constexpr Twofold kCosinePowers[] = {
    {0x1.0000000000000p+0, 0x0.0p+0},
    {-0x1.0000000000000p-1, 0x0.0p+0},
    {0x1.5555555555555p-5, 0x1.5555555555555p-59},
    {-0x1.6c16c16c16c17p-10, 0x1.f49f49f49f49fp-65},
    {0x1.a01a01a01a01ap-16, 0x1.a01a01a01a01ap-76},
    {-0x1.27e4fb7789f5cp-22, -0x1.cbbc05b4fa99ap-76},
    {0x1.1eed8eff8d898p-29, -0x1.2aec959e14c06p-83},
    {-0x1.93974a8c07c9dp-37, -0x1.05d6f8a2efd1fp-92},
    {0x1.ae7f3e733b81fp-45, 0x1.1d8656b0ee8cbp-101},
    {-0x1.6827863b97d97p-53, -0x1.eec01221a8b0bp-107},
    {0x1.e542ba4020225p-62, 0x1.ea72b4afe3c2fp-120},
    {-0x1.0ce396db7f853p-70, 0x1.aebcdbd20331cp-124},
    {0x1.f2cf01972f578p-80, -0x1.9ada5fcc1ab14p-135},
    {-0x1.88e85fc6a4e5ap-89, 0x1.71c37ebd16540p-143},
};

// The sum of powers of a square that is below 0.62. The last ones are so small that a double holds them well enough.
template <std::size_t kCount>
Twofold sum_of_powers(const Twofold (&powers)[kCount], Twofold square) {
    constexpr std::size_t kTwofold = 6;
    double last = powers[kCount - 1].high;
    for (std::size_t i = kCount - 1; i-- > kTwofold;) last = last * square.high + powers[i].high;
    Twofold sum = {last};
    for (std::size_t i = kTwofold; i-- > 0;) sum = sum * square + powers[i];
    return sum;
}

// An angle without its quarters of a circle, which are counted apart.
struct Reduced {
    Twofold rest;
    std::int64_t quarters;
};

Reduced reduced(double angle) {
    // A quarter, in parts of 32 bits, of which every product with the number of quarters is exact.
    constexpr double kParts[] = {0x1.921fb544p+0, 0x1.0b4611a6p-34, 0x1.3198a2e0p-69};
    constexpr double kLastPart = 0x1.b839a252049c1p-104;
    const double quarters = std::floor(angle * kQuartersOfOne + 0.5);
    Twofold rest = {angle};
    for (const double part : kParts) rest = rest + Twofold{-quarters * part};
    return {rest + Twofold{-quarters * kLastPart}, static_cast<std::int64_t>(quarters)};
}

// The sine, some quarters further on: the cosine is the sine one quarter on.
Twofold sine_of(const Reduced& angle, std::int64_t quarters_on) {
    const Twofold square = angle.rest * angle.rest;
    const std::int64_t quarters = angle.quarters + quarters_on;
    const Twofold value =
        quarters & 1 ? sum_of_powers(kCosinePowers, square) : angle.rest * sum_of_powers(kSinePowers, square);
    return quarters & 2 ? -value : value;
}

struct SineCosine {
    Twofold sine, cosine;
};

SineCosine sine_cosine(const Reduced& angle) { return {sine_of(angle, 0), sine_of(angle, 1)}; }

// --- rounding --------------------------------------------------------------------------------------------------------

// What the results here are off at most, as a part of them; in truth it is much less.
constexpr double kError = 0x1p-76;

// Whether the nearest double is the high one whatever the error is.
bool is_rounded(Twofold value) {
    const double error = std::fabs(value.high) * kError;
    return value.high + (value.low - error) == value.high && value.high + (value.low + error) == value.high;
}

// A quarter or more too close to a multiple of itself leaves too few bits of the rest.
bool is_close_to_quarters(const Reduced& angle) { return angle.quarters != 0 && std::fabs(angle.rest.high) < 0x1p-20; }

// Functions of smaller angles are the angle, or 1, but for less than half of the last bit.
constexpr double kTiny = 0x1p-27;
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

bool has_functions(double angle) { return std::fabs(angle) <= kMostAngle; }

// A first guess at an angle whose tangent is known, to about 16 bits, and then to 45.
double guessed_arc_tangent(double tangent) {
    const double size = std::fabs(tangent), x = size > 1.0 ? 1.0 / size : size, square = x * x;
    double angle =
        x * (0.9998660 + square * (-0.3302995 + square * (0.1801410 + square * (-0.0851330 + square * 0.0208351))));
    double sine = kSinePowers[9].high, cosine = kCosinePowers[9].high;
    for (std::size_t i = 9; i-- > 0;) {
        sine = sine * angle * angle + kSinePowers[i].high;
        cosine = cosine * angle * angle + kCosinePowers[i].high;
    }
    sine *= angle;
    angle += (x * cosine - sine) / (cosine + x * sine);
    return std::copysign(size > 1.0 ? kQuarter - angle : angle, tangent);
}

}  // namespace

double sine(double angle) {
    if (!has_functions(angle)) return kNone;
    if (std::fabs(angle) < kTiny) return angle;
    const Reduced rest = reduced(angle);
    const Twofold value = sine_of(rest, 0);
    return !is_close_to_quarters(rest) && is_rounded(value) ? value.high : careful::sine(angle, value.high);
}

double cosine(double angle) {
    if (!has_functions(angle)) return kNone;
    if (std::fabs(angle) < kTiny) return 1.0;
    const Reduced rest = reduced(angle);
    const Twofold value = sine_of(rest, 1);
    return !is_close_to_quarters(rest) && is_rounded(value) ? value.high : careful::cosine(angle, value.high);
}

double tangent(double angle) {
    if (!has_functions(angle)) return kNone;
    if (std::fabs(angle) < kTiny) return angle;
    const Reduced rest = reduced(angle);
    const SineCosine both = sine_cosine(rest);
    const Twofold value = both.sine / both.cosine;
    return !is_close_to_quarters(rest) && is_rounded(value) ? value.high : careful::tangent(angle, value.high);
}

// With a guess g at the angle a: sin(a - g) = sin a * cos g - cos a * sin g, which is so small that three powers of it
// give a - g.
double arc_sine(double value) {
    if (!(std::fabs(value) <= 1.0)) return kNone;
    if (std::fabs(value) == 1.0) return std::copysign(kQuarter, value);
    if (std::fabs(value) < kTiny) return value;
    const Twofold other = square_root(Twofold{1.0} - exact_product(value, value));
    const double guess = guessed_arc_tangent(value / other.high);
    const SineCosine of_guess = sine_cosine(reduced(guess));
    const Twofold difference = Twofold{value} * of_guess.cosine - other * of_guess.sine;
    const Twofold angle =
        Twofold{guess} + difference + Twofold{difference.high * difference.high * difference.high * (1.0 / 6.0)};
    return is_rounded(angle) ? angle.high : careful::arc_sine(value, angle.high);
}

double arc_tangent(double value) {
    if (std::isnan(value)) return kNone;
    if (std::fabs(value) > 0x1p60) return std::copysign(kQuarter, value);
    if (std::fabs(value) < kTiny) return value;
    const double guess = guessed_arc_tangent(value);
    const SineCosine of_guess = sine_cosine(reduced(guess));
    const Twofold difference =
        (Twofold{value} * of_guess.cosine - of_guess.sine) / (of_guess.cosine + Twofold{value} * of_guess.sine);
    const Twofold angle =
        Twofold{guess} + difference - Twofold{difference.high * difference.high * difference.high * (1.0 / 3.0)};
    return is_rounded(angle) ? angle.high : careful::arc_tangent(value, angle.high);
}

}  // namespace tarvo::plugin
