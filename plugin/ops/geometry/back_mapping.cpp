#include "back_mapping.h"

#include <algorithm>
#include <cmath>

#include "angles.h"
#include "free_rotation.h"

namespace tarvo::plugin::free_rotation {
namespace {

constexpr std::int32_t kMargin = 2;
constexpr double kHalfPi3 = 4.712385;      // 3 pi / 2
constexpr double kQuarterPi5 = 3.9269875;  // 5 pi / 4
constexpr double kThreePi = 9.42477;
constexpr double kDiagonal = 1.4142135623730951;  // a pixel's

std::int64_t truncated(double value) { return static_cast<std::int64_t>(value); }

}  // namespace

BackMapping::BackMapping(Size source, Size result, double angle, int unit_bits)
    : angle_(angle),
      sine_(sine(angle)),
      cosine_(cosine(angle)),
      half_width_(source.width / 2.0),
      half_height_(source.height / 2.0),
      result_half_width_(result.width / 2.0),
      result_half_height_(result.height / 2.0),
      result_width_(result.width),
      fixed_unit_(static_cast<double>(1 << unit_bits) * (1 << kFractionBits)),
      steps_{.next_x = step(cosine(kPi - angle)),
             .next_y = step(sine(kPi - angle)),
             .down_y = step(sine(kHalfPi3 - angle)),
             .corner_x = step(cosine(kQuarterPi5 - angle) * kDiagonal)} {}

std::int32_t BackMapping::step(double pixels) const { return static_cast<std::int32_t>(pixels * fixed_unit_); }

// Returns the leftmost place where the turned source meets the row of pixels from `top` to `top` + 1, counted from the
// result's middle. It is on the source's left side, at the corner below that side, or on the bottom side.
std::int32_t BackMapping::left_edge(double top) const {
    const double corner_x = -half_width_ * cosine_ - half_height_ * sine_;
    const double corner_y = -half_width_ * sine_ + half_height_ * cosine_;
    double away = 0.0;
    if (top + 1.0 < corner_y)
        away = std::min((corner_y - top - 1.0) * sine_ / cosine_, 2.0 * half_height_ * sine_);
    else if (top > corner_y)
        away = std::min((top - corner_y) * cosine_ / sine_, 2.0 * half_width_ * cosine_);
    return static_cast<std::int32_t>(std::floor(result_half_width_ + corner_x + away));
}

RowWalk BackMapping::walk_of(std::int32_t row) const {
    const double top = row - result_half_height_;
    const std::int32_t column = std::clamp(left_edge(top) - kMargin, 0, result_width_);

    const double left = column - result_half_width_;
    const double radius = std::sqrt(left * left + top * top);
    double direction = radius > 0.0 ? arc_sine(top / radius) : 0.0;
    if (left < 0.0) direction = (top < 0.0 ? kThreePi : kPi) - direction;
    return {.column = column,
            .position = {.x = truncated((radius * cosine(direction - angle_) + half_width_) * fixed_unit_),
                         .y = truncated((radius * sine(direction - angle_) + half_height_) * fixed_unit_)}};
}

}  // namespace tarvo::plugin::free_rotation
