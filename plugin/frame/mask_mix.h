#pragma once

// How a mask weighs a changed colour against the source's. The level m is the low byte of the mask's colour. There are
// three ways; they differ by a step here and there, and every operation keeps to its own:
//
//   in 256ths                     (x * (256 - w) + y * w) >> 8       y clamped; w is m, plus 1 above 127
//   in 255ths                     (x * (255 - m) + y * m) / 255      y clamped
//   in 255ths, clamped after it   (x * (255 - m) + y * m) / 255      y as it comes, far outside 0..255

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "per_channel.h"
#include "pixel_maps.h"

namespace tarvo::plugin {

// Red and blue share a word: what is mixed of them has 16 bits each.
inline constexpr PixelColor kRedBlue = 0xFF00FF;

// from * (full - weight) + to * weight.
TARVO_INLINED constexpr std::uint32_t mixed(std::uint32_t from, std::uint32_t to, std::uint32_t weight,
                                            std::uint32_t full) {
    return from * full + (to - from) * weight;
}

// n / 255 for n from 0 to 65534; and for two at once.
TARVO_INLINED constexpr std::uint32_t divided_by_255(std::uint32_t n) { return (n + 1 + (n >> 8)) >> 8; }
TARVO_INLINED constexpr std::uint32_t both_divided_by_255(std::uint32_t red_blue) {
    return (red_blue + 0x10001 + (red_blue >> 8 & kRedBlue)) >> 8 & kRedBlue;
}

// Kernels: a changed colour mixed into the source's. In 256ths a weight of 0 leaves the whole word, top byte included;
// in 255ths the top byte becomes 0.
struct MixIn256ths {
    TARVO_INLINED PixelColor operator()(PixelColor color, PixelColor changed, PixelColor mask) const {
        const std::uint32_t level = mask & 255;
        const std::uint32_t weight = level + (level >> 7);
        const std::uint32_t red_blue = mixed(color & kRedBlue, changed & kRedBlue, weight, 256);
        const std::uint32_t green = mixed(green_of(color), green_of(changed), weight, 256);
        return weight ? (red_blue >> 8 & kRedBlue) | (green & 0xFF00) : color;
    }
};

struct MixIn255ths {
    TARVO_INLINED PixelColor operator()(PixelColor color, PixelColor changed, PixelColor mask) const {
        const std::uint32_t level = mask & 255;
        const std::uint32_t red_blue = mixed(color & kRedBlue, changed & kRedBlue, level, 255);
        const std::uint32_t green = mixed(green_of(color), green_of(changed), level, 255);
        return both_divided_by_255(red_blue) | divided_by_255(green) << 8;
    }
};

// One channel, for changes that go beyond 0..255; up to 2^22 either way.
TARVO_INLINED constexpr std::uint32_t mixed_in_255ths_and_clamped(std::uint32_t source, std::int32_t changed,
                                                                  std::uint32_t level) {
    const auto x = static_cast<std::int32_t>(source);
    const std::int32_t sum = x * 255 + (changed - x) * static_cast<std::int32_t>(level);
    return divided_by_255(static_cast<std::uint32_t>(std::clamp(sum, 0, 255 * 255)));
}

// A changed colour before it is clamped.
using UnclampedColor = PerChannel<std::int32_t>;

struct MixIn255thsAndClamp {
    TARVO_INLINED PixelColor operator()(PixelColor color, const UnclampedColor& changed, PixelColor mask) const {
        const std::uint32_t level = mask & 255;
        return pack_rgb(mixed_in_255ths_and_clamped(red_of(color), changed.red, level),
                        mixed_in_255ths_and_clamped(green_of(color), changed.green, level),
                        mixed_in_255ths_and_clamped(blue_of(color), changed.blue, level));
    }
};

// The kernel that changes the source's colours by `change` as far as the mask says, mixed by `mix`. A change is a
// kernel, or makes one unclamped colour.
template <class Change, class Mix>
struct ByMask {
    Change change;
    Mix mix;

    TARVO_INLINED void operator()(PixelColor* colors, const PixelColor* masks) const {
        if constexpr (std::is_invocable_v<const Change&, PixelColor>) {
            const ByMask own = *this;  // as in apply_kernel
            for (std::size_t x = 0; x < kBlockPixels; ++x)
                colors[x] = own.mix(colors[x], own.change(colors[x]), masks[x]);
        } else {
            ColorBlock changed;
            for (std::size_t x = 0; x < kBlockPixels; ++x) changed.colors[x] = colors[x];
            change(changed.colors);
            apply_kernel(mix, colors, changed.colors, masks);
        }
    }
};
template <class Change, class Mix>
ByMask(Change, Mix) -> ByMask<Change, Mix>;

}  // namespace tarvo::plugin
