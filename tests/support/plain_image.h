#pragma once

// The judge's pictures: one colour a pixel, read and written one pixel at a time by the plainest code there is.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host.h"

namespace tarvo::test {

struct PlainImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> colors;  // as read: 0x00RRGGBB, at 32 bits with the stored top byte

    PlainImage() = default;
    PlainImage(int w, int h) : width(w), height(h), colors(w > 0 && h > 0 ? static_cast<std::size_t>(w) * h : 0) {}
    std::uint32_t& at(int x, int y) { return colors[static_cast<std::size_t>(y) * width + x]; }
    std::uint32_t at(int x, int y) const { return colors[static_cast<std::size_t>(y) * width + x]; }
};

// One channel of a colour: 16, 8 or 0 for red, green, blue.
inline int channel(std::uint32_t color, int shift) { return static_cast<int>(color >> shift & 255); }
// A colour from what `function(shift)` gives for each channel.
template <class Function>
std::uint32_t each_channel(Function function) {
    return static_cast<std::uint32_t>(function(16)) << 16 | static_cast<std::uint32_t>(function(8)) << 8 |
           static_cast<std::uint32_t>(function(0));
}

// What a colour is once it has been stored at that depth, 16, 24 or 32, and read again.
inline std::uint32_t once_stored(std::uint32_t color, int depth) {
    return depth == 16 ? color & 0xF8F8F8 : depth == 24 ? color & 0xFFFFFF : color;
}

// A pixel as whole-pixel access reads it. `as_mask`: as of a picture bound as mask.
std::uint32_t read_pixel(const host::Picture& picture, int x, int y, bool as_mask = false);
// Stores a colour as whole-pixel access writes it; depths that take no writes stay.
void write_pixel(host::Picture& picture, int x, int y, std::uint32_t color, bool as_mask = false);
// A pixel of 1 bit.
bool bit_at(const host::Picture& picture, int x, int y);

PlainImage read_image(const host::Picture& picture, bool as_mask = false);

// Empty when the picture has that size and depth and stores exactly these colours; else what differs first.
std::string difference(const host::Picture& actual, const PlainImage& expected, int depth, bool as_mask = false);

}  // namespace tarvo::test
