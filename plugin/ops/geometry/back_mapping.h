#pragma once

// The mapping of the pixels of a turned picture back to places in its source, for angles from 0 to half of pi.

#include <cstdint>

#include "region.h"

namespace tarvo::plugin::free_rotation {

// Positions are in fixed point: `kFractionBits` of fraction below a unit, and `1 << unit_bits` units to a source pixel.
// 64 bits hold any position in a picture. 32 bits are enough where positions are counted from one that is less than
// 1000 pixels away.
inline constexpr int kFractionBits = 16;

template <class Fixed>
struct Position {
    Fixed x, y;
};

// What is subtracted from the source position of a result pixel's upper left corner to get to the other corners, as far
// as they bound the footprint. The upper right corner is also the next pixel's upper left one:
//
//     upper left  ------------  upper right: next_x, next_y
//         |                         |
//     lower left: down_y  ----  lower right: corner_x
//
// No step is longer than a source pixel's diagonal.
struct Steps {
    std::int32_t next_x, next_y, down_y, corner_x;
};

template <class Fixed>
Position<Fixed> to_the_right(Position<Fixed> position, const Steps& steps, Fixed pixels) {
    return {position.x - pixels * steps.next_x, position.y - pixels * steps.next_y};
}

// The bounds, in units, of what the square of a result pixel covers of the source. `right` and `bottom` lie behind it.
template <class Fixed>
struct Footprint {
    Fixed left, top, right, bottom;

    // `corner` is the upper left corner of the square.
    Footprint(Position<Fixed> corner, const Steps& steps)
        : left(corner.x >> kFractionBits),
          top((corner.y - steps.next_y) >> kFractionBits),
          right((corner.x - steps.corner_x + kAlmostOne) >> kFractionBits),
          bottom((corner.y - steps.down_y + kAlmostOne) >> kFractionBits) {}

private:
    static constexpr Fixed kAlmostOne = (1 << kFractionBits) - 1;
};

// A walk along a row of the result.
struct RowWalk {
    std::int32_t column;              // where the walk begins, a little left of where the source can show
    Position<std::int64_t> position;  // the upper left corner of that column's pixel, in the source
};

class BackMapping {
public:
    BackMapping(Size source, Size result, double angle, int unit_bits);

    const Steps& steps() const { return steps_; }
    RowWalk walk_of(std::int32_t row) const;
    // Returns the upper left corner of a pixel of the row, in the source.
    Position<std::int64_t> position(const RowWalk& walk, std::int32_t column) const {
        return to_the_right(walk.position, steps_, std::int64_t{column} - walk.column);
    }

private:
    std::int32_t step(double pixels) const;
    std::int32_t left_edge(double top) const;

    double angle_, sine_, cosine_;
    double half_width_, half_height_;  // half the source's sides
    double result_half_width_, result_half_height_;
    std::int32_t result_width_;
    double fixed_unit_;  // a source pixel in fixed point
    Steps steps_;
};

}  // namespace tarvo::plugin::free_rotation
