#pragma once

// The course that tone and colour operations take: what they check and lock, in which order, and how their results are
// made. It stands here once, for all of these operations and for both forms.
//
// An adjustment holds the arguments of a call and knows how they change colours. The functions below use these members:
//
//     arguments_pass()   returns whether the arguments are in range, and leaves the code of the first one that is not
//     with_kernel(use)   calls `use(kernel)` with the kernel (pixel_blocks.h) that changes colours, or
//                        `use(kernel, around)` with a second kernel, for the colours around the region
//     yield              is the pixel budget
//     kLabels            are the names of the operation's functions
//     kSourceMask        tells whether a result in a region gets the source's mask
//     Mix                is how a mask weighs the changed colours (mask_mix.h)
//     unclamped()        returns what changes colours by a mask, instead of the kernel, where the Mix clamps

#include <cstddef>
#include <cstdint>

#include "error_state.h"
#include "forms.h"
#include "mask_mix.h"
#include "pixel_maps.h"
#include "region.h"

namespace tarvo::plugin {

// Returns whether the arguments for red, green and blue are in range, both bounds included; NaN passes. The first one
// that is not leaves its code, 40, 41 or 42.
template <class Number>
bool channels_in_range(Number low, Number high, Number red, Number green, Number blue) {
    const auto outside = [&](Number value) { return value < low || value > high; };
    if (outside(red)) return set_error(ErrorCode::red), false;
    if (outside(green)) return set_error(ErrorCode::green), false;
    if (outside(blue)) return set_error(ErrorCode::blue), false;
    return true;
}

struct AdjustmentLabels {
    const char* entry;
    const char* in_region;
    const char* by_mask;
};

enum class SourceMask { copied, left_behind };

// --- kernels, on locked pictures of one size -------------------------------------------------------------------------

// Copies the source into the result and adjusts the region.
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

// Writes the source into the result, adjusted as far as the mask says.
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

// Copies the source's mask into the result's. If one of them cannot be locked, it leaves code 9.
void copy_source_mask(const TRV_Picture& source, const TRV_Picture& result, const char* caller);

// Locks the source, selects the region, makes the result and calls `paint(source, result, region)`.
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
        // This is asked again, because the program may have given the source a mask, or taken it away, while the host
        // had control.
        if (copies_mask && source.HasMask()) copy_source_mask(source, result, caller);
    });
}

// Returns a new picture with the region adjusted.
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

// Returns whether a mask argument can weigh the source. Both its size and its depth are checked, and the code of the
// depth stays.
bool mask_fits(const TRV_Picture& mask, const TRV_Picture& source);

// Returns a new picture, adjusted as far as the mask argument says. It never has the source's mask.
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

// Locks the picture, selects the region and calls `visit(picture, region)`. No result picture is made.
template <class Form, class Visit>
void visit_region_of(const Form& form, typename Form::Handle p, REALobjectStruct* rect, Visit visit) {
    TRV_Picture picture = form.bind(p);
    if (!picture.Lock()) return set_error(ErrorCode::source_lock);
    const Region region = select_region(picture, rect);
    if (region.empty()) return set_error(ErrorCode::selection);
    visit(picture, region);
}

// The course that averages take: `measure(picture, region)` is called when nothing has failed.
template <class Form, class Measure>
void average(const Form& form, typename Form::Handle p, REALobjectStruct* rect, const Measure& measure) {
    clear_error();
    if (!p) return set_error(ErrorCode::source_nil);
    visit_region_of(form, p, rect, measure);
}

}  // namespace tarvo::plugin
