#pragma once

// From the pixels of a turned picture back to places in its source, for angles from 0 to half of pi.

#include <cstdint>

namespace free_rotation {

struct Sides {
    std::int32_t width, height;
};

// What the square of a result pixel covers of the source, its bounds in units of `1 << unit_bits` to a pixel; `right` and
// `bottom` lie behind.
struct Footprint {
    std::int64_t left, top, right, bottom;
};

// The walk along a row of the result.
struct RowStart {
    std::int32_t column;  // where it begins, a little left of where the source can show
    std::int64_t x, y;    // in the source, of that pixel's upper left corner: 16.16 fixed point, in units
};

class BackMapping {
public:
    BackMapping(Sides source, Sides result, double angle, int unit_bits);

    RowStart row_start(std::int32_t row) const;
    Footprint footprint(const RowStart& start, std::int32_t column) const {
        const std::int64_t steps = column - start.column;
        const std::int64_t x = start.x - steps * step_x_, y = start.y - steps * step_y_;
        return {.left = x >> kFractionBits,
                .top = (y - step_y_) >> kFractionBits,
                .right = (x - corner_x_ + kAlmostOne) >> kFractionBits,
                .bottom = (y - down_y_ + kAlmostOne) >> kFractionBits};
    }

private:
    static constexpr int kFractionBits = 16;
    static constexpr std::int64_t kAlmostOne = (1 << kFractionBits) - 1;

    std::int32_t left_edge(double top) const;

    double angle_, sine_, cosine_;
    double half_width_, half_height_;                // of the source
    double result_half_width_, result_half_height_;
    std::int32_t result_width_;
    double fixed_unit_;                              // a source pixel in fixed point
    // What is subtracted from a place: for the next pixel to the right, for a pixel's lower corners, for the lower right one.
    std::int64_t step_x_, step_y_, down_y_, corner_x_;
};

}  // namespace free_rotation
