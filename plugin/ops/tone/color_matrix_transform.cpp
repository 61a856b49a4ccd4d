#include "color_matrix_transform.h"

#include <cstddef>
#include <cstdint>

#include "adjustment.h"
#include "mask_mix.h"
#include "numbers.h"
#include "pixel_maps.h"

namespace {

// The matrix in 1024ths: what red, green and blue of the source add to each channel. Sums wrap.
struct FixedMatrix {
    struct Column {
        std::int32_t red, green, blue;
    };
    Column to_red, to_green, to_blue;
};

constexpr int kFixedBits = 10;

FixedMatrix fixed_matrix_of(const TRV_ColorMatrix_Data& matrix) {
    const auto column = [&matrix](int j) {
        return FixedMatrix::Column{in_1024ths(matrix.m[0][j]), in_1024ths(matrix.m[1][j]), in_1024ths(matrix.m[2][j])};
    };
    return {column(0), column(1), column(2)};
}

[[gnu::always_inline]] inline std::int32_t weighted_sum(PixelColor color, const FixedMatrix::Column& column) {
    const std::uint32_t sum = red_of(color) * static_cast<std::uint32_t>(column.red) +
                              green_of(color) * static_cast<std::uint32_t>(column.green) +
                              blue_of(color) * static_cast<std::uint32_t>(column.blue);
    return static_cast<std::int32_t>(sum);
}

// Shifting rounds other than dividing only below 0, where both end at 0.
[[gnu::always_inline]] inline std::uint32_t transformed(PixelColor color, const FixedMatrix::Column& column) {
    return static_cast<std::uint32_t>(clamp_to_byte(floor_shift(weighted_sum(color, column), kFixedBits)));
}

struct Transform {
    FixedMatrix matrix;

    TARVO_INLINED PixelColor operator()(PixelColor color) const {
        return pack_rgb(transformed(color, matrix.to_red), transformed(color, matrix.to_green),
                        transformed(color, matrix.to_blue));
    }
};

struct TransformByMask {
    FixedMatrix matrix;

    TARVO_INLINED PixelColor operator()(PixelColor color, PixelColor mask) const {
        const std::uint32_t level = mask & 255;
        const auto channel = [color, level](std::uint32_t value, const FixedMatrix::Column& column) TARVO_INLINED {
            return mixed_in_255ths_and_clamped(value, weighted_sum(color, column) / (1 << kFixedBits), level);
        };
        return pack_rgb(channel(red_of(color), matrix.to_red), channel(green_of(color), matrix.to_green),
                        channel(blue_of(color), matrix.to_blue));
    }
};

}  // namespace

void PrivAdjustRGB_Matrix(const TRV_Picture& source, TRV_Picture& result, const Region& region,
                          const TRV_ColorMatrix_Data& matrix) {
    map_region(source, result, region, kNoYielding, "PrivAdjustRGB_Matrix", Transform{fixed_matrix_of(matrix)});
}

void PrivAdjustRGBWithMask_Matrix(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result,
                                  const TRV_ColorMatrix_Data& matrix) {
    map_pictures(source, result, kNoYielding, "PrivAdjustRGBWithMask_Matrix", TransformByMask{fixed_matrix_of(matrix)},
                 mask);
}

// All of the objects are looked at before the call ends, and the code of the last one that is missing stays. A matrix
// is missing when it has no data.
REALpictureStruct* TRV_AdjustRGB_Matrix(REALpictureStruct* p, REALobjectStruct* rect, REALobjectStruct* cm) {
    ClearError();
    const TRV_ColorMatrix_Data* const matrix = TRV_ColorMatrix_GetData(cm);
    if (!p) SetError(ErrorCode::source_nil);
    if (!matrix) SetError(ErrorCode::color_matrix_nil);
    if (!p || !matrix) return nullptr;
    return adjust_region(PictureForm{}, p, rect, SourceMask::left_behind, "TRV_AdjustRGB_Matrix",
                         [&](const TRV_Picture& source, TRV_Picture& result, const Region& region) {
                             PrivAdjustRGB_Matrix(source, result, region, *matrix);
                         });
}

REALpictureStruct* TRV_AdjustRGBWithMask_Matrix(REALpictureStruct* p, REALpictureStruct* mask, REALobjectStruct* cm) {
    ClearError();
    const TRV_ColorMatrix_Data* const matrix = TRV_ColorMatrix_GetData(cm);
    if (!p) SetError(ErrorCode::source_nil);
    if (!mask) SetError(ErrorCode::mask_nil);
    if (!matrix) SetError(ErrorCode::color_matrix_nil);
    if (!p || !mask || !matrix) return nullptr;
    return adjust_with_mask(PictureForm{}, p, mask,
                            [&](const TRV_Picture& source, const TRV_Picture& weights, TRV_Picture& result) {
                                PrivAdjustRGBWithMask_Matrix(source, weights, result, *matrix);
                            });
}
