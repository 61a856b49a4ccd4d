#pragma once

// The arithmetic of a convolution: weighted means of runs of colours.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "convolution_class.h"
#include "pixel_blocks.h"
#include "pixel_formats.h"

// A run of colours taken apart: red and blue in the half words of a word, green on its own. The top byte is gone.
struct SplitRun {
    PixelColor* red_blue;
    std::uint16_t* green;

    // Takes apart the colours that stand in `red_blue`, or 32-bit pixels as they are stored.
    void split(std::size_t count) const;
    void split(const std::uint8_t* words, std::size_t count) const;
    SplitRun from(std::int32_t pixel) const { return {red_blue + pixel, green + pixel}; }
};

// What each tap reads, one pixel for each of the outcome's.
using Taps = std::array<SplitRun, TRV_Convolution_Data::kMostTaps>;

// Division by a constant from 1 to 256 of numbers up to 255 times as large: exact, in 16 bits throughout.
struct Reciprocal {
    static constexpr int kShift = 7;

    std::uint16_t scale;      // a power of two that brings the divisor to 129 to 256
    std::uint16_t increment;  // 0 or 1
    std::uint16_t multiplier;

    static Reciprocal of(std::uint32_t divisor);
    constexpr std::uint16_t prepare(std::uint16_t dividend) const {
        return static_cast<std::uint16_t>(std::uint32_t{dividend} * scale + increment);
    }
    // The quotient of a prepared dividend.
    constexpr std::uint16_t quotient_of(std::uint16_t prepared) const {
        const auto high_half = static_cast<std::uint16_t>(std::uint32_t{prepared} * multiplier >> 16);
        return static_cast<std::uint16_t>(high_half >> kShift);
    }
};

// For each channel, the sum of coefficient times value over the taps, divided by the sum of the coefficients: toward
// zero, then clamped to 0..255. All sums are signed, 32 bits wide, and wrap.
class WeightedMean {
public:
    // An odd number of coefficients, or none.
    explicit WeightedMean(std::span<const std::int32_t> coefficients);

    // False when the coefficients add up to 0: there is no mean then.
    bool defined() const { return sum_ != 0; }
    // A centre and as many taps before it as after it: at least one, whose coefficient may be 0.
    std::int32_t taps() const { return taps_; }
    // The means of `count` pixels, at most a chunk of them, as 0x00RRGGBB.
    void operator()(const Taps& taps, PixelColor* means, std::size_t count) const;
    // The same as 32-bit pixels, written past the caches from the beginning of a cache line on.
    void stream(const Taps& taps, std::uint8_t* lines, std::size_t count) const;

private:
    template <class Put>
    void mean_in_half_words(const Taps& taps, std::size_t count, const Put& put) const;
    void mean_in_words(const Taps& taps, PixelColor* means, std::size_t count) const;

    std::array<std::int32_t, TRV_Convolution_Data::kMostTaps> coefficients_{};
    std::int32_t taps_ = 3;
    std::int32_t sum_ = 0;
    bool fits_in_half_words_ = false;

    // Of sums in half words.
    Reciprocal reciprocal_{};
    bool has_negative_ = false;  // without, sums grow as dividends that are prepared already
    std::uint16_t start_ = 0;    // what sums begin with; with negative coefficients it makes all sums positive
};
