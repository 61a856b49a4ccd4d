// Functions of angles against a library of any precision, where there is one, and everywhere against what came of that.

#include "angles.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "careful_angles.h"
#include "long_fixed.h"

#ifdef TARVO_MPFR
#include <mpfr.h>
#endif

namespace tarvo::plugin {
namespace {

struct Function {
    const char* name;
    double (*usual)(double);
    double (*carefully)(double, double guess);
    double first, last;      // of the arguments
    std::uint64_t recorded;  // what all results of `for_each_argument` come to
#ifdef TARVO_MPFR
    int (*exact)(mpfr_t, const mpfr_t, mpfr_rnd_t);
#endif
};

#ifdef TARVO_MPFR
#define BESIDE(function) , function
#else
#define BESIDE(function)
#endif
const Function kFunctions[] = {
    {"sine", sine, careful::sine, -13.0, 13.0, 0xFEAF97AE669B2DD2 BESIDE(mpfr_sin)},
    {"cosine", cosine, careful::cosine, -13.0, 13.0, 0xE65F78EFDDF49A23 BESIDE(mpfr_cos)},
    {"tangent", tangent, careful::tangent, -13.0, 13.0, 0x5F279CA85AF27CB1 BESIDE(mpfr_tan)},
    {"arc sine", arc_sine, careful::arc_sine, -1.0, 1.0, 0x65FFB6FF41C356A8 BESIDE(mpfr_asin)},
    {"arc tangent", arc_tangent, careful::arc_tangent, -50.0, 50.0, 0xD4BA2EFE3AF99051 BESIDE(mpfr_atan)},
};

// A double between two others. The standard's own distributions differ from library to library.
double any_between(double first, double last, std::mt19937_64& random) {
    return first + (last - first) * static_cast<double>(random() >> 11) * 0x1p-53;
}

// Angles of whole and half degrees, by the number that operations take for pi and by the nearest double, and what is
// next to them; multiples of a quarter; numbers of all sizes; any numbers.
template <class Visit>
void for_each_argument(const Function& function, int count, Visit visit) {
    const auto visit_with_neighbours = [&](double value) {
        constexpr double kFar = std::numeric_limits<double>::max();
        for (const double each : {value, std::nextafter(value, kFar), std::nextafter(value, -kFar)})
            if (each >= function.first && each <= function.last) visit(each);
    };
    for (int half_degrees = -720; half_degrees <= 720; ++half_degrees)
        for (const double pi : {3.14159, 0x1.921fb54442d18p+1}) visit_with_neighbours(half_degrees * pi / 360.0);
    for (int quarters = -8; quarters <= 8; ++quarters) visit_with_neighbours(quarters * 0x1.921fb54442d18p+0);
    std::mt19937_64 random(42);
    for (int exponent = -80; exponent < 6; ++exponent)
        for (int i = 0; i < 40; ++i) {
            const double size = std::ldexp(i == 0 ? 1.0 : any_between(1.0, 2.0, random), exponent);
            visit_with_neighbours(size);
            visit_with_neighbours(-size);
        }
    for (int i = 0; i < count; ++i) visit(any_between(function.first, function.last, random));
}

constexpr int kCount = 20000;

TEST(Angles, SameBitsOnEveryMachine) {
    for (const Function& function : kFunctions) {
        std::uint64_t hash = 0xCBF29CE484222325;
        for_each_argument(function, kCount, [&](double argument) {
            hash = (hash ^ std::bit_cast<std::uint64_t>(function.usual(argument))) * 0x100000001B3;
        });
        EXPECT_EQ(hash, function.recorded) << function.name << ": " << std::hex << hash;
    }
}

// Arguments whose functions the careful way takes without leaving: the others are handled before.
bool is_careful(const Function& function, double argument) {
    const bool is_end = function.carefully == careful::arc_sine && std::fabs(argument) == 1.0;
    return std::fabs(argument) >= 0x1p-27 && !is_end;
}

TEST(Angles, CarefullyTheSame) {
    for (const Function& function : kFunctions) {
        int place = 0;
        for_each_argument(function, kCount, [&](double argument) {
            if (place++ % 50 != 0 || !is_careful(function, argument)) return;
            const double expected = function.usual(argument);
            for (const double guess : {expected, std::nextafter(expected, 9.0), std::nextafter(expected, -9.0)})
                ASSERT_EQ(function.carefully(argument, guess), expected) << function.name << " of " << argument;
        });
    }
}

// Their functions lie so close to the middle between two doubles, on the one side or the other, that twice the
// precision does not tell which is nearest.
struct HardArgument {
    const Function& function;
    double argument, result;
};
const HardArgument kHardArguments[] = {
    {kFunctions[0], -0x1.389ff8d68844p-5, -0x1.388c8c3052bedp-5},
    {kFunctions[0], 0x1.f8b4b70501d4p+0, 0x1.d770fa19e979ep-1},
    {kFunctions[1], -0x1.e4201b230aa8cp+0, -0x1.426d012b2e689p-2},
    {kFunctions[1], 0x1.53a22b23eef6p+1, -0x1.c42f99c80be6dp-1},
    {kFunctions[2], 0x1.b3d6f878c5a8p-2, 0x1.d037546800ad9p-2},
    {kFunctions[2], -0x1.3f143156c0d7ap+1, 0x1.843f441142aaap-1},
    // The cube root of 3, where the second term of the arc sine is half a bit of the first.
    {kFunctions[3], 0x1.7137449123ef5p-26, 0x1.7137449123ef5p-26},
    {kFunctions[3], 0x1.7137449123ef6p-26, 0x1.7137449123ef7p-26},
    {kFunctions[4], 0x1.2b926ee3bf768p-1, 0x1.0f0c90b432c46p-1},
    {kFunctions[4], 0x1.39791e89e916p-1, 0x1.19484ece6362dp-1},
};

TEST(Angles, OfHardArgumentsAreRoundedCarefully) {
    for (const HardArgument& hard : kHardArguments) {
        SCOPED_TRACE(hard.function.name);
        EXPECT_EQ(hard.function.usual(hard.argument), hard.result);
        for (const double guess : {std::nextafter(hard.result, 9.0), std::nextafter(hard.result, -9.0)})
            EXPECT_EQ(hard.function.carefully(hard.argument, guess), hard.result);
    }
}

TEST(LongFixed, IsExactAsFarAsItHasBits) {
    const LongFixed one_and_a_half(1.5), least(0x1p-288);
    EXPECT_EQ(one_and_a_half.sign(), 1);
    EXPECT_EQ(LongFixed(-1.5).sign(), -1);
    EXPECT_EQ((one_and_a_half - one_and_a_half).sign(), 0);
    EXPECT_EQ((one_and_a_half + LongFixed(-1.5)).sign(), 0);
    EXPECT_EQ((one_and_a_half + least - one_and_a_half).sign(), 1) << "nothing of the least bit is lost";
    EXPECT_EQ((one_and_a_half - LongFixed(0x1.8p0 + 0x1p-52)).sign(), -1);
    EXPECT_EQ((least.divided_by(2)).sign(), 0);
}

TEST(LongFixed, CutsOffWhatIsSmaller) {
    EXPECT_EQ(LongFixed(0x1p-289).sign(), 0);
    EXPECT_EQ(LongFixed(-0x1.fp-300).sign(), 0);
    EXPECT_EQ((LongFixed(0x1.8p-288) - LongFixed(0x1p-288)).sign(), 0);
    EXPECT_EQ(LongFixed(0.0).sign(), 0);
}

TEST(Angles, NoneWhereThereIsNone) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    for (const auto function : {sine, cosine, tangent})
        for (const double angle : {kInfinity, -kInfinity, kNaN, kMostAngle * 1.001, -1e300})
            EXPECT_TRUE(std::isnan(function(angle))) << angle;
    for (const double value : {1.0000000000000002, -1.5, kInfinity, kNaN}) EXPECT_TRUE(std::isnan(arc_sine(value)));
    EXPECT_TRUE(std::isnan(arc_tangent(kNaN)));
}

TEST(Angles, Ends) {
    constexpr double kQuarter = 0x1.921fb54442d18p+0;
    EXPECT_EQ(arc_sine(1.0), kQuarter);
    EXPECT_EQ(arc_sine(-1.0), -kQuarter);
    for (const double value : {0x1p53, 0x1p59, 0x1.8p60, 1e300, std::numeric_limits<double>::infinity()}) {
        EXPECT_EQ(arc_tangent(value), kQuarter) << value;
        EXPECT_EQ(arc_tangent(-value), -kQuarter) << value;
    }
    for (const auto function : {sine, tangent, arc_sine, arc_tangent}) {
        EXPECT_EQ(function(0.0), 0.0);
        EXPECT_TRUE(std::signbit(function(-0.0)));
        EXPECT_EQ(function(5e-324), 5e-324);
    }
    EXPECT_EQ(cosine(-0.0), 1.0);
}

#ifdef TARVO_MPFR
class Exactly {
public:
    Exactly() { mpfr_inits2(53, argument_, result_, nullptr); }
    ~Exactly() { mpfr_clears(argument_, result_, nullptr); }
    Exactly(const Exactly&) = delete;
    Exactly& operator=(const Exactly&) = delete;

    double operator()(const Function& function, double argument) {
        mpfr_set_d(argument_, argument, MPFR_RNDN);
        function.exact(result_, argument_, MPFR_RNDN);
        return mpfr_get_d(result_, MPFR_RNDN);
    }

private:
    mpfr_t argument_, result_;
};

// TARVO_ANGLES asks for more of them.
TEST(Angles, AreRoundedCorrectly) {
    const char* const asked = std::getenv("TARVO_ANGLES");
    const int count = asked ? std::atoi(asked) : kCount;
    Exactly exactly;
    for (const Function& function : kFunctions)
        for_each_argument(function, count, [&](double argument) {
            ASSERT_EQ(function.usual(argument), exactly(function, argument)) << function.name << " of " << argument;
        });
}

TEST(Angles, FarFromZero) {
    Exactly exactly;
    std::mt19937_64 random(7);
    for (const Function& function : {kFunctions[0], kFunctions[1], kFunctions[2]})
        for (int i = 0; i < kCount; ++i) {
            const double angle = any_between(-kMostAngle, kMostAngle, random);
            const double near_quarters = std::floor(angle) * 0x1.921fb54442d18p+0;
            for (const double each : {angle, near_quarters}) {
                if (std::fabs(each) > kMostAngle) continue;
                ASSERT_EQ(function.usual(each), exactly(function, each)) << function.name << " of " << each;
            }
        }
}
#endif

}  // namespace
}  // namespace tarvo::plugin
