// Composites of a picture over another, with one opacity and the overlay's own mask.

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "adjustment.h"
#include "blend.h"
#include "composite.h"
#include "mask_mix.h"
#include "pixel_maps.h"
#include "placement.h"

namespace tarvo::plugin {
namespace {

// --- kernels ---------------------------------------------------------------------------------------------------------

// A mask's level is its red channel. At 0 the overlay keeps its weight, at 255 it has none.
struct BlendByMask {
    std::uint32_t weight;

    TARVO_INLINED void operator()(PixelColor* colors, const PixelColor* overlays, const PixelColor* masks) const {
        PixelWeights left_over;
        for (std::size_t x = 0; x < kBlockPixels; ++x)
            left_over.set(x, divided_by_255(weight * (255 - red_of(masks[x]))));
        blend_channels(
            colors, [](int source, int overlay, int w) TARVO_INLINED { return blended(source, overlay, w); }, overlays,
            left_over);
    }
};

// Clears the top bytes of the source, which is all that a wholly transparent overlay does to it.
struct ClearTopBytes {
    TARVO_INLINED void operator()(PixelColor* colors) const {
        for (std::size_t x = 0; x < kBlockPixels; ++x) colors[x] &= 0xFFFFFF;
    }
};

// --- paths -----------------------------------------------------------------------------------------------------------

// The depths of the pictures choose a path. The paths differ in what they make of the overlay's mask, and not in the
// colours that an overlay without a mask gives.
struct Path {
    enum class Mask {
        under_overlay,  // a mask pixel weighs the overlay pixel of the same row and column
        under_result,   // a mask pixel weighs what goes to the same row and column of the result
        ineffective,    // the mask is locked, and its pixels have no effect
        ignored,        // the mask is not asked for
    };

    std::int32_t depth;  // of source, overlay and result alike; 0 for any other depths
    Mask mask;
    const char* caller;
    bool masked_yields = false;
};

constexpr Path kPaths[] = {
    {.depth = 32, .mask = Path::Mask::under_overlay, .caller = "TRV_Composite 13", .masked_yields = true},
    {.depth = 24, .mask = Path::Mask::under_result, .caller = "TRV_Composite 14"},
    {.depth = 16, .mask = Path::Mask::ignored, .caller = "TRV_Composite 15"},
    {.depth = 0, .mask = Path::Mask::ineffective, .caller = "TRV_Composite 19"},
};

const Path& path_of(const TRV_Picture& source, const TRV_Picture& overlay, const TRV_Picture& result) {
    return *std::ranges::find_if(kPaths, [&](const Path& path) {
        const auto fits = [&](const TRV_Picture& picture) { return picture.depth() == path.depth; };
        return path.depth == 0 || (fits(source) && fits(overlay) && fits(result));
    });
}

// --- the kernel ------------------------------------------------------------------------------------------------------

// One composite: its pictures, its path and where the overlay lies.
struct Composition {
    const TRV_Picture& source;
    const TRV_Picture& overlay;
    TRV_Picture& result;
    const Path& path;
    Placement placement;
    std::uint16_t weight;

    void blend_plainly() const {
        map_region_in_copy(source, result, placement.covered, kNoYielding, path.caller,
                           BlendByWeights{complementary_weights(weight)},
                           PlacedPicture{overlay, placement.left, placement.top});
    }

    // Where the mask does not reach, the overlay is transparent.
    void blend_masked(const TRV_Picture& mask, int yield) const {
        const bool under_result = path.mask == Path::Mask::under_result;
        const std::int32_t left = under_result ? 0 : placement.left, top = under_result ? 0 : placement.top;
        const Region& covered = placement.covered;
        const Region masked = common_region(covered, placement_of(mask, left, top, source).covered);
        map_region(source, result, masked, path.masked_yields ? yield : kNoYielding, path.caller, BlendByMask{weight},
                   PlacedPicture{overlay, placement.left, placement.top}, PlacedPicture{mask, left, top});
        clear_top_bytes({std::max(masked.right + 1, covered.left), covered.top, covered.right, masked.bottom});
        clear_top_bytes({covered.left, std::max(masked.bottom + 1, covered.top), covered.right, covered.bottom});
    }

private:
    void clear_top_bytes(const Region& part) const {
        if (!part.empty()) map_in_place(result, part, path.caller, ClearTopBytes{});
    }
};

// Returns false, and writes no pixel of the result, when the overlay's mask cannot be locked.
bool compose(const TRV_Picture& source, const TRV_Picture& overlay, double overlay_fraction, int left, int top,
             TRV_Picture& result, int yield) {
    const Path& path = path_of(source, overlay, result);
    const Composition composition = {
        source, overlay, result, path, placement_of(overlay, left, top, source), weight_of(overlay_fraction)};
    if (path.mask == Path::Mask::ignored || !overlay.HasMask()) return composition.blend_plainly(), true;
    TRV_Picture mask(overlay, kAsMask);
    if (!mask.Lock()) return false;
    if (path.mask == Path::Mask::ineffective)
        composition.blend_plainly();
    else
        composition.blend_masked(mask, yield);
    return true;
}

// --- both forms ------------------------------------------------------------------------------------------------------

template <class Form, class Paint>
typename Form::Handle composite(Form form, typename Form::Handle lower, typename Form::Handle upper,
                                double overlay_fraction, Paint paint) {
    clear_error();
    if (!lower) return fail(ErrorCode::source_nil);
    if (!upper) return fail(ErrorCode::overlay_nil);
    if (fraction_out_of_bounds(overlay_fraction)) return fail(ErrorCode::overlay_fraction);
    TRV_Picture source = form.bind(lower);
    if (!source.Lock()) return fail(ErrorCode::source_lock);
    TRV_Picture overlay = form.bind(upper);
    if (!overlay.Lock()) return fail(ErrorCode::overlay_lock);
    return form.produce(source.width(), source.height(), result_depth(source), ResultMask::none,
                        [&](TRV_Picture& result) { paint(source, overlay, result); });
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void PrivComposite(const TRV_Picture& source, const TRV_Picture& overlay, double overlay_fraction, int left, int top,
                   TRV_Picture& result) {
    compose(source, overlay, overlay_fraction, left, top, result, kNoYielding);
}

// This form copies the source's mask. The client form does not.
REALpictureStruct* TRV_Composite(REALpictureStruct* p, REALpictureStruct* overlay, double overlay_fraction, int left,
                                 int top, int yield) {
    return composite(PictureForm{}, p, overlay, overlay_fraction,
                     [&](const TRV_Picture& source, const TRV_Picture& upper, TRV_Picture& result) {
                         const bool composed = compose(source, upper, overlay_fraction, left, top, result, yield);
                         if (composed && source.HasMask()) copy_source_mask(source, result, "TRV_Composite");
                     });
}

REALobjectStruct* TRV_ClientPicture_Composite(REALobjectStruct* cp, REALobjectStruct* overlay, double overlay_fraction,
                                              int left, int top, bool as_picture) {
    return composite(ClientForm{as_picture}, cp, overlay, overlay_fraction,
                     [&](const TRV_Picture& source, const TRV_Picture& upper, TRV_Picture& result) {
                         PrivComposite(source, upper, overlay_fraction, left, top, result);
                     });
}
