#pragma once

// TRV_Pixel: conversions of colours to hue, saturation and value and back, in doubles and in integers.

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "numbers.h"
#include "pixel_formats.h"

namespace TRV_Pixel {

// Hue is in degrees, from 0 to below 360; black has the hue -1, every other grey NaN. Saturation is from 0 to 1. Value
// is the largest channel in 256ths. The top byte of the colour does not matter, here and below.
void RGBToHSV(unsigned long color, double& hue, double& saturation, double& value);

// Hue is in 1024ths of a sector of 60 degrees, from 0 to 6143; greys have the hue -1. Saturation is from 0 to 1024.
// Value is the largest channel.
void RGBToHSV_1024(unsigned long color, long& hue, long& saturation, long& value);

// Converts back a saturation of 0 to 1024 and a value of 0 to 255. A hue outside the circle is not wrapped: it gives
// black, unless the saturation is 0.
void HSVToRGB_1024(long hue, long saturation, long value, unsigned long& color);

}  // namespace TRV_Pixel

namespace tarvo::plugin {

// A channel of 255 has the value 255/256, not 1: programs compare averages with values on this scale.
inline constexpr double kValueScale = 0.00390625;

// --- the integer model without branches, for row loops ---------------------------------------------------------------

// As RGBToHSV_1024 has them, except that greys have the hue 0.
struct Hsv1024 {
    std::int32_t hue, saturation, value;
};

inline constexpr std::int32_t kSector = 1024;
inline constexpr std::int32_t kCircle = 6 * kSector;
inline constexpr std::int32_t kFullSaturation = 1024;

// The largest channel, and how far above the smallest it is.
struct Extent {
    std::int32_t largest, delta;
};

[[gnu::always_inline]] inline Extent extent_of(PixelColor color) {
    const auto red = static_cast<std::int32_t>(red_of(color));
    const auto green = static_cast<std::int32_t>(green_of(color));
    const auto blue = static_cast<std::int32_t>(blue_of(color));
    const std::int32_t largest = std::max(std::max(red, green), blue);
    return {largest, largest - std::min(std::min(red, green), blue)};
}

// dividend * 1024 / divisor, truncated toward zero, for |dividend| <= divisor <= 255; 0 / 0 gives 0. A quotient that is
// no integer is at least 1/255 away from one, far more than the steps of a float: it is never rounded to an integer.
[[gnu::always_inline]] inline std::int32_t ratio_1024(std::int32_t dividend, std::int32_t divisor) {
    return static_cast<std::int32_t>(static_cast<float>(dividend * 1024) / static_cast<float>(std::max(divisor, 1)));
}

// `wrapped_up` brings a hue onto the circle that is at most a turn below it, `wrapped_down` one that is less than a
// turn above it. As an unsigned number a negative hue is larger than the same hue a turn on: the smaller one is right.
[[gnu::always_inline]] inline std::int32_t wrapped_up(std::int32_t hue) {
    const auto unsigned_hue = static_cast<std::uint32_t>(hue);
    return static_cast<std::int32_t>(std::min(unsigned_hue, unsigned_hue + kCircle));
}
[[gnu::always_inline]] inline std::int32_t wrapped_down(std::int32_t hue) {
    const auto unsigned_hue = static_cast<std::uint32_t>(hue);
    return static_cast<std::int32_t>(std::min(unsigned_hue, unsigned_hue - kCircle));
}

[[gnu::always_inline]] inline Hsv1024 hsv_1024_of(PixelColor color) {
    const auto red = static_cast<std::int32_t>(red_of(color));
    const auto green = static_cast<std::int32_t>(green_of(color));
    const auto blue = static_cast<std::int32_t>(blue_of(color));
    const auto [largest, delta] = extent_of(color);

    // The sector around the largest channel; of equal ones red comes before green, and green before blue.
    const bool is_red = red == largest, is_green = green == largest;
    const std::int32_t offset = is_red ? green - blue : is_green ? blue - red : red - green;
    const std::int32_t middle = is_red ? 0 : is_green ? 2 * kSector : 4 * kSector;
    return {wrapped_up(middle + ratio_1024(offset, delta)), ratio_1024(delta, largest), largest};
}

// A channel in units of 1/2^20. It is the value itself for a fade of 0, and the least that the saturation allows for a
// fade of 1024.
inline constexpr int kFadedBits = 20;
[[gnu::always_inline]] inline std::int32_t faded(std::int32_t value, std::int32_t saturation, std::int32_t fade) {
    return value * (kFullSaturation * kSector - saturation * fade);
}

// For a hue of 0 to 6143. From sector to sector the channels run like this:
//
//     sector     0          1          2          3          4          5
//     red        value      fades      faded      faded      returns    value
//     green      returns    value      value      fades      faded      faded
//     blue       faded      faded      returns    value      value      fades
[[gnu::always_inline]] inline PixelColor rgb_of(const Hsv1024& color) {
    const auto channel = [&color](std::int32_t fade) {
        const std::int32_t clamped = std::clamp<std::int32_t>(fade, 0, kSector);
        return static_cast<std::uint32_t>(floor_shift(faded(color.value, color.saturation, clamped), kFadedBits));
    };
    return pack_rgb(channel(2 * kSector - std::abs(color.hue - 3 * kSector)),
                    channel(std::abs(color.hue - 2 * kSector) - kSector),
                    channel(std::abs(color.hue - 4 * kSector) - kSector));
}

}  // namespace tarvo::plugin
