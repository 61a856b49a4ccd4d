#include "shear_line.h"

#include <cmath>

#include "numbers.h"

namespace tarvo::plugin {
namespace {

constexpr int kFractionBits = 16;
// How a length lies in the middle of another: with empty places before it, or with some of its own cut off.
struct Centering {
    std::int32_t before, cut;
};

Centering center(std::int32_t length, std::int32_t room) {
    if (length < room) return {(room - length) / 2, 0};
    return {0, (length - room) / 2};
}

// A picture without pixels may have lines of no length, or sides below 0. None of its lines shows.
ShearPlan::Sides shown(ShearPlan::Sides source) {
    return source.lines > 0 && source.length > 0 ? source : ShearPlan::Sides{0, 0};
}

}  // namespace

ShearPlan::ShearPlan(Sides source, Sides result, double shear) : source_(shown(source)), result_(result) {
    const Centering across = center(source_.lines, result_.lines);
    first_line_ = across.before;
    first_source_line_ = across.cut;
    end_line_ = std::min(first_line_ + source_.lines, result_.lines);

    const std::int32_t sheared_length = floor_to_int32(source_.length + std::fabs(shear) * source_.lines);
    const Centering along = center(sheared_length, result_.length);
    step_ = floor_to_int32(shear * (1 << kFractionBits));
    first_offset_ = (step_ > 0 ? step_ * source_.lines : 0) +
                    (std::int64_t{along.before} - along.cut) * (1 << kFractionBits) - step_ * first_source_line_;
}

ShearedLine ShearPlan::line(std::int32_t line) const {
    if (!is_content(line)) return {};
    const std::int64_t offset = first_offset_ - step_ * (line - first_line_);
    const std::int64_t shift = offset >> kFractionBits;
    const std::int64_t behind = shift + source_.length;
    const auto within = [this](std::int64_t place) {
        return static_cast<std::int32_t>(std::clamp<std::int64_t>(place, 0, result_.length));
    };
    const auto previous_weight = static_cast<std::uint32_t>(offset & kWholeWeight);
    return {.first = within(shift),
            .end = within(behind),
            .trails = previous_weight > 0 && behind >= 0 && behind < result_.length,
            .shift = shift,
            .previous_weight = previous_weight};
}

// The sum is divided by 65536 here and by 65535 everywhere else, because programs have pictures that were made so.
PixelColor FrameEdges::trailing(PixelColor last, const ShearedLine& line) const {
    const std::uint32_t frame_weight = kWholeWeight - line.previous_weight;
    const auto mixed = [&](std::uint32_t pixel, std::uint32_t surrounding) {
        return (pixel * line.previous_weight + surrounding * frame_weight) >> 16;
    };
    return pack_rgb(mixed(red_of(last), red_of(frame)), mixed(green_of(last), green_of(frame)),
                    mixed(blue_of(last), blue_of(frame)));
}

}  // namespace tarvo::plugin
