#include "flip_rotate.h"

#include <cstdint>

#include "forms.h"
#include "host_reference.h"
#include "quarter_turns.h"

using namespace tarvo::plugin;

// Both checks run. When both fail, the code of the rotation stays.
REALpictureStruct* TRV_FlipRotate(REALpictureStruct* p, bool flip_h, bool flip_v, int rotation, int yield) {
    clear_error();
    if (!p) set_error(ErrorCode::source_nil);
    if (static_cast<unsigned>(rotation) > 3) return fail(ErrorCode::rotation);
    return p ? PrivFlipRotate_NonVector(p, flip_h, flip_v, rotation, yield) : nullptr;
}

REALpictureStruct* PrivFlipRotate_NonVector(REALpictureStruct* p, bool flip_h, bool flip_v, int rotation, int yield) {
    TRV_Picture source(p, kAsImage);
    if (!source.Lock()) return fail(ErrorCode::source_lock);
    const auto make_result = source.HasMask() ? PrivFlipRotate_Mask_NonVector : PrivFlipRotate_NoMask_NonVector;
    return make_result(source, flip_h, flip_v, rotation, yield);
}

// A 1-bit picture keeps its depth. All other results are at least 16 bits deep.
REALpictureStruct* PrivFlipRotate_NoMask_NonVector(TRV_Picture& source, bool flip_h, bool flip_v, int rotation,
                                                   int yield) {
    const auto [width, height] = turned_size(source, rotation);
    const std::int32_t depth = source.depth() == 1 ? 1 : result_depth(source);
    return PictureForm{}.produce(width, height, depth, ResultMask::none, [&](TRV_Picture& result) {
        quarter_turn(rotation, {flip_h, flip_v})(source, result, yield);
    });
}

REALpictureStruct* PrivFlipRotate_Mask_NonVector(TRV_Picture& source, bool flip_h, bool flip_v, int rotation,
                                                 int yield) {
    TRV_Picture source_mask(source, kAsMask);
    if (!source_mask.Lock()) return fail(ErrorCode::mask_lock);
    const auto [width, height] = turned_size(source, rotation);
    HostReference<REALpictureStruct> made;
    TRV_Picture result(width, height, result_depth(source), kHandOver);
    TRV_Picture result_mask(result, kAsMask);
    if (!result.Lock() || !result_mask.Lock()) return fail(ErrorCode::result_lock);
    made.reset(result.picture());  // held here, because the host may throw when it gets control
    QuarterTurn& kernel = quarter_turn(rotation, {flip_h, flip_v});
    kernel(source, result, yield);
    kernel(source_mask, result_mask, yield);
    return made.release();
}
