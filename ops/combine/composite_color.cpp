// A colour over a region of a picture.

#include <cstddef>
#include <cstdint>

#include "adjustment.h"
#include "blend.h"
#include "composite.h"
#include "row_clones.h"
#include "rows.h"

namespace {

TARVO_ROW_CLONES void blend_color_row(PixelColor* colors, std::size_t count, PixelColor color, BlendWeights weights) {
    for (std::size_t x = 0; x < count; ++x) colors[x] = blend(colors[x], color, weights);
}

const char* caller_at(std::int32_t depth) {
    switch (depth) {
        case 32: return "TRV_Composite_Color 13";
        case 24: return "TRV_Composite_Color 14";
        case 16: return "TRV_Composite_Color 15";
        default: return "TRV_Composite_Color 19";
    }
}

}  // namespace

// Gives the host control at 32 bits only.
void PrivCompositeColor(const TRV_Picture& source, TRV_Picture& result, const Region& region, int overlay_color,
                        double overlay_fraction, int yield) {
    const auto color = static_cast<PixelColor>(overlay_color);
    const BlendWeights weights = separate_weights(overlay_fraction);
    transform_region(source, result, region, source.depth() == 32 ? yield : kNoYielding, caller_at(source.depth()),
                     [&](PixelColor* colors, std::size_t count) { blend_color_row(colors, count, color, weights); });
}

REALpictureStruct* TRV_Composite_Color(REALpictureStruct* p, REALobjectStruct* rect, int overlay_color,
                                       double overlay_fraction, int yield) {
    ClearError();
    if (!p) return Fail(ErrorCode::source_nil);
    if (fraction_out_of_bounds(overlay_fraction)) return Fail(ErrorCode::overlay_fraction);
    return adjust_region(PictureForm{}, p, rect, SourceMask::left_behind, "TRV_Composite_Color",
                         [&](const TRV_Picture& source, TRV_Picture& result, const Region& region) {
                             PrivCompositeColor(source, result, region, overlay_color, overlay_fraction, yield);
                         });
}
