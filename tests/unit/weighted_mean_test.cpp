// Quotients without a division, against the division.

#include "weighted_mean.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

using namespace tarvo::plugin;

namespace {

TEST(Reciprocal, EveryQuotientOfEveryDivisorIsExact) {
    for (std::uint32_t divisor = 1; divisor <= 256; ++divisor) {
        const Reciprocal reciprocal = Reciprocal::of(divisor);
        for (std::uint32_t dividend = 0; dividend <= 255 * divisor; ++dividend) {
            const std::uint16_t prepared = reciprocal.prepare(static_cast<std::uint16_t>(dividend));
            ASSERT_EQ(reciprocal.quotient_of(prepared), dividend / divisor) << dividend << " / " << divisor;
        }
    }
}

// Runs of colours, one for each tap, taken apart.
class SplitRuns {
public:
    explicit SplitRuns(std::vector<std::vector<PixelColor>> runs)
        : red_blue_(std::move(runs)), green_(red_blue_.size(), std::vector<std::uint16_t>(red_blue_.front().size())) {
        for (std::size_t k = 0; k < red_blue_.size(); ++k) {
            taps_[k] = {red_blue_[k].data(), green_[k].data()};
            taps_[k].split(red_blue_[k].size());
        }
    }
    const Taps& taps() const { return taps_; }

private:
    std::vector<std::vector<PixelColor>> red_blue_;
    std::vector<std::vector<std::uint16_t>> green_;
    Taps taps_{};
};

// The mean of pixels of one tap's grey levels, computed by the class.
std::vector<PixelColor> means(const std::vector<std::int32_t>& coefficients,
                              const std::vector<std::vector<PixelColor>>& greys) {
    std::vector<PixelColor> result(greys.front().size());
    WeightedMean{coefficients}(SplitRuns(greys).taps(), result.data(), result.size());
    return result;
}

// With sums of 16 bits, positive and of either sign, and of 32 bits; whole cache lines and less.
TEST(WeightedMean, StreamedPixelsAreTheMeansAsTheyAreStored) {
    constexpr std::size_t kMost = 300;
    std::vector<std::vector<PixelColor>> runs(9, std::vector<PixelColor>(kMost));
    for (std::size_t k = 0; k < runs.size(); ++k)
        for (std::size_t x = 0; x < kMost; ++x) runs[k][x] = static_cast<PixelColor>((x + 1) * (k + 3) * 0x9E3779B1u);
    const SplitRuns split(runs);
    for (const std::vector<std::int32_t>& coefficients :
         {std::vector{1, 2, 1}, std::vector{-1, 3, -1}, std::vector{1000, 2000, 999}, std::vector{1, 2, 3, 2, 1},
          std::vector{1, 1, 1, 1, 1, 1, 1}, std::vector{3, -1, 4, 1, 5, -9, 2, 6, 5}}) {
        const WeightedMean mean(coefficients);
        for (const std::size_t count : {1u, 15u, 16u, 17u, 127u, 128u, 129u, 255u, 300u}) {
            std::vector<PixelColor> expected(count);
            mean(split.taps(), expected.data(), count);
            alignas(kCacheLine) std::uint8_t lines[(kMost + 1) * XRgb32::kBytes] = {};
            mean.stream(split.taps(), lines, count);
            finish_streaming(StoreMode::streamed);
            for (std::size_t x = 0; x < count; ++x)
                ASSERT_EQ(XRgb32::load(lines + x * XRgb32::kBytes), expected[x]) << coefficients[0] << " " << x;
            ASSERT_EQ(XRgb32::load(lines + count * XRgb32::kBytes), 0u);
        }
    }
}

// What coefficients of any size give about the multiples of their sum, where quotients change.
TEST(WeightedMean, QuotientsOfLargeSumsChangeAtMultiplesOnly) {
    std::vector<std::vector<PixelColor>> greys(3, std::vector<PixelColor>(256));
    for (std::uint32_t v = 0; v < 256; ++v) {
        greys[0][v] = grey(v);
        greys[1][v] = grey(v > 0 ? v - 1 : 0);
        greys[2][v] = grey(v);
    }
    for (std::int64_t sum = 1; sum <= 0x7FFFFFFF / 255; sum = sum < 3000 ? sum + 1 : sum * 21 / 20) {
        for (const std::int64_t sign : {1, -1}) {
            // A sum of v * sum - 1 (or, with the sign, its negative): one below a multiple.
            const auto c = [&](std::int64_t value) { return static_cast<std::int32_t>(sign * value); };
            const auto below = means({c(sum - 1), c(1), c(0)}, greys);
            const auto exactly = means({c(sum), c(0), c(0)}, greys);
            for (std::uint32_t v = 0; v < 256; ++v) {
                ASSERT_EQ(exactly[v], grey(v)) << "sum " << sign * sum;
                const std::int64_t dividend = v * (sum - 1) + (v > 0 ? v - 1 : 0);
                ASSERT_EQ(below[v], grey(static_cast<std::uint32_t>(dividend / sum))) << "sum " << sign * sum;
            }
        }
    }
}

TEST(WeightedMean, WithoutCoefficientsOrWithASumOfZeroThereIsNone) {
    EXPECT_FALSE(WeightedMean({}).defined());
    const auto defined = [](std::vector<std::int32_t> coefficients) { return WeightedMean(coefficients).defined(); };
    EXPECT_FALSE(defined({0}));
    EXPECT_FALSE(defined({-1, 2, -1}));
    EXPECT_FALSE(defined({INT32_MIN, 0, INT32_MIN}));  // wraps to 0
    EXPECT_TRUE(defined({INT32_MIN}));
    EXPECT_TRUE(defined({INT32_MAX, INT32_MAX, 3}));  // wraps to 1
}

}  // namespace
