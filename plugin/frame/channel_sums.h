#pragma once

// Means of the channels of a region of any size.

#include <cstddef>
#include <cstdint>

#include "pixel_formats.h"

struct ChannelSums {
    std::uint64_t red = 0, green = 0, blue = 0, count = 0;

    // The mean of each channel, fractions cut off; null outputs are skipped.
    void put_means(int* red_mean, int* green_mean, int* blue_mean) const;
    PixelColor mean_color() const;
};

// Adds the channels of colours, at most a chunk of them: their sums fit in 32 bits. For use inside row loops.
[[gnu::always_inline]] inline void add_channels(ChannelSums& sums, const PixelColor* colors, std::size_t count) {
    std::uint32_t red = 0, green = 0, blue = 0;
    for (std::size_t x = 0; x < count; ++x) {
        red += red_of(colors[x]);
        green += green_of(colors[x]);
        blue += blue_of(colors[x]);
    }
    sums.red += red;
    sums.green += green;
    sums.blue += blue;
    sums.count += count;
}
