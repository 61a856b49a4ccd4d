#include "transition.h"

#include <cstdint>

#include "blend.h"
#include "error_state.h"
#include "forms.h"
#include "pixel_maps.h"

namespace tarvo::plugin {
namespace {

// Moves the source toward each overlay, then the one outcome toward the other.
struct Transition {
    BlendWeights toward_a;

    TARVO_INLINED void operator()(PixelColor* colors, const PixelColor* colors_a, const PixelColor* colors_b) const {
        const BlendWeights a = toward_a, b = toward_a.exchanged();
        const auto move = [=](int source, int overlay_a, int overlay_b) TARVO_INLINED {
            return blended(blended(source, overlay_b, b) >> 8, blended(source, overlay_a, a) >> 8, a);
        };
        blend_channels(colors, move, colors_a, colors_b);
    }
};

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void PrivTransition(const TRV_Picture& source, const TRV_Picture& overlay_a, const TRV_Picture& overlay_b,
                    double overlay_a_fraction, TRV_Picture& result) {
    map_pictures(source, result, kNoYielding, "TRV_Transition", Transition{separate_weights(overlay_a_fraction)},
                 overlay_a, overlay_b);
}

REALpictureStruct* TRV_Transition(REALpictureStruct* p, REALpictureStruct* overlay_a, REALpictureStruct* overlay_b,
                                  double overlay_a_fraction) {
    clear_error();
    if (!p) return fail(ErrorCode::source_nil);
    if (!overlay_a || !overlay_b) return fail(ErrorCode::overlay_nil);
    if (fraction_out_of_bounds(overlay_a_fraction)) return fail(ErrorCode::overlay_fraction);
    TRV_Picture source(p, kAsImage);
    if (!source.Lock()) return fail(ErrorCode::source_lock);
    TRV_Picture a(overlay_a, kAsImage);
    if (!a.Lock()) return fail(ErrorCode::overlay_lock);
    TRV_Picture b(overlay_b, kAsImage);
    if (!b.Lock()) return fail(ErrorCode::overlay_lock);
    if (!same_size(a, source) || !same_size(b, source)) return fail(ErrorCode::overlay_size);
    return PictureForm{}.produce(
        source.width(), source.height(), result_depth(source), ResultMask::none,
        [&](TRV_Picture& result) { PrivTransition(source, a, b, overlay_a_fraction, result); });
}
