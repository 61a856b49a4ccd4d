#include "color_matrix_transform.h"

#include <cstdint>

#include "adjustment.h"
#include "avx2.h"
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

#ifdef TARVO_AVX2
// The same for coefficients below 32, whose 1024ths fit in 16 bits: two products and their sum take one instruction.
struct TransformInPairs {
    // What a channel gets of blue and red, and of green and nothing.
    struct Column {
        std::int32_t blue_and_red, green;

        static Column of(const MatrixColumn& column) {
            return {wrapping_multiply(column.red, 0x10000) | (column.blue & 0xFFFF), column.green & 0xFFFF};
        }
        TARVO_AVX2 __m256i in_words(__m256i blues_and_reds, __m256i greens) const {
            const __m256i sums = _mm256_add_epi32(_mm256_madd_epi16(blues_and_reds, _mm256_set1_epi32(blue_and_red)),
                                                  _mm256_madd_epi16(greens, _mm256_set1_epi32(green)));
            return _mm256_srai_epi32(sums, kFixedBits);
        }
    };
    PerChannel<Column> columns;

    static bool is_exact_for(const PerChannel<MatrixColumn>& columns) {
        const auto fits = [](std::int32_t weight) { return weight == static_cast<std::int16_t>(weight); };
        return processor_has_avx2() && columns.all([fits](const MatrixColumn& column) {
            return fits(column.red) && fits(column.green) && fits(column.blue);
        });
    }

    TARVO_AVX2 void operator()(PixelColor* colors) const {
        const __m256i byte_of_half_words = _mm256_set1_epi32(0xFF00FF), byte_of_words = _mm256_set1_epi32(0xFF);
        const __m256i channels_to_colors =
            _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15));
        for (std::size_t x = 0; x < kBlockPixels; x += 8) {
            __m256i* const eight = reinterpret_cast<__m256i*>(colors + x);
            const __m256i from = _mm256_load_si256(eight);
            const __m256i blues_and_reds = _mm256_and_si256(from, byte_of_half_words);
            const __m256i greens = _mm256_and_si256(_mm256_srli_epi32(from, 8), byte_of_words);
            // Both packings clamp.
            const __m256i blue_green = _mm256_packs_epi32(columns.blue.in_words(blues_and_reds, greens),
                                                          columns.green.in_words(blues_and_reds, greens));
            const __m256i red =
                _mm256_packs_epi32(columns.red.in_words(blues_and_reds, greens), _mm256_setzero_si256());
            _mm256_store_si256(eight, _mm256_shuffle_epi8(_mm256_packus_epi16(blue_green, red), channels_to_colors));
        }
    }
};
#endif

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
#ifdef TARVO_AVX2
        if (TransformInPairs::is_exact_for(columns))
            return use(TransformInPairs{columns.each(TransformInPairs::Column::of)});
#endif
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
