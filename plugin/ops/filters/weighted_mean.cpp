#include "weighted_mean.h"

#include <limits>

#include "channel_lanes.h"
#include "numbers.h"
#include "row_clones.h"
#include "rows.h"

namespace tarvo::plugin {

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

// What one tap adds to the sums of each pixel.
struct HalfWordTap {
    SplitRun run;
    std::uint32_t coefficient;  // modulo 2^16

    TARVO_INLINED std::uint32_t red_or_blue(std::size_t i) const {
        return coefficient * reinterpret_cast<const HalfWord*>(run.red_blue)[i];
    }
    TARVO_INLINED std::uint32_t green(std::size_t x) const { return coefficient * run.green[x]; }
};

// What the sums begin with, in the shape of a tap.
struct HalfWordStart {
    std::uint32_t value;

    TARVO_INLINED std::uint32_t red_or_blue(std::size_t) const { return value; }
    TARVO_INLINED std::uint32_t green(std::size_t) const { return value; }
};

// The sums of some pixels, taken apart as a SplitRun is.
struct HalfWordSums {
    static constexpr std::size_t kPixels = 128;

    alignas(kCacheLine) PixelColor red_blue_words[kPixels];
    alignas(kCacheLine) std::uint16_t greens[kPixels];

    TARVO_INLINED std::uint32_t red_or_blue(std::size_t i) const {
        return reinterpret_cast<const HalfWord*>(red_blue_words)[i];
    }
    TARVO_INLINED std::uint32_t green(std::size_t x) const { return greens[x]; }

    // Takes several terms at a time, so that the sums are read and written less often.
    template <class... Term>
    TARVO_INLINED void become_sum(std::size_t count, const Term&... terms) {
        HalfWord* const red_blue = reinterpret_cast<HalfWord*>(red_blue_words);
        for (std::size_t i = 0; i < 2 * count; ++i)
            red_blue[i] = static_cast<std::uint16_t>((terms.red_or_blue(i) + ...));
        for (std::size_t x = 0; x < count; ++x) greens[x] = static_cast<std::uint16_t>((terms.green(x) + ...));
    }

    // sum = function(sum) for every channel of every pixel.
    template <class Function>
    TARVO_INLINED void map(std::size_t count, Function function) {
        HalfWord* const red_blue = reinterpret_cast<HalfWord*>(red_blue_words);
        for (std::size_t i = 0; i < 2 * count; ++i) red_blue[i] = function(red_blue[i]);
        for (std::size_t x = 0; x < count; ++x) greens[x] = function(greens[x]);
    }
};

// --- any coefficients: sums of 32 bits -------------------------------------------------------------------------------

// The sums of a chunk's channels. They are unsigned, so that they wrap.
struct WordSums {
    alignas(kCacheLine) std::array<std::uint32_t, kChunkPixels> red, green, blue;
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

// Divides sums by a constant other than 0. Half a unit is added to the dividend: then every quotient is at least
// 1 / 2^32 away from every integer, which is far more than the rounding of the reciprocal can move it.
struct WordDivision {
    std::int32_t lowest, highest;  // sums beyond these have their quotients: 0 and 255, or the reverse
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

    // Half words are divided by positive numbers only. Division by -1 is negation, also of the most negative sum, which
    // stays what it is.
    if (sum_ == -1 || (sum_ < 0 && fits_in_half_words_)) {
        for (std::int32_t& c : coefficients_) c = wrapping_subtract(0, c);
        sum_ = -sum_;
        negative = -positive;
    }
    if (!fits_in_half_words_) return;
    reciprocal_ = Reciprocal::of(static_cast<std::uint32_t>(sum_));
    pairs_ = PairMeans(std::span(coefficients_).first(static_cast<std::size_t>(taps_)), sum_, reciprocal_);
    has_negative_ = negative < 0;
    if (has_negative_) {
        start_ = static_cast<std::uint16_t>(-255 * negative);
    } else {
        start_ = reciprocal_.increment;
        for (std::int32_t& c : coefficients_) c *= reciprocal_.scale;
    }
}

void WeightedMean::operator()(const Taps& taps, PixelColor* means, std::size_t count) const {
    if (!fits_in_half_words_) return mean_in_words(taps, means, count);
    mean_in_half_words(taps, count, [=](const PixelColor* some, std::size_t first, std::size_t pixels) TARVO_INLINED {
        std::copy_n(some, pixels, means + first);
    });
}

void WeightedMean::stream(const Taps& taps, std::uint8_t* lines, std::size_t count) const {
    const auto put = [=](const PixelColor* some, std::size_t first, std::size_t pixels) TARVO_INLINED {
        const std::size_t in_cache_lines = pixels / kCacheLinePixels * kCacheLinePixels;
        std::uint8_t* const to = lines + first * XRgb32::kBytes;
        stream_xrgb32_cache_lines(some, to, in_cache_lines);
        encode_as<XRgb32>(some + in_cache_lines, to + in_cache_lines * XRgb32::kBytes, pixels - in_cache_lines);
    };
    if (fits_in_half_words_) return mean_in_half_words(taps, count, put);
    alignas(kCacheLine) std::array<PixelColor, kChunkPixels> means;
    mean_in_words(taps, means.data(), count);
    put(means.data(), 0, count);
}

template <class Put>
void WeightedMean::mean_in_half_words(const Taps& taps, std::size_t count, const Put& put) const {
    const auto mean_from = [&](std::size_t first, std::size_t pixels) TARVO_INLINED {
        const auto tap = [&](std::int32_t k) TARVO_INLINED {
            const auto i = static_cast<std::size_t>(k);
            const SplitRun run = {taps[i].red_blue + first, taps[i].green + first};
            return HalfWordTap{run, static_cast<std::uint32_t>(coefficients_[i])};
        };
        HalfWordSums sums;
        sums.become_sum(pixels, HalfWordStart{start_}, tap(0), tap(1), tap(2));
        std::int32_t k = 3;
        for (; k + 4 <= taps_; k += 4) sums.become_sum(pixels, sums, tap(k), tap(k + 1), tap(k + 2), tap(k + 3));
        if (k < taps_) sums.become_sum(pixels, sums, tap(k), tap(k + 1));

        const Reciprocal reciprocal = reciprocal_;
        if (has_negative_) {
            // The sums are still raised by `start`, and may lie below what gives 0 and above what gives 255.
            const std::uint16_t start = start_, largest = static_cast<std::uint16_t>(255 * sum_);
            sums.map(pixels, [=](std::uint16_t sum) TARVO_INLINED {
                const auto positive = static_cast<std::uint16_t>(std::max(sum, start) - start);
                return reciprocal.prepare(std::min(positive, largest));
            });
        }
        sums.map(pixels, [=](std::uint16_t sum) TARVO_INLINED { return reciprocal.quotient_of(sum); });
        for (std::size_t x = 0; x < pixels; ++x) sums.red_blue_words[x] |= std::uint32_t{sums.greens[x]} << 8;
        put(sums.red_blue_words, first, pixels);
    };
    on_this_processor([&]() TARVO_INLINED {
        std::size_t x = 0;
        for (; x + HalfWordSums::kPixels <= count; x += HalfWordSums::kPixels) mean_from(x, HalfWordSums::kPixels);
        if (x < count) mean_from(x, count - x);
    });
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

}  // namespace tarvo::plugin
