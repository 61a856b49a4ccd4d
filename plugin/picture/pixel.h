#pragma once

// TRV_Pixel: colours as hue, saturation and value, in doubles and in integers.

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "numbers.h"
#include "pixel_formats.h"

namespace TRV_Pixel {

// 1/256, not 1/255: what programs compare averages with rests on it.
inline constexpr double kValueScale = 0.00390625;

// Hue in degrees, 0 to below 360; -1 for black, and not a number for any other grey. Saturation 0 to 1. Value: the
// largest channel of 256, so that white has 255/256. The top byte of a colour does not matter here or below.
void RGBToHSV(unsigned long color, double& hue, double& saturation, double& value);

// Hue in 1/1024 of a sector of 60 degrees, 0 to 6143; -1 for greys. Saturation 0 to 1024. Value: the largest channel.
void RGBToHSV_1024(unsigned long color, long& hue, long& saturation, long& value);

// Back again, for saturation 0 to 1024 and value 0 to 255. A hue that is no colour's is not wrapped: it gives black,
// unless saturation is 0.
void HSVToRGB_1024(long hue, long saturation, long value, unsigned long& color);

// --- the integer model for row loops: no branches --------------------------------------------------------------------

// As above, but that greys have the hue 0.
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

// dividend * 1024 / divisor toward zero, for |dividend| <= divisor <= 255; 0 for 0 / 0. The quotient of floats rounds
// to an integer only where it is one: between two integers it keeps a distance of 1/255, far more than the steps of a
// float.
[[gnu::always_inline]] inline std::int32_t ratio_1024(std::int32_t dividend, std::int32_t divisor) {
    return static_cast<std::int32_t>(static_cast<float>(dividend * 1024) / static_cast<float>(std::max(divisor, 1)));
}

// Bring a hue onto the circle that is at most a turn below it, or less than a turn above. Of a number below 0 and the
// same one turn on, the one below 0 is the larger when signs are not looked at.
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

// A channel in 1/2^20, as far below the value as `fade` says: 0 for the value itself, 1024 for the least that the
// saturation allows.
inline constexpr int kFadedBits = 20;
[[gnu::always_inline]] inline std::int32_t faded(std::int32_t value, std::int32_t saturation, std::int32_t fade) {
    return value * (kFullSaturation * kSector - saturation * fade);
}

// For a hue of 0 to 6143. A channel stands at the value for two sectors, fades over one, is faded for two and returns
// over one; the hues of the channels' middles are 0, 2 * 1024 and 4 * 1024.
[[gnu::always_inline]] inline PixelColor rgb_of(const Hsv1024& color) {
    const auto channel = [&color](std::int32_t fade) {
        const std::int32_t clamped = std::clamp<std::int32_t>(fade, 0, kSector);
        return static_cast<std::uint32_t>(floor_shift(faded(color.value, color.saturation, clamped), kFadedBits));
    };
    return pack_rgb(channel(2 * kSector - std::abs(color.hue - 3 * kSector)),
                    channel(std::abs(color.hue - 2 * kSector) - kSector),
                    channel(std::abs(color.hue - 4 * kSector) - kSector));
}

}  // namespace TRV_Pixel
