#pragma once

// The one rule by which composites and the transition blend colours:
//
//     channel = (source * weight + overlay * weight) >> 8
//
// On 16-bit pictures, whose channels are widened before and narrowed after, that is the same as a shift by 11.

#include <cmath>
#include <cstdint>

#include "pixel_formats.h"

// How much of each colour shows, in 256ths. Together at most 256, so that channels stay in their bytes.
struct BlendWeights {
    std::uint32_t source;
    std::uint32_t overlay;
};

inline constexpr std::uint32_t kFullWeight = 256;

// Fractions are from 0 to 1; one that is not a number is let through.
inline bool fraction_out_of_bounds(double fraction) { return fraction < 0.0 || fraction > 1.0; }

// The fraction in 256ths, cut off; not a number weighs nothing.
inline std::uint32_t weight_of(double fraction) {
    return std::isnan(fraction) ? 0 : static_cast<std::uint32_t>(fraction * kFullWeight);
}

// What the overlay leaves is the source's.
constexpr BlendWeights complementary_weights(std::uint32_t overlay) { return {kFullWeight - overlay, overlay}; }

// Either is cut off on its own: together they are 255 when the fraction is no whole number of 256ths.
inline BlendWeights separate_weights(double fraction) { return {weight_of(1.0 - fraction), weight_of(fraction)}; }

// The top byte is 0. For use inside row loops.
[[gnu::always_inline]] constexpr PixelColor blend(PixelColor source, PixelColor overlay, BlendWeights weights) {
    // Red and blue share a word: their products have 16 bits each.
    const std::uint32_t red_blue = (source & 0xFF00FF) * weights.source + (overlay & 0xFF00FF) * weights.overlay;
    const std::uint32_t green = (source & 0xFF00) * weights.source + (overlay & 0xFF00) * weights.overlay;
    return ((red_blue & 0xFF00FF00) | (green & 0xFF0000)) >> 8;
}
