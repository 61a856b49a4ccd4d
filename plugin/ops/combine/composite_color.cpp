// Composites of a colour over a region.

#include <algorithm>
#include <cstdint>

#include "adjustment.h"
#include "blend.h"
#include "composite.h"
#include "pixel_maps.h"

namespace tarvo::plugin {
namespace {

struct BlendWithColor {
    BlendByWeights blend;
    ColorBlock overlays;

    BlendWithColor(PixelColor color, BlendWeights weights) : blend{weights} {
        std::ranges::fill(overlays.colors, color);
    }

    TARVO_INLINED void operator()(PixelColor* colors) const { blend(colors, overlays.colors); }
};

const char* caller_at(std::int32_t depth) {
    switch (depth) {
        case 32: return "TRV_Composite_Color 13";
        case 24: return "TRV_Composite_Color 14";
        case 16: return "TRV_Composite_Color 15";
        default: return "TRV_Composite_Color 19";
    }
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

// The host gets control only at 32 bits.
void PrivCompositeColor(const TRV_Picture& source, TRV_Picture& result, const Region& region, int overlay_color,
                        double overlay_fraction, int yield) {
    map_region_in_copy(source, result, region, source.depth() == 32 ? yield : kNoYielding, caller_at(source.depth()),
                       BlendWithColor(static_cast<PixelColor>(overlay_color), separate_weights(overlay_fraction)));
}

REALpictureStruct* TRV_Composite_Color(REALpictureStruct* p, REALobjectStruct* rect, int overlay_color,
                                       double overlay_fraction, int yield) {
    clear_error();
    if (!p) return fail(ErrorCode::source_nil);
    if (fraction_out_of_bounds(overlay_fraction)) return fail(ErrorCode::overlay_fraction);
    return adjust_region(PictureForm{}, p, rect, SourceMask::left_behind, "TRV_Composite_Color",
                         [&](const TRV_Picture& source, TRV_Picture& result, const Region& region) {
                             PrivCompositeColor(source, result, region, overlay_color, overlay_fraction, yield);
                         });
}
