#pragma once

// What all free rotations share: their check, their five-digit constants, the size of a turned rectangle.

#include <cstdint>

#include "picture.h"
#include "real_interface.h"

namespace free_rotation {

// Five digits, on purpose: sizes and pixels come from these, and with more digits they would come out different.
inline constexpr double kPi = 3.14159;
inline constexpr double kTwoPi = 6.28318;

// Clears the error code, then sets it for nil and for a rotation outside 0 to 360 degrees. Both checks run; one that is
// not a number passes.
bool arguments_pass(REALpictureStruct* p, double degrees);

// Moved into 0 to 2 pi, once.
double in_circle(double angle);

// A picture's half diagonal, and the angle from its horizontal middle line to its corner.
struct Diagonal {
    double half, angle;

    Diagonal(std::int32_t width, std::int32_t height);
    // 2 * half * cos(angle), and * sin(angle), rounded up: a side of the turned picture's bounds.
    std::int32_t width_at(double angle_of_corner) const;
    std::int32_t height_at(double angle_of_corner) const;
};

}  // namespace free_rotation
