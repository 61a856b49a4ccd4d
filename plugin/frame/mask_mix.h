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

#include "rows.h"

// Mix the changed colours into the source's, in place. In 256ths a weight of 0 leaves the whole word, top byte
// included; in 255ths the top byte becomes 0.
void mix_in_256ths(PixelColor* colors, const PixelColor* changed, const PixelColor* masks, std::size_t count);
void mix_in_255ths(PixelColor* colors, const PixelColor* changed, const PixelColor* masks, std::size_t count);

// n / 255 for n from 0 to 65534.
[[gnu::always_inline]] constexpr std::uint32_t divided_by_255(std::uint32_t n) { return (n + 1 + (n >> 8)) >> 8; }

// One channel, for row loops whose changed channels go beyond 0..255; up to 2^22 either way.
[[gnu::always_inline]] constexpr std::uint32_t mixed_in_255ths_and_clamped(std::uint32_t source, std::int32_t changed,
                                                                           std::uint32_t level) {
    const auto x = static_cast<std::int32_t>(source);
    const std::int32_t sum = x * 255 + (changed - x) * static_cast<std::int32_t>(level);
    return divided_by_255(static_cast<std::uint32_t>(std::clamp(sum, 0, 255 * 255)));
}

// result = source, changed by `transform(colors, count)` as far as `mix` lets the mask say.
template <class Transform>
void transform_by_mask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int yield,
                       const char* caller, Transform transform, decltype(mix_in_255ths) mix) {
    combine_pictures(source, mask, result, yield, caller,
                     [&](PixelColor* colors, const PixelColor* masks, std::size_t count) {
                         Chunk changed;
                         std::copy_n(colors, count, changed.begin());
                         transform(changed.data(), count);
                         mix(colors, changed.data(), masks, count);
                     });
}
