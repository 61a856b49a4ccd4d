#pragma once

// What all free rotations share: their checks, their constants and the size of a turned rectangle.

#include <cstdint>

#include "picture.h"
#include "real_interface.h"

namespace tarvo::plugin::free_rotation {

// These have five digits on purpose: with more of them, sizes and pixels would come out different.
inline constexpr double kPi = 3.14159;
inline constexpr double kTwoPi = 6.28318;

// Clears the error code, then sets it for nil and for a rotation outside 0 to 360 degrees. Both checks run, and NaN
// passes.
bool arguments_pass(REALpictureStruct* p, double degrees);

// Moves an angle into 0 to 2 pi that is at most a turn away.
double in_circle(double angle);

// Half of a picture's diagonal, and the angle between its horizontal middle line and the diagonal.
struct Diagonal {
    double half, angle;

    Diagonal(std::int32_t width, std::int32_t height);
    // A side of the turned picture's bounds: 2 * half * cos(angle) or 2 * half * sin(angle), rounded up.
    std::int32_t width_at(double angle_of_corner) const;
    std::int32_t height_at(double angle_of_corner) const;
};

}  // namespace tarvo::plugin::free_rotation
