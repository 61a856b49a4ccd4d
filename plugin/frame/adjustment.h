#pragma once

// The course of all tone and colour operations: what is checked and locked in which order, once for every operation and
// for both forms. Arguments of its own an operation checks before it comes here.

#include "error_state.h"
#include "forms.h"
#include "region.h"

// Whether the arguments for red, green and blue are in range, both bounds included; what is not a number passes. If
// not, leaves code 40, 41 or 42, of the first that is out of range.
template <class Number>
bool ChannelsInRange(Number low, Number high, Number red, Number green, Number blue) {
    const auto outside = [&](Number value) { return value < low || value > high; };
    if (outside(red)) return SetError(ErrorCode::red), false;
    if (outside(green)) return SetError(ErrorCode::green), false;
    if (outside(blue)) return SetError(ErrorCode::blue), false;
    return true;
}

// Whether a result gets a copy of the source's mask.
enum class SourceMask { copied, left_behind };

// The source's mask into the result's. Code 9 when one of them cannot be locked; the result is given back all the same.
void CopySourceMask(const TRV_Picture& source, const TRV_Picture& result, const char* caller);

// Locks the source, selects the region, makes the result; `paint(source, result, region)`.
template <class Form, class Paint>
typename Form::Handle adjust_region(const Form& form, typename Form::Handle p, REALobjectStruct* rect, SourceMask mask,
                                    const char* caller, Paint paint) {
    TRV_Picture source = form.bind(p);
    if (!source.Lock()) return Fail(ErrorCode::source_lock);
    const Region region = SelectRegion(source, rect);
    if (region.empty()) return Fail(ErrorCode::selection);
    const bool copies_mask = mask == SourceMask::copied;
    const bool with_mask = copies_mask && form.makes_masks && source.HasMask();
    return form.produce(source.width(), source.height(), result_depth(source), with_mask, [&](TRV_Picture& result) {
        paint(source, result, region);
        // Not before: the program may have given the source a mask, or taken it away, while the host had control.
        if (copies_mask && source.HasMask()) CopySourceMask(source, result, caller);
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

// Locks the picture and selects the region; `visit(picture, region)`, without a result picture.
template <class Form, class Visit>
void visit_region_of(const Form& form, typename Form::Handle p, REALobjectStruct* rect, Visit visit) {
    TRV_Picture picture = form.bind(p);
    if (!picture.Lock()) return SetError(ErrorCode::source_lock);
    const Region region = SelectRegion(picture, rect);
    if (region.empty()) return SetError(ErrorCode::selection);
    visit(picture, region);
}
