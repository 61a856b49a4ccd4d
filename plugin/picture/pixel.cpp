#include "pixel.h"

namespace tarvo::plugin {
namespace {

constexpr double kBlackHue = -1.0;
constexpr long kNoHue = -1;
constexpr double kDegreesOfSector = 60.0;

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

namespace TRV_Pixel {

// Greys other than black have no case of their own: their hue is 0 / 0, which is NaN.
void RGBToHSV(unsigned long color, double& hue, double& saturation, double& value) {
    const auto packed = static_cast<PixelColor>(color);
    const double red = red_of(packed), green = green_of(packed), blue = blue_of(packed);
    const double largest = std::max({red, green, blue});
    const double delta = largest - std::min({red, green, blue});
    value = largest * kValueScale;
    if (largest == 0.0) {
        saturation = 0.0;
        hue = kBlackHue;
        return;
    }
    saturation = delta / largest;
    const double sixths = largest == red     ? (green - blue) / delta
                          : largest == green ? 2.0 + (blue - red) / delta
                                             : 4.0 + (red - green) / delta;
    hue = sixths * kDegreesOfSector;
    if (hue < 0.0) hue += 360.0;
}

void RGBToHSV_1024(unsigned long color, long& hue, long& saturation, long& value) {
    const Hsv1024 converted = hsv_1024_of(static_cast<PixelColor>(color));
    hue = converted.saturation == 0 ? kNoHue : converted.hue;
    saturation = converted.saturation;
    value = converted.value;
}

void HSVToRGB_1024(long hue, long saturation, long value, unsigned long& color) {
    const Hsv1024 wanted = {static_cast<std::int32_t>(hue), static_cast<std::int32_t>(saturation),
                            static_cast<std::int32_t>(value)};
    if (wanted.saturation == 0) {
        color = grey(static_cast<std::uint32_t>(wanted.value));
    } else if (wanted.hue >= 0 && wanted.hue < kCircle) {
        color = rgb_of(wanted);
    } else if (wanted.hue > -kSector && wanted.hue < 0) {
        // A hue's sector is hue / 1024, truncated toward zero: these hues count as sector 0, and green fades by more
        // than there is. A channel that comes out below 0 borrows from the channel above it.
        const auto channel = [&wanted](std::int32_t fade) {
            return faded(wanted.value, wanted.saturation, fade) / (1 << kFadedBits);
        };
        color = static_cast<PixelColor>(wanted.value * 65536 + channel(kSector - wanted.hue) * 256 + channel(kSector));
    } else {
        color = 0;
    }
}

}  // namespace TRV_Pixel
