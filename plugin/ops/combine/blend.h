#pragma once

// The one rule by which composites and the transition blend colours:
//
//     channel = (source * weight + overlay * weight) >> 8
//
// On 16-bit pictures, whose channels are widened before and narrowed after, that is the same as a shift by 11.

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "channel_lanes.h"
#include "pixel_blocks.h"
#include "pixel_formats.h"

namespace tarvo::plugin {

// How much of each colour shows, in 256ths. The two are at most 256 together, so that channels stay in their bytes.
struct BlendWeights {
    std::uint16_t source;
    std::uint16_t overlay;

    BlendWeights exchanged() const { return {overlay, source}; }
};

inline constexpr int kFullWeight = 256;

// A fraction is from 0 to 1. NaN passes.
inline bool fraction_out_of_bounds(double fraction) { return fraction < 0.0 || fraction > 1.0; }

// Returns the fraction in 256ths, truncated; 0 for NaN.
inline std::uint16_t weight_of(double fraction) {
    return std::isnan(fraction) ? 0 : static_cast<std::uint16_t>(fraction * kFullWeight);
}

// The source gets what the overlay leaves.
constexpr BlendWeights complementary_weights(std::uint16_t overlay) {
    return {static_cast<std::uint16_t>(kFullWeight - overlay), overlay};
}

// Each of the two is truncated on its own, so that together they are 255 if the fraction is no whole number of 256ths.
inline BlendWeights separate_weights(double fraction) { return {weight_of(1.0 - fraction), weight_of(fraction)}; }

// Returns a blended channel times 256, in 16 bits.
TARVO_INLINED constexpr std::uint16_t blended(int source, int overlay, BlendWeights weights) {
    return static_cast<std::uint16_t>(source * weights.source + overlay * weights.overlay);
}

// The same with complementary weights.
TARVO_INLINED constexpr std::uint16_t blended(int source, int overlay, int overlay_weight) {
    return static_cast<std::uint16_t>(source * kFullWeight + (overlay - source) * overlay_weight);
}

// A weight for each pixel of a block.
class PixelWeights {
public:
    TARVO_INLINED void set(std::size_t pixel, std::uint32_t weight) { words_.colors[pixel] = weight * 0x10001; }
    TARVO_INLINED const PixelColor* words() const { return words_.colors; }

private:
    ColorBlock words_;  // each half of a pixel's word holds its weight
};

namespace blend_lanes {

using channel_lanes::HalfWord;

TARVO_INLINED inline int half(const PixelColor* words, std::size_t i) {
    return reinterpret_cast<const HalfWord*>(words)[i];
}
TARVO_INLINED inline int low(const PixelColor* colors, std::size_t i) { return half(colors, i) & 255; }
TARVO_INLINED inline int high(const PixelColor* colors, std::size_t i) { return half(colors, i) >> 8; }
TARVO_INLINED inline int low(const PixelWeights& weights, std::size_t i) { return half(weights.words(), i); }
TARVO_INLINED inline int high(const PixelWeights& weights, std::size_t i) { return half(weights.words(), i); }

}  // namespace blend_lanes

// channel = function(channel, others' channels or weights...) / 256 for red, green and blue of all colours of a block,
// in lanes of 16 bits. Top bytes become 0.
template <class Function, class... Others>
TARVO_INLINED inline void blend_channels(PixelColor* colors, Function function, const Others&... others) {
    using namespace blend_lanes;
    for (std::size_t i = 0; i < 2 * kBlockPixels; ++i) {
        const std::uint16_t new_low = function(low(colors, i), low(others, i)...);
        const std::uint16_t new_high = function(high(colors, i), high(others, i)...);
        reinterpret_cast<HalfWord*>(colors)[i] = static_cast<std::uint16_t>(new_low >> 8 | (new_high & 0xFF00));
    }
    for (std::size_t x = 0; x < kBlockPixels; ++x) colors[x] &= 0xFFFFFF;
}

// A kernel that blends with the same weights everywhere.
struct BlendByWeights {
    BlendWeights weights;

    TARVO_INLINED void operator()(PixelColor* colors, const PixelColor* overlays) const {
        const BlendWeights w = weights;
        blend_channels(
            colors, [w](int source, int overlay) TARVO_INLINED { return blended(source, overlay, w); }, overlays);
    }
};

}  // namespace tarvo::plugin
