#include "shear.h"

#include "forms.h"
#include "shear_kernels.h"

namespace tarvo::plugin {
namespace {

constexpr bool kHorizontal = true, kVertical = false;

// Both checks run. When both fail, the code of the shear stays. NaN is out of bounds.
bool arguments_pass(REALpictureStruct* p, double shear) {
    clear_error();
    if (!p) set_error(ErrorCode::source_nil);
    if (!(shear >= -1.0 && shear <= 1.0)) return set_error(ErrorCode::shear), false;
    return p != nullptr;
}

REALpictureStruct* shear_plain(REALpictureStruct* p, int width, int height, double shear, bool horizontal, int yield) {
    if (!arguments_pass(p, shear)) return nullptr;
    return PrivShear_NonVector(p, width, height, shear, horizontal, yield);
}

REALpictureStruct* shear_framed(REALpictureStruct* p, int width, int height, double shear, bool horizontal,
                                int frame_color, int yield) {
    if (!arguments_pass(p, shear)) return nullptr;
    return PrivShear_Frame_NonVector(p, width, height, shear, horizontal, frame_color, yield);
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

// The host makes a mask for a source that has none, which does not change how it looks. When the result's mask cannot
// be locked, the result is returned as it was made.
REALpictureStruct* PrivShear_NonVector(REALpictureStruct* p, int width, int height, double shear, bool horizontal,
                                       int yield) {
    TRV_Picture source(p, kAsImage);
    TRV_Picture source_mask(p, kAsMask);
    if (!source.Lock() || !source_mask.Lock()) return nullptr;
    return kSilentForm.produce(width, height, result_depth(source), ResultMask::wanted, [&](TRV_Picture& result) {
        TRV_Picture result_mask(result, kAsMask);
        if (!result_mask.Lock()) return;
        if (horizontal)
            Priv_ShearHorizontal(source, result, source_mask, result_mask, shear, yield);
        else
            Priv_ShearVertical(source, result, source_mask, result_mask, shear, yield);
    });
}

REALpictureStruct* PrivShear_Frame_NonVector(REALpictureStruct* p, int width, int height, double shear, bool horizontal,
                                             int frame_color, int yield) {
    TRV_Picture source(p, kAsImage);
    if (!source.Lock()) return nullptr;
    return kSilentForm.produce(width, height, result_depth(source), ResultMask::none, [&](TRV_Picture& result) {
        if (horizontal)
            Priv_ShearHorizontal(source, result, shear, frame_color, yield);
        else
            Priv_ShearVertical(source, result, shear, frame_color, yield);
    });
}

REALpictureStruct* TRV_ShearHorizontal(REALpictureStruct* p, int width, int height, double shear, int yield) {
    return shear_plain(p, width, height, shear, kHorizontal, yield);
}

REALpictureStruct* TRV_ShearVertical(REALpictureStruct* p, int width, int height, double shear, int yield) {
    return shear_plain(p, width, height, shear, kVertical, yield);
}

REALpictureStruct* TRV_ShearHorizontal_Frame(REALpictureStruct* p, int width, int height, double shear, int frame_color,
                                             int yield) {
    return shear_framed(p, width, height, shear, kHorizontal, frame_color, yield);
}

REALpictureStruct* TRV_ShearVertical_Frame(REALpictureStruct* p, int width, int height, double shear, int frame_color,
                                           int yield) {
    return shear_framed(p, width, height, shear, kVertical, frame_color, yield);
}
