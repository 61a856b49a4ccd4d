#include "shear_line.h"

#include <cmath>

#include "numbers.h"
#include "row_clones.h"

namespace {

constexpr int kFractionBits = 16;
constexpr std::uint32_t kUnit = 65535;  // the two weights of a blend together

// n / 65535 for every sum of two bytes weighted so.
constexpr std::uint32_t divide_by_unit(std::uint32_t n) { return (n + (n >> 16) + 1) >> 16; }

[[gnu::always_inline]] inline std::uint32_t mix(std::uint32_t previous, std::uint32_t current,
                                                std::uint32_t previous_weight, std::uint32_t current_weight) {
    return divide_by_unit(previous * previous_weight + current * current_weight);
}

TARVO_ROW_CLONES void blend_colors(const PixelColor* pairs, PixelColor* out, std::size_t count,
                                   const ShearedLine& line) {
    const std::uint32_t previous_weight = line.previous_weight, current_weight = line.current_weight;
    for (std::size_t x = 0; x < count; ++x) {
        const PixelColor previous = pairs[x], current = pairs[x + 1];
        out[x] = pack_rgb(mix(red_of(previous), red_of(current), previous_weight, current_weight),
                          mix(green_of(previous), green_of(current), previous_weight, current_weight),
                          mix(blue_of(previous), blue_of(current), previous_weight, current_weight));
    }
}

TARVO_ROW_CLONES void blend_levels(const PixelColor* pairs, PixelColor* out, std::size_t count,
                                   const ShearedLine& line) {
    const std::uint32_t previous_weight = line.previous_weight, current_weight = line.current_weight;
    for (std::size_t x = 0; x < count; ++x)
        out[x] = grey(mix(pairs[x] & 255, pairs[x + 1] & 255, previous_weight, current_weight));
}

// How a length lies in the middle of another: empty places before it, or places of it cut off.
struct Centering {
    std::int32_t before, cut;
};

Centering center(std::int32_t length, std::int32_t room) {
    if (length < room) return {(room - length) / 2, 0};
    return {0, (length - room) / 2};
}

}  // namespace

ShearPlan::ShearPlan(Sides source, Sides result, double shear) : source_(source), result_(result) {
    const Centering across = center(source.lines, result.lines);
    first_line_ = across.before;
    first_source_line_ = across.cut;
    end_line_ = std::min(first_line_ + source.lines, result.lines);

    const std::int32_t sheared_length = floor_to_int32(source.length + std::fabs(shear) * source.lines);
    const Centering along = center(sheared_length, result.length);
    step_ = floor_to_int32(shear * (1 << kFractionBits));
    first_offset_ = (step_ > 0 ? step_ * source.lines : 0) +
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
    const auto previous_weight = static_cast<std::uint32_t>(offset & kUnit);
    return {.first = within(shift),
            .end = within(behind),
            .trails = previous_weight > 0 && behind >= 0 && behind < result_.length,
            .shift = shift,
            .previous_weight = previous_weight,
            .current_weight = kUnit - previous_weight};
}

void blend_colors_row(const PixelColor* pairs, PixelColor* out, std::size_t count, const ShearedLine& line) {
    blend_colors(pairs, out, count, line);
}

void blend_levels_row(const PixelColor* pairs, PixelColor* out, std::size_t count, const ShearedLine& line) {
    blend_levels(pairs, out, count, line);
}

PixelColor MaskEdges::trailing(PixelColor last, const ShearedLine& line) const {
    return grey(mix(last & 255, 255, line.previous_weight, line.current_weight));
}

// Divided by 65536 here, and by 65535 everywhere else: kept, programs have pictures made so.
PixelColor FrameEdges::trailing(PixelColor last, const ShearedLine& line) const {
    const auto mixed = [&](std::uint32_t pixel, std::uint32_t surrounding) {
        return (pixel * line.previous_weight + surrounding * line.current_weight) >> 16;
    };
    return pack_rgb(mixed(red_of(last), red_of(frame)), mixed(green_of(last), green_of(frame)),
                    mixed(blue_of(last), blue_of(frame)));
}
