#pragma once

// The arithmetic of a convolution: weighted means of runs of colours.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "convolution_class.h"
#include "pair_means.h"
#include "pixel_blocks.h"
#include "pixel_formats.h"
#include "reciprocal.h"

namespace tarvo::plugin {

// A run of colours taken apart. The top bytes are dropped:
//
//     red_blue    | 0 R 0 B | 0 R 0 B | ...
//     green       | 0 G | 0 G | ...
struct SplitRun {
    PixelColor* red_blue;
    std::uint16_t* green;

    // Take apart the colours that stand in `red_blue`, or 32-bit pixels as they are stored.
    void split(std::size_t count) const;
    void split(const std::uint8_t* words, std::size_t count) const;
    SplitRun from(std::int32_t pixel) const { return {red_blue + pixel, green + pixel}; }
};

// The run that each tap reads: its pixel i contributes to pixel i of the means.
using Taps = std::array<SplitRun, TRV_Convolution_Data::kMostTaps>;

// The weighted mean of each channel: the sum of coefficient times value over all taps, divided by the sum of the
// coefficients, truncated toward zero and clamped to 0..255. All sums are signed, have 32 bits and wrap.
class WeightedMean {
public:
    // The number of coefficients is odd, or 0.
    explicit WeightedMean(std::span<const std::int32_t> coefficients);

    // False when the coefficients add up to 0: there is no mean then.
    bool defined() const { return sum_ != 0; }
    // The number of taps: a centre and as many before it as after it. There are at least three; coefficients that were
    // not given are 0.
    std::int32_t taps() const { return taps_; }
    // Writes the means of `count` pixels, at most a chunk of them, as 0x00RRGGBB.
    void operator()(const Taps& taps, PixelColor* means, std::size_t count) const;
    // Writes them as 32-bit pixels past the caches. `lines` is the beginning of a cache line.
    void stream(const Taps& taps, std::uint8_t* lines, std::size_t count) const;

    // The same of pixels as they are stored, where it can be done.
    const PairMeans& of_stored() const { return pairs_; }

private:
    template <class Put>
    void mean_in_half_words(const Taps& taps, std::size_t count, const Put& put) const;
    void mean_in_words(const Taps& taps, PixelColor* means, std::size_t count) const;

    std::array<std::int32_t, TRV_Convolution_Data::kMostTaps> coefficients_{};
    std::int32_t taps_ = 3;
    std::int32_t sum_ = 0;
    bool fits_in_half_words_ = false;

    // For sums in half words.
    Reciprocal reciprocal_{};
    PairMeans pairs_;
    bool has_negative_ = false;  // if there is no negative coefficient, the sums are prepared dividends from the start
    std::uint16_t start_ = 0;    // what the sums begin with; if there is one, no sum falls below 0 by this
};

}  // namespace tarvo::plugin
