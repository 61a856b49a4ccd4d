#include "free_rotation.h"

#include <cmath>

#include "angles.h"
#include "error_state.h"
#include "numbers.h"

namespace tarvo::plugin::free_rotation {

bool arguments_pass(REALpictureStruct* p, double degrees) {
    clear_error();
    if (!p) set_error(ErrorCode::source_nil);
    if (degrees < 0.0 || degrees >= 360.0) return set_error(ErrorCode::rotation), false;
    return p != nullptr;
}

double in_circle(double angle) {
    if (angle < 0.0) return angle + kTwoPi;
    if (angle > kTwoPi) return angle - kTwoPi;
    return angle;
}

Diagonal::Diagonal(std::int32_t width, std::int32_t height) {
    const double w = width, h = height;
    half = std::sqrt((w * w + h * h) * 0.25);
    angle = arc_tangent(h / w);
}

std::int32_t Diagonal::width_at(double angle_of_corner) const {
    return truncate_to_int32(std::ceil(2.0 * half * cosine(in_circle(angle_of_corner))));
}

std::int32_t Diagonal::height_at(double angle_of_corner) const {
    return truncate_to_int32(std::ceil(2.0 * half * sine(in_circle(angle_of_corner))));
}

}  // namespace tarvo::plugin::free_rotation
