#include "channel_sums.h"

namespace tarvo::plugin {

void ChannelSums::put_means(int* red_mean, int* green_mean, int* blue_mean) const {
    if (red_mean) *red_mean = static_cast<int>(red / count);
    if (green_mean) *green_mean = static_cast<int>(green / count);
    if (blue_mean) *blue_mean = static_cast<int>(blue / count);
}

PixelColor ChannelSums::mean_color() const {
    const auto mean = [this](std::uint64_t sum) { return static_cast<std::uint32_t>(sum / count); };
    return pack_rgb(mean(red), mean(green), mean(blue));
}

}  // namespace tarvo::plugin
