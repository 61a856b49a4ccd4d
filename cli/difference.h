#pragma once

// How two pictures of one size differ.

#include <array>
#include <cstdint>
#include <vector>

#include "tarvo.hpp"

namespace tarvo::cli {

using Rgba8 = std::array<std::uint8_t, 4>;

// A picture's pixels, opaque without a mask.
class Pixels {
public:
    explicit Pixels(const Picture& picture);

    int width() const { return width_; }
    int height() const { return height_; }
    Rgba8 at(int x, int y) const;

private:
    int width_, height_;
    std::vector<std::uint8_t> bytes_;
};

struct Difference {
    std::uint64_t pixels = 0;  // that differ
    Rgba8 largest = {};        // in each channel
    // The first pixel that differs, in reading order, and the rectangle around all of them.
    int x = 0, y = 0;
    Rgba8 expected = {}, found = {};
    int left = 0, top = 0, right = 0, bottom = 0;

    int largest_of_all() const;
};

// Both have the same sides.
Difference difference(const Pixels& expected, const Pixels& found);
// What differs in each channel, so much larger that the largest difference is 255; a difference of the mask is white.
Picture amplified(const Pixels& expected, const Pixels& found, int largest);

}  // namespace tarvo::cli
