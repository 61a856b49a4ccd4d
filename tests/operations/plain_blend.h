#pragma once

// The judge's blend and the places of overlays.

#include <cmath>
#include <limits>

#include "pictures.h"
#include "plain_image.h"

namespace tarvo::test {

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kLeast = std::numeric_limits<int>::min();

// Whole and broken numbers of 256ths, the bounds, and one that passes every test of bounds.
inline const double kFractions[] = {0.0, 0.3, 0.5, 1.0 / 512, 0.997, 1.0, kNotANumber};

inline int plain_weight(double fraction) { return std::isnan(fraction) ? 0 : static_cast<int>(fraction * 256); }

inline std::uint32_t plain_blend(std::uint32_t source, std::uint32_t overlay, int b, int a) {
    return each_channel([&](int shift) { return (channel(source, shift) * b + channel(overlay, shift) * a) / 256; });
}

// On five bits a channel, widened to eight by zeros; the result is read again as it is stored.
inline std::uint32_t plain_blend_555(std::uint32_t source, std::uint32_t overlay, int b, int a) {
    return each_channel([&](int shift) {
        const int wide_source = channel(source, shift) / 8 * 8;
        return ((wide_source * b + channel(overlay, shift) * a) >> 11) * 8;
    });
}

// An overlay's pixel above a source's, or its mask's; counted so that no place overflows.
struct Place {
    int left, top;
    bool covers(const PlainImage& overlay, int x, int y) const {
        const std::int64_t u = std::int64_t{x} - left, v = std::int64_t{y} - top;
        return u >= 0 && v >= 0 && u < overlay.width && v < overlay.height;
    }
    std::uint32_t above(const PlainImage& overlay, int x, int y) const { return overlay.at(x - left, y - top); }
};

inline Place any_place(Random& random, int width, int height, int overlay_width, int overlay_height) {
    return {any_of(random, -overlay_width - 1, width + 1), any_of(random, -overlay_height - 1, height + 1)};
}

// Every pixel of the source, changed by `change(x, y, color)`.
template <class Change>
PlainImage each_pixel(PlainImage image, Change change) {
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x) image.at(x, y) = change(x, y, image.at(x, y));
    return image;
}

}  // namespace tarvo::test
