#pragma once

// The course of all tone and colour operations: what is checked and locked in which order, once for every operation and
// for both forms. Arguments of its own an operation checks before it comes here.

#include "error_state.h"
#include "forms.h"
#include "region.h"

// Whether a result gets a copy of the source's mask.
enum class SourceMask { copied, left_behind };

// The source's mask into the result's. Code 9 when one of them cannot be locked; the result is given back all the same.
void CopySourceMask(const TRV_Picture& source, const TRV_Picture& result, const char* caller);

// Locks the source, selects the region, makes the result; `paint(source, result, region)`.
template <class Form, class Paint>
typename Form::Handle adjust_region(const Form& form, typename Form::Handle p, REALobjectStruct* rect,
                                    SourceMask mask, const char* caller, Paint paint) {
    TRV_Picture source = form.bind(p);
    if (!source.Lock()) return Fail(ErrorCode::source_lock);
    const Region region = SelectRegion(source, rect);
    if (region.empty()) return Fail(ErrorCode::selection);
    const bool copies_mask = mask == SourceMask::copied && source.HasMask();
    return form.produce(source.width(), source.height(), result_depth(source), copies_mask, [&](TRV_Picture& result) {
        paint(source, result, region);
        if (copies_mask) CopySourceMask(source, result, caller);
    });
}

// Whether a mask argument can weigh the source. Both tests run, and the second one's code stays.
bool MaskFits(const TRV_Picture& mask, const TRV_Picture& source);

// Locks the source and the mask argument, makes the result; `paint(source, mask, result)`.
template <class Form, class Paint>
typename Form::Handle adjust_with_mask(const Form& form, typename Form::Handle p, REALpictureStruct* maskPicture,
                                       Paint paint) {
    TRV_Picture source = form.bind(p);
    if (!source.Lock()) return Fail(ErrorCode::source_lock);
    TRV_Picture mask(maskPicture, false);  // an ordinary picture, as it is
    if (!mask.Lock()) return Fail(ErrorCode::mask_lock);
    if (!MaskFits(mask, source)) return nullptr;
    return form.produce(source.width(), source.height(), result_depth(source), false,
                        [&](TRV_Picture& result) { paint(source, mask, result); });
}

// Locks the source and selects the region; `measure(source, region)`, without a result picture.
template <class Form, class Measure>
void measure_region_of(const Form& form, typename Form::Handle p, REALobjectStruct* rect, Measure measure) {
    TRV_Picture source = form.bind(p);
    if (!source.Lock()) return SetError(ErrorCode::source_lock);
    const Region region = SelectRegion(source, rect);
    if (region.empty()) return SetError(ErrorCode::selection);
    measure(source, region);
}
