#pragma once

#include <cstdint>

#include "plain_image.h"
#include "test_server.h"

namespace tarvo::test {

// What the painter has painted, as colours.
class Canvas {
public:
    Canvas(Painter& painter, int width, int height) : painter_(painter), image_(width, height) {
        fill(0x102030, 0x102030, 0, 0, width, height);
    }

    // `pixel` is the server's value for the colour.
    void fill(std::uint32_t pixel, std::uint32_t color, int left, int top, int width, int height) {
        painter_.fill(pixel, left, top, width, height);
        paint(color, left, top, width, height);
    }
    void paint(std::uint32_t color, int left, int top, int width, int height) {
        for (int y = top; y < top + height; ++y)
            for (int x = left; x < left + width; ++x) image_.at(x, y) = color;
    }
    const PlainImage& image() const { return image_; }

private:
    Painter& painter_;
    PlainImage image_;
};

// Colours side by side and one above the other, all different.
inline void paint_pattern(Canvas& canvas) {
    const int width = canvas.image().width, height = canvas.image().height;
    for (int i = 0; i < 40; ++i) {
        const auto color = static_cast<std::uint32_t>(0x9E3779B9u * static_cast<unsigned>(i + 1)) >> 8;
        canvas.fill(color, color, i * 7 % (width - 9), i * 11 % (height - 6), 9, 6);
    }
    canvas.fill(0xFF0000, 0xFF0000, 0, 0, 1, 1);
    canvas.fill(0x00FF00, 0x00FF00, width - 1, 0, 1, 1);
    canvas.fill(0x0000FF, 0x0000FF, width - 1, height - 1, 1, 1);
}

}  // namespace tarvo::test
