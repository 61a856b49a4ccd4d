#pragma once

// The direct rotation, one pixel at a time, of pictures that are turned by less than a quarter.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <memory>

#include "plain_pixels.h"

namespace tarvo::test {

struct PlainRotation {
    double degrees;  // above 0, below 90
    std::uint32_t frame;
    int units;  // of a source pixel: 16, or 1 for the coarser form
};

inline double in_circle(double angle) {
    return angle < 0.0 ? angle + 6.28318 : angle > 6.28318 ? angle - 6.28318 : angle;
}

// The leftmost column at which the turned rectangle meets the row of pixels below `top`, from corner to corner.
inline double leftmost(double width, double height, double angle, double top) {
    const double cosine = std::cos(angle), sine = std::sin(angle);
    const auto turned = [&](double x, double y) { return std::array{x * cosine - y * sine, x * sine + y * cosine}; };
    const std::array corners = {turned(-width / 2, -height / 2), turned(width / 2, -height / 2),
                                turned(width / 2, height / 2), turned(-width / 2, height / 2)};
    double left = 1e9;
    for (std::size_t i = 0; i < 4; ++i) {
        const auto [x0, y0] = corners[i];
        const auto [x1, y1] = corners[(i + 1) % 4];
        if (y0 >= top && y0 <= top + 1.0) left = std::min(left, x0);
        for (const double y : {top, top + 1.0})
            if (y >= std::min(y0, y1) && y <= std::max(y0, y1) && y0 != y1)
                left = std::min(left, x0 + (x1 - x0) * (y - y0) / (y1 - y0));
    }
    return left;
}

inline std::unique_ptr<host::Picture> plain_rotation(const host::Picture& source, const PlainRotation& rotation) {
    const double w = source.width(), h = source.height(), units = rotation.units;
    const double angle = 2.0 * rotation.degrees * 3.14159 / 360.0;
    const double radius = std::sqrt((w * w + h * h) * 0.25), diagonal = std::atan(h / w);
    auto result = host::Picture::make(
        {.width = static_cast<int>(std::ceil(2.0 * radius * std::cos(in_circle(angle - diagonal)))),
         .height = static_cast<int>(std::ceil(2.0 * radius * std::sin(in_circle(angle + diagonal)))),
         .depth = std::max(source.depth(), 16)});

    const double one = units * 65536.0;
    const auto step_x = static_cast<std::int64_t>(std::cos(3.14159 - angle) * one);
    const auto step_y = static_cast<std::int64_t>(std::sin(3.14159 - angle) * one);
    const auto down_y = static_cast<std::int64_t>(std::sin(4.712385 - angle) * one);
    const auto corner_x = static_cast<std::int64_t>(std::cos(3.9269875 - angle) * 1.4142135623730951 * one);
    const double middle_x = result->width() / 2.0, middle_y = result->height() / 2.0;

    for (int row = 0; row < result->height(); ++row) {
        const double dy = row - middle_y;
        const int start =
            std::clamp(static_cast<int>(std::floor(middle_x + leftmost(w, h, angle, dy))) - 2, 0, result->width());
        const double dx = start - middle_x, distance = std::sqrt(dx * dx + dy * dy);
        double direction = distance > 0.0 ? std::asin(dy / distance) : 0.0;
        if (dx < 0.0) direction = (dy < 0.0 ? 9.42477 : 3.14159) - direction;
        auto x = static_cast<std::int64_t>((distance * std::cos(direction - angle) + w / 2.0) * one);
        auto y = static_cast<std::int64_t>((distance * std::sin(direction - angle) + h / 2.0) * one);

        for (int column = 0; column < result->width(); ++column) {
            if (column < start) {
                write_pixel(*result, column, row, rotation.frame);
                continue;
            }
            const auto whole = [](std::int64_t fixed) { return std::floor(static_cast<double>(fixed) / 65536.0); };
            const auto left = static_cast<long>(whole(x)), top = static_cast<long>(whole(y - step_y));
            const auto right = static_cast<long>(whole(x - corner_x + 65535));
            const auto bottom = static_cast<long>(whole(y - down_y + 65535));
            const auto first = [&](long at) { return static_cast<long>(std::floor(static_cast<double>(at) / units)); };
            long sums[3] = {}, total = 0;
            for (long sy = first(top); sy * rotation.units < bottom; ++sy) {
                for (long sx = first(left); sx * rotation.units < right; ++sx) {
                    const auto covered = [&](long at, long begin, long end) {
                        return std::min(end, (at + 1) * rotation.units) - std::max(begin, at * rotation.units);
                    };
                    const long weight = covered(sx, left, right) * covered(sy, top, bottom);
                    const bool inside = sx >= 0 && sy >= 0 && sx < source.width() && sy < source.height();
                    const std::uint32_t color = inside ? load(source, static_cast<int>(sx), static_cast<int>(sy), false,
                                                              Addressing::whole_pixels)
                                                       : rotation.frame;
                    for (const int shift : {0, 8, 16}) sums[shift / 8] += weight * channel(color, shift);
                    total += weight;
                }
            }
            write_pixel(*result, column, row, each_channel([&](int shift) { return sums[shift / 8] / total; }));
            x -= step_x;
            y -= step_y;
        }
    }
    return result;
}

}  // namespace tarvo::test
