#pragma once

// The sums of the channels of any number of colours, and their means.

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "pixel_formats.h"
#include "row_clones.h"

namespace tarvo::plugin {

struct ChannelSums {
    std::uint64_t red = 0, green = 0, blue = 0, count = 0;

    // Writes the mean of each channel, truncated. Null outputs are skipped.
    void put_means(int* red_mean, int* green_mean, int* blue_mean) const;
    PixelColor mean_color() const;
};

// Adds the channels of fewer than 2^24 colours. It belongs inside a row loop, which is compiled for the processor.
TARVO_INLINED inline void add_channels(ChannelSums& sums, const PixelColor* colors, std::size_t count) {
    constexpr std::size_t kPiece = 256;  // the sums of so many fit in half a word: red and blue share one
    std::uint32_t red = 0, green = 0, blue = 0;
    for (std::size_t first = 0; first < count; first += kPiece) {
        const std::size_t end = std::min(first + kPiece, count);
        std::uint32_t red_blue = 0;
        for (std::size_t x = first; x < end; ++x) {
            red_blue += colors[x] & 0xFF00FF;
            green += green_of(colors[x]);
        }
        red += red_blue >> 16;
        blue += red_blue & 0xFFFF;
    }
    sums.red += red;
    sums.green += green;
    sums.blue += blue;
    sums.count += count;
}

}  // namespace tarvo::plugin
