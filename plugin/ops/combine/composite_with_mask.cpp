// Composites of a picture over another, with the opacities of a mask argument.

#include "adjustment.h"
#include "composite.h"
#include "mask_mix.h"
#include "pixel_maps.h"
#include "placement.h"

using namespace tarvo::plugin;

void PrivCompositeWithMask(const TRV_Picture& source, const TRV_Picture& overlay, const TRV_Picture& mask, int left,
                           int top, TRV_Picture& result) {
    const Placement placement = placement_of(overlay, left, top, source);
    map_region(source, result, placement.covered, kNoYielding, "TRV_CompositeWithMask", MixIn256ths{},
               PlacedPicture{overlay, left, top}, PlacedPicture{mask, left, top});
}

// An overlay that lies outside the source does not end the checks: the mask's are made too, and replace its code.
REALpictureStruct* TRV_CompositeWithMask(REALpictureStruct* p, REALpictureStruct* overlay, REALpictureStruct* mask,
                                         int left, int top, int /*yield*/) {
    clear_error();
    if (!p) return fail(ErrorCode::source_nil);
    if (!overlay) return fail(ErrorCode::overlay_nil);
    if (!mask) return fail(ErrorCode::mask_nil);
    TRV_Picture source(p, kAsImage);
    if (!source.Lock()) return fail(ErrorCode::source_lock);
    TRV_Picture upper(overlay, kAsImage);
    if (!upper.Lock()) return fail(ErrorCode::overlay_lock);
    const bool misplaced = placement_of(upper, left, top, source).covered.empty();
    if (misplaced) set_error(ErrorCode::overlay_position);
    TRV_Picture weights(mask, kAsImage);  // a mask argument is an ordinary picture
    if (!weights.Lock()) return fail(ErrorCode::mask_lock);
    if (!mask_fits(weights, upper) || misplaced) return nullptr;
    return PictureForm{}.produce(
        source.width(), source.height(), result_depth(source), ResultMask::none,
        [&](TRV_Picture& result) { PrivCompositeWithMask(source, upper, weights, left, top, result); });
}
