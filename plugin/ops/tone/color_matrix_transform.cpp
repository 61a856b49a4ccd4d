#include "color_matrix_transform.h"

#include <cstdint>

#include "adjustment.h"
#include "numbers.h"
#include "per_channel.h"

namespace tarvo::plugin {
namespace {

constexpr int kFixedBits = 10;

// A column of the matrix, in 1024ths: how much of red, green and blue goes into one channel. Sums wrap.
struct MatrixColumn {
    std::int32_t red, green, blue;

    TARVO_INLINED std::int32_t sum_of(PixelColor color) const {
        const std::uint32_t sum = red_of(color) * static_cast<std::uint32_t>(red) +
                                  green_of(color) * static_cast<std::uint32_t>(green) +
                                  blue_of(color) * static_cast<std::uint32_t>(blue);
        return static_cast<std::int32_t>(sum);
    }
};

struct Transform {
    PerChannel<MatrixColumn> columns;

    TARVO_INLINED PixelColor operator()(PixelColor color) const {
        // A shift and a division differ only below 0, where both are clamped to 0.
        const auto channel = [color](const MatrixColumn& column) TARVO_INLINED {
            return static_cast<std::uint32_t>(clamp_to_byte(floor_shift(column.sum_of(color), kFixedBits)));
        };
        return pack_rgb(channel(columns.red), channel(columns.green), channel(columns.blue));
    }
};

struct UnclampedTransform {
    PerChannel<MatrixColumn> columns;

    TARVO_INLINED UnclampedColor operator()(PixelColor color) const {
        const auto channel = [color](const MatrixColumn& column) TARVO_INLINED {
            constexpr std::int32_t kOne = 1 << kFixedBits;
            return column.sum_of(color) / kOne;
        };
        return columns.each(channel);
    }
};

struct MatrixAdjustment {
    static constexpr AdjustmentLabels kLabels = {"TRV_AdjustRGB_Matrix", "PrivAdjustRGB_Matrix",
                                                 "PrivAdjustRGBWithMask_Matrix"};
    static constexpr SourceMask kSourceMask = SourceMask::left_behind;
    using Mix = MixIn255thsAndClamp;
    static constexpr int yield = kNoYielding;

    PerChannel<MatrixColumn> columns;

    explicit MatrixAdjustment(const TRV_ColorMatrix_Data& matrix) {
        const auto column = [&m = matrix.m](int j) {
            return MatrixColumn{in_1024ths(m[0][j]), in_1024ths(m[1][j]), in_1024ths(m[2][j])};
        };
        columns = {column(0), column(1), column(2)};
    }

    static bool arguments_pass() { return true; }  // any numbers do

    template <class Use>
    void with_kernel(Use use) const {
        use(Transform{columns});
    }
    UnclampedTransform unclamped() const { return {columns}; }
};

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void PrivAdjustRGB_Matrix(const TRV_Picture& source, TRV_Picture& result, const Region& region,
                          const TRV_ColorMatrix_Data& matrix) {
    map_adjusted(source, result, region, MatrixAdjustment(matrix));
}

void PrivAdjustRGBWithMask_Matrix(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result,
                                  const TRV_ColorMatrix_Data& matrix) {
    map_adjusted_by_mask(source, mask, result, MatrixAdjustment(matrix));
}

// Of several objects that are missing, the last one gives the code. A matrix is missing when it has no data.
REALpictureStruct* TRV_AdjustRGB_Matrix(REALpictureStruct* p, REALobjectStruct* rect, REALobjectStruct* cm) {
    clear_error();
    const TRV_ColorMatrix_Data* const matrix = TRV_ColorMatrix_GetData(cm);
    if (!matrix) return fail(ErrorCode::color_matrix_nil);
    return adjust(PictureForm{}, p, rect, MatrixAdjustment(*matrix));
}

REALpictureStruct* TRV_AdjustRGBWithMask_Matrix(REALpictureStruct* p, REALpictureStruct* mask, REALobjectStruct* cm) {
    clear_error();
    const TRV_ColorMatrix_Data* const matrix = TRV_ColorMatrix_GetData(cm);
    if (!matrix) return fail(ErrorCode::color_matrix_nil);
    if (!mask) return fail(ErrorCode::mask_nil);
    return adjust_by_mask(PictureForm{}, p, mask, MatrixAdjustment(*matrix));
}
