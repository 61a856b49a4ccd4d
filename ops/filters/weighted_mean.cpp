#include "weighted_mean.h"

#include <bit>
#include <limits>

#include "channel_lanes.h"
#include "numbers.h"
#include "row_clones.h"
#include "rows.h"

// Rounding the reciprocal up, or down with the dividend raised by one: of the two, the one that is nearer to what it
// stands for is exact.
Reciprocal Reciprocal::of(std::uint32_t divisor) {
    constexpr std::uint32_t kOne = 0x10000u << kShift;
    const std::uint32_t scale = 256 / std::bit_ceil(divisor), scaled = divisor * scale;
    const std::uint32_t missing = kOne % scaled, exceeding = scaled - missing;
    const bool round_up = exceeding < missing, raise = missing != 0 && !round_up;
    return {static_cast<std::uint16_t>(scale), static_cast<std::uint16_t>(raise),
            static_cast<std::uint16_t>(kOne / scaled + round_up)};
}

namespace {

TARVO_INLINED inline void split(PixelColor color, PixelColor& red_blue, std::uint16_t& green) {
    red_blue = color & 0xFF00FF;
    green = static_cast<std::uint16_t>(static_cast<std::uint16_t>(color) >> 8);
}

TARVO_ROW_CLONES void split_colors(PixelColor* __restrict red_blue, std::uint16_t* __restrict green,
                                   std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) split(red_blue[x], red_blue[x], green[x]);
}

TARVO_ROW_CLONES void split_words(const std::uint8_t* __restrict words, PixelColor* __restrict red_blue,
                                  std::uint16_t* __restrict green, std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) split(XRgb32::load(words + x * XRgb32::kBytes), red_blue[x], green[x]);
}

// --- small coefficients: sums of 16 bits -----------------------------------------------------------------------------

using HalfWord = channel_lanes::HalfWord;

struct HalfWordSums {
    alignas(kCacheLine) std::array<std::uint16_t, 2 * kChunkPixels> red_blue;
    alignas(kCacheLine) std::array<std::uint16_t, kChunkPixels> green;
};

// A tap of some channel; its coefficient modulo 2^16.
struct HalfWordTap {
    const HalfWord* values;
    std::uint32_t coefficient;

    [[gnu::always_inline]] std::uint32_t weighted(std::size_t i) const { return coefficient * values[i]; }
};

TARVO_ROW_CLONES void begin_sums(std::uint16_t* __restrict sums, std::size_t count, std::uint32_t start,
                                 HalfWordTap a, HalfWordTap b, HalfWordTap c) {
    for (std::size_t i = 0; i < count; ++i)
        sums[i] = static_cast<std::uint16_t>(start + a.weighted(i) + b.weighted(i) + c.weighted(i));
}

TARVO_ROW_CLONES void add_two(std::uint16_t* __restrict sums, std::size_t count, HalfWordTap a, HalfWordTap b) {
    for (std::size_t i = 0; i < count; ++i)
        sums[i] = static_cast<std::uint16_t>(sums[i] + a.weighted(i) + b.weighted(i));
}

// Four taps at a time read and write the sums half as often as twice two.
TARVO_ROW_CLONES void add_four(std::uint16_t* __restrict sums, std::size_t count, HalfWordTap a, HalfWordTap b,
                               HalfWordTap c, HalfWordTap d) {
    for (std::size_t i = 0; i < count; ++i)
        sums[i] = static_cast<std::uint16_t>(sums[i] + a.weighted(i) + b.weighted(i) + c.weighted(i) + d.weighted(i));
}

// Where the sums are still raised by `start`, and may lie on either side of what has a quotient.
TARVO_ROW_CLONES void prepare_dividends(std::uint16_t* sums, std::size_t count, std::uint16_t start,
                                        std::uint16_t largest, const Reciprocal& by) {
    const Reciprocal reciprocal = by;
    for (std::size_t i = 0; i < count; ++i) {
        const auto positive = static_cast<std::uint16_t>(std::max(sums[i], start) - start);
        sums[i] = reciprocal.prepare(std::min(positive, largest));
    }
}

TARVO_ROW_CLONES void divide_red_blue(const std::uint16_t* sums, HalfWord* __restrict means, std::size_t count,
                                      const Reciprocal& by) {
    const Reciprocal reciprocal = by;
    for (std::size_t i = 0; i < count; ++i) means[i] = reciprocal.quotient_of(sums[i]);
}

TARVO_ROW_CLONES void divide_green(const std::uint16_t* sums, PixelColor* __restrict means, std::size_t count,
                                   const Reciprocal& by) {
    const Reciprocal reciprocal = by;
    for (std::size_t x = 0; x < count; ++x) means[x] |= std::uint32_t{reciprocal.quotient_of(sums[x])} << 8;
}

// --- any coefficients: sums of 32 bits -------------------------------------------------------------------------------

// Unsigned, so that they wrap.
struct WordSums {
    using Channel = std::array<std::uint32_t, kChunkPixels>;
    alignas(kCacheLine) Channel red, green, blue;
};

struct WordTap {
    SplitRun run;
    std::uint32_t coefficient;

    [[gnu::always_inline]] std::uint32_t red(std::size_t x) const { return coefficient * (run.red_blue[x] >> 16); }
    [[gnu::always_inline]] std::uint32_t green(std::size_t x) const { return coefficient * run.green[x]; }
    [[gnu::always_inline]] std::uint32_t blue(std::size_t x) const { return coefficient * (run.red_blue[x] & 0xFF); }
};

TARVO_ROW_CLONES void begin_word_sums(WordSums& __restrict sums, std::size_t count, WordTap centre) {
    for (std::size_t x = 0; x < count; ++x) {
        sums.red[x] = centre.red(x);
        sums.green[x] = centre.green(x);
        sums.blue[x] = centre.blue(x);
    }
}

TARVO_ROW_CLONES void add_pair_to_word_sums(WordSums& __restrict sums, std::size_t count, WordTap before,
                                            WordTap after) {
    for (std::size_t x = 0; x < count; ++x) {
        sums.red[x] += before.red(x) + after.red(x);
        sums.green[x] += before.green(x) + after.green(x);
        sums.blue[x] += before.blue(x) + after.blue(x);
    }
}

// Divides sums by a constant other than 0. With half a unit added to the dividend, a quotient is at least half of 1 /
// 2^31 away from every integer, which is far more than the rounding of the reciprocal can move it.
struct WordDivision {
    std::int32_t lowest, highest;  // sums beyond have the quotients of these, 0 and 255
    double half, reciprocal;

    explicit WordDivision(std::int32_t divisor) : half(divisor > 0 ? 0.5 : -0.5), reciprocal(1.0 / divisor) {
        using Limits = std::numeric_limits<std::int32_t>;
        const std::int64_t white = 255 * std::int64_t{divisor};
        lowest = static_cast<std::int32_t>(std::clamp<std::int64_t>(white, Limits::min(), 0));
        highest = static_cast<std::int32_t>(std::clamp<std::int64_t>(white, 0, Limits::max()));
    }

    [[gnu::always_inline]] std::uint32_t quotient_of(std::uint32_t sum) const {
        const std::int32_t dividend = std::clamp(static_cast<std::int32_t>(sum), lowest, highest);
        return static_cast<std::uint32_t>(static_cast<std::int32_t>((dividend + half) * reciprocal));
    }
};

TARVO_ROW_CLONES void divide_words(const WordSums& sums, PixelColor* __restrict means, std::size_t count,
                                   const WordDivision& by) {
    const WordDivision division = by;
    for (std::size_t x = 0; x < count; ++x)
        means[x] = pack_rgb(division.quotient_of(sums.red[x]), division.quotient_of(sums.green[x]),
                            division.quotient_of(sums.blue[x]));
}

}  // namespace

void SplitRun::split(std::size_t count) const { split_colors(red_blue, green, count); }

void SplitRun::split(const std::uint8_t* words, std::size_t count) const { split_words(words, red_blue, green, count); }

WeightedMean::WeightedMean(std::span<const std::int32_t> coefficients) {
    if (coefficients.empty()) return;
    taps_ = std::max(static_cast<std::int32_t>(coefficients.size()), taps_);
    std::ranges::copy(coefficients, coefficients_.begin() + (coefficients.size() == 1));
    std::int64_t positive = 0, negative = 0;
    for (const std::int32_t c : coefficients) {
        sum_ = wrapping_add(sum_, c);
        (c > 0 ? positive : negative) += c;
    }
    fits_in_half_words_ = positive - negative <= 256 && sum_ != 0;

    // Half words are divided by positive numbers. And the most negative sum divided by -1 stays what it is, as it does
    // when it is negated.
    if (sum_ == -1 || (sum_ < 0 && fits_in_half_words_)) {
        for (std::int32_t& c : coefficients_) c = wrapping_subtract(0, c);
        sum_ = -sum_;
        negative = -positive;
    }
    if (!fits_in_half_words_) return;
    reciprocal_ = Reciprocal::of(static_cast<std::uint32_t>(sum_));
    has_negative_ = negative < 0;
    if (has_negative_) {
        start_ = static_cast<std::uint16_t>(-255 * negative);
    } else {
        start_ = reciprocal_.increment;
        for (std::int32_t& c : coefficients_) c *= reciprocal_.scale;
    }
}

void WeightedMean::operator()(const Taps& taps, PixelColor* means, std::size_t count) const {
    if (fits_in_half_words_)
        mean_in_half_words(taps, means, count);
    else
        mean_in_words(taps, means, count);
}

void WeightedMean::mean_in_half_words(const Taps& taps, PixelColor* means, std::size_t count) const {
    HalfWordSums sums;
    const auto sum_up = [&](std::uint16_t* channel, std::size_t values, auto values_of) {
        const auto tap = [&](std::int32_t k) {
            const auto i = static_cast<std::size_t>(k);
            return HalfWordTap{values_of(taps[i]), static_cast<std::uint32_t>(coefficients_[i])};
        };
        begin_sums(channel, values, start_, tap(0), tap(1), tap(2));
        std::int32_t k = 3;
        for (; k + 4 <= taps_; k += 4) add_four(channel, values, tap(k), tap(k + 1), tap(k + 2), tap(k + 3));
        if (k < taps_) add_two(channel, values, tap(k), tap(k + 1));
        if (has_negative_)
            prepare_dividends(channel, values, start_, static_cast<std::uint16_t>(255 * sum_), reciprocal_);
    };
    sum_up(sums.red_blue.data(), 2 * count,
           [](const SplitRun& run) { return reinterpret_cast<const HalfWord*>(run.red_blue); });
    sum_up(sums.green.data(), count, [](const SplitRun& run) { return run.green; });
    divide_red_blue(sums.red_blue.data(), reinterpret_cast<HalfWord*>(means), 2 * count, reciprocal_);
    divide_green(sums.green.data(), means, count, reciprocal_);
}

void WeightedMean::mean_in_words(const Taps& taps, PixelColor* means, std::size_t count) const {
    WordSums sums;
    const auto tap = [&](std::int32_t k) {
        const auto i = static_cast<std::size_t>(k);
        return WordTap{taps[i], static_cast<std::uint32_t>(coefficients_[i])};
    };
    const std::int32_t centre = taps_ / 2;
    begin_word_sums(sums, count, tap(centre));
    for (std::int32_t k = 1; k <= centre; ++k) add_pair_to_word_sums(sums, count, tap(centre - k), tap(centre + k));
    divide_words(sums, means, count, WordDivision(sum_));
}
