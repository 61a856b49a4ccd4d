#pragma once

// The course of all tone and colour operations: what is checked and locked in which order, once for every operation and
// for both forms.
//
// An adjustment is a value: the arguments of a call, and how they change colours. The functions below take any that has
//
//     arguments_pass()   whether they are in range; leaves the code of the first that is not
//     with_kernel(use)   calls `use(kernel)` with the kernel (pixel_blocks.h) that changes colours, or
//                        `use(kernel, around)` with one more for those around the region
//     yield, kLabels     the pixel budget; what the adjustment calls itself
//     kSourceMask        of regions: whether the result gets the source's mask
//     Mix                of masks: how they weigh the changed colours (mask_mix.h). For one that clamps,
//                        `unclamped()` gives what changes colours, in the place of the kernel.

#include <cstddef>
#include <cstdint>

#include "error_state.h"
#include "forms.h"
#include "mask_mix.h"
#include "pixel_maps.h"
#include "region.h"

namespace tarvo::plugin {

// Whether the arguments for red, green and blue are in range, both bounds included; what is not a number passes. If
// not, leaves code 40, 41 or 42, of the first that is out of range.
template <class Number>
bool channels_in_range(Number low, Number high, Number red, Number green, Number blue) {
    const auto outside = [&](Number value) { return value < low || value > high; };
    if (outside(red)) return set_error(ErrorCode::red), false;
    if (outside(green)) return set_error(ErrorCode::green), false;
    if (outside(blue)) return set_error(ErrorCode::blue), false;
    return true;
}

struct AdjustmentLabels {
    const char* entry;  // where the source's mask is copied
    const char* in_region;
    const char* by_mask;
};

enum class SourceMask { copied, left_behind };

// --- kernels: locked pictures of one size ----------------------------------------------------------------------------

// result = source, with the region adjusted.
template <class Adjustment>
void map_adjusted(const TRV_Picture& source, TRV_Picture& result, const Region& region, const Adjustment& adjustment) {
    constexpr const char* kCaller = Adjustment::kLabels.in_region;
    adjustment.with_kernel([&](const auto& kernel, const auto&... around) {
        if constexpr (sizeof...(around) == 0)
            map_region(source, result, region, adjustment.yield, kCaller, kernel);
        else
            map_region_and_rest(source, result, region, adjustment.yield, kCaller, kernel,
                                [&](std::int32_t row, std::int32_t column, std::int32_t count) {
                                    map_run(result, row, column, static_cast<std::size_t>(count), kCaller, around...,
                                            RunSource{source, row, column});
                                });
    });
}

// result = source, adjusted as far as the mask says.
template <class Adjustment>
void map_adjusted_by_mask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result,
                          const Adjustment& adjustment) {
    const auto map = [&](const auto& change) {
        map_pictures(source, result, adjustment.yield, Adjustment::kLabels.by_mask,
                     ByMask{change, typename Adjustment::Mix{}}, mask);
    };
    if constexpr (requires { adjustment.unclamped(); })
        map(adjustment.unclamped());
    else
        adjustment.with_kernel(map);
}

// --- entries ---------------------------------------------------------------------------------------------------------

// The source's mask into the result's. Code 9 when one of them cannot be locked; the result is given back all the same.
void copy_source_mask(const TRV_Picture& source, const TRV_Picture& result, const char* caller);

// Locks the source, selects the region, makes the result; `paint(source, result, region)`.
template <class Form, class Paint>
typename Form::Handle adjust_region(const Form& form, typename Form::Handle p, REALobjectStruct* rect, SourceMask mask,
                                    const char* caller, Paint paint) {
    TRV_Picture source = form.bind(p);
    if (!source.Lock()) return fail(ErrorCode::source_lock);
    const Region region = select_region(source, rect);
    if (region.empty()) return fail(ErrorCode::selection);
    const bool copies_mask = mask == SourceMask::copied;
    const ResultMask result_mask =
        copies_mask && form.makes_masks && source.HasMask() ? ResultMask::wanted : ResultMask::none;
    return form.produce(source.width(), source.height(), result_depth(source), result_mask, [&](TRV_Picture& result) {
        paint(source, result, region);
        // Not before: the program may have given the source a mask, or taken it away, while the host had control.
        if (copies_mask && source.HasMask()) copy_source_mask(source, result, caller);
    });
}

// A new picture with the region adjusted.
template <class Form, class Adjustment>
typename Form::Handle adjust(const Form& form, typename Form::Handle p, REALobjectStruct* rect,
                             const Adjustment& adjustment) {
    clear_error();
    if (!p) return fail(ErrorCode::source_nil);
    if (!adjustment.arguments_pass()) return nullptr;
    return adjust_region(form, p, rect, Adjustment::kSourceMask, Adjustment::kLabels.entry,
                         [&](const TRV_Picture& source, TRV_Picture& result, const Region& region) {
                             map_adjusted(source, result, region, adjustment);
                         });
}

// Whether a mask argument can weigh the source. Both tests run, and the second one's code stays.
bool mask_fits(const TRV_Picture& mask, const TRV_Picture& source);

// A new picture, adjusted as far as the mask argument says. It never has the source's mask.
template <class Form, class Adjustment>
typename Form::Handle adjust_by_mask(const Form& form, typename Form::Handle p, REALpictureStruct* mask_argument,
                                     const Adjustment& adjustment) {
    clear_error();
    if (!p) return fail(ErrorCode::source_nil);
    if (!mask_argument) return fail(ErrorCode::mask_nil);
    if (!adjustment.arguments_pass()) return nullptr;
    TRV_Picture source = form.bind(p);
    if (!source.Lock()) return fail(ErrorCode::source_lock);
    TRV_Picture mask(mask_argument, kAsImage);  // a mask argument is an ordinary picture
    if (!mask.Lock()) return fail(ErrorCode::mask_lock);
    if (!mask_fits(mask, source)) return nullptr;
    return form.produce(source.width(), source.height(), result_depth(source), ResultMask::none,
                        [&](TRV_Picture& result) { map_adjusted_by_mask(source, mask, result, adjustment); });
}

// Locks the picture and selects the region; `visit(picture, region)`, without a result picture.
template <class Form, class Visit>
void visit_region_of(const Form& form, typename Form::Handle p, REALobjectStruct* rect, Visit visit) {
    TRV_Picture picture = form.bind(p);
    if (!picture.Lock()) return set_error(ErrorCode::source_lock);
    const Region region = select_region(picture, rect);
    if (region.empty()) return set_error(ErrorCode::selection);
    visit(picture, region);
}

// The course of an average: `measure(picture, region)` once everything is there.
template <class Form, class Measure>
void average(const Form& form, typename Form::Handle p, REALobjectStruct* rect, const Measure& measure) {
    clear_error();
    if (!p) return set_error(ErrorCode::source_nil);
    visit_region_of(form, p, rect, measure);
}

}  // namespace tarvo::plugin
