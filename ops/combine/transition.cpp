#include "transition.h"

#include <cstddef>
#include <cstdint>

#include "blend.h"
#include "error_state.h"
#include "forms.h"
#include "row_clones.h"
#include "rows.h"

namespace {

// The source moved toward either overlay, then one of these toward the other.
TARVO_ROW_CLONES void transition_row(PixelColor* colors, const PixelColor* colors_a, const PixelColor* colors_b,
                                     std::size_t count, BlendWeights toward_a) {
    const BlendWeights toward_b = {toward_a.overlay, toward_a.source};
    for (std::size_t x = 0; x < count; ++x) {
        const PixelColor near_a = blend(colors[x], colors_a[x], toward_a);
        const PixelColor near_b = blend(colors[x], colors_b[x], toward_b);
        colors[x] = blend(near_b, near_a, toward_a);
    }
}

}  // namespace

void PrivTransition(const TRV_Picture& source, const TRV_Picture& overlay_a, const TRV_Picture& overlay_b,
                    double overlay_a_fraction, TRV_Picture& result) {
    constexpr const char* kCaller = "TRV_Transition";
    const BlendWeights toward_a = separate_weights(overlay_a_fraction);
    transform_runs(source, result, whole_of(result), kNoYielding, kCaller,
                   [&](std::int32_t row, std::int32_t column, PixelColor* colors, std::size_t count) {
                       Chunk colors_a, colors_b;
                       overlay_a.GetPixels(row, column, {colors_a.data(), count}, kCaller);
                       overlay_b.GetPixels(row, column, {colors_b.data(), count}, kCaller);
                       transition_row(colors, colors_a.data(), colors_b.data(), count, toward_a);
                   });
}

REALpictureStruct* TRV_Transition(REALpictureStruct* p, REALpictureStruct* overlay_a, REALpictureStruct* overlay_b,
                                  double overlay_a_fraction) {
    ClearError();
    if (!p) return Fail(ErrorCode::source_nil);
    if (!overlay_a || !overlay_b) return Fail(ErrorCode::overlay_nil);
    if (fraction_out_of_bounds(overlay_a_fraction)) return Fail(ErrorCode::overlay_fraction);
    TRV_Picture source(p, false);
    if (!source.Lock()) return Fail(ErrorCode::source_lock);
    TRV_Picture a(overlay_a, false);
    if (!a.Lock()) return Fail(ErrorCode::overlay_lock);
    TRV_Picture b(overlay_b, false);
    if (!b.Lock()) return Fail(ErrorCode::overlay_lock);
    if (!same_size(a, source) || !same_size(b, source)) return Fail(ErrorCode::overlay_size);
    return PictureForm{}.produce(
        source.width(), source.height(), result_depth(source), false,
        [&](TRV_Picture& result) { PrivTransition(source, a, b, overlay_a_fraction, result); });
}
