#include "gradient.h"

#include "error_state.h"
#include "forms.h"
#include "numbers.h"
#include "rows.h"

namespace tarvo::plugin {
namespace {

// Returns the colour of row `j` in a section whose last row is `last`. In a section of a single row both fractions are
// 0 / 0, which is NaN, and the row is black.
PixelColor color_at(std::int32_t j, std::int32_t last, PixelColor from, PixelColor to) {
    const double from_fraction = static_cast<double>(last - j) / last;
    const double to_fraction = static_cast<double>(j) / last;
    const auto channel = [&](std::uint32_t p, std::uint32_t q) {
        const double value = p * from_fraction + q * to_fraction;
        return static_cast<std::uint32_t>(clamp_to_byte(truncate_to_int32(value)));
    };
    return pack_rgb(channel(red_of(from), red_of(to)), channel(green_of(from), green_of(to)),
                    channel(blue_of(from), blue_of(to)));
}

// Fills the rows from `first` to `last`, both included, from one colour to another.
void fill_section(TRV_Picture& result, std::int32_t first, std::int32_t last, int from, int to) {
    Chunk colors;
    for (std::int32_t row = first; row <= last; ++row) {
        colors.fill(color_at(row - first, last - first, static_cast<PixelColor>(from), static_cast<PixelColor>(to)));
        for_each_chunk(0, result.width() - 1, [&](std::int32_t column, std::size_t count) {
            result.set_pixels(row, column, {colors.data(), count}, "PrivMakeGradient");
        });
    }
}

template <class Paint>
REALpictureStruct* make_gradient(int width, int height, Paint paint) {
    clear_error();
    if (width < 1) set_error(ErrorCode::stretch_width);
    if (height < 1) set_error(ErrorCode::stretch_height);  // the later code stays
    if (width < 1 || height < 1) return nullptr;
    return PictureForm{}.produce(width, height, 32, ResultMask::none, paint);
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void PrivMakeGradient(TRV_Picture& result, int color1, int color2) {
    fill_section(result, 0, result.height() - 1, color1, color2);
}

// The middle colour fills two rows: the last of the upper half and the first of the lower.
void PrivMakeDoubleGradient(TRV_Picture& result, int color1, int color2, int color3) {
    const std::int32_t half = result.height() / 2;
    fill_section(result, 0, half - 1, color1, color2);
    fill_section(result, half, result.height() - 1, color2, color3);
}

REALpictureStruct* TRV_MakeGradient(int width, int height, int color1, int color2, int) {
    return make_gradient(width, height, [&](TRV_Picture& result) { PrivMakeGradient(result, color1, color2); });
}

REALpictureStruct* TRV_MakeDoubleGradient(int width, int height, int color1, int color2, int color3, int) {
    return make_gradient(width, height,
                         [&](TRV_Picture& result) { PrivMakeDoubleGradient(result, color1, color2, color3); });
}
