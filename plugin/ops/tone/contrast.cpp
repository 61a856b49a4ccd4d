#include "contrast.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "centered_adjustment.h"
#include "channel_lanes.h"
#include "channel_sums.h"
#include "mask_mix.h"
#include "numbers.h"
#include "per_channel.h"
#include "pixel_maps.h"
#include "row_clones.h"
#include "rows.h"

namespace {

// --- any factors: lanes of 32 bits; products wrap, which only a factor that is not a number brings about --------------

// y = c + floor(F * (x - c) / 256), clamped to 0..255.
struct ContrastChannel {
    std::int32_t center;  // c
    std::int32_t factor;  // F, 256 for no change

    TARVO_INLINED std::uint32_t operator()(std::uint32_t value) const {
        const std::int32_t product = wrapping_multiply(factor, static_cast<std::int32_t>(value) - center);
        return static_cast<std::uint32_t>(clamp_to_byte(center + floor_shift(product, 8)));
    }
};

using Contrast = PerChannel<ContrastChannel>;

Contrast contrast_about(int center, double red_factor, double green_factor, double blue_factor) {
    return about_center(center, red_factor, green_factor, blue_factor, [](std::int32_t value, std::int32_t factor) {
        return ContrastChannel{value, factor};
    });
}

// --- factors below 64: lanes of 16 bits ------------------------------------------------------------------------------

// F * (x - c) / 256 is the high half of (2 * F) * (128 * (x - c)), each factor of which fits in 16 bits.
struct LaneCurve {
    ChannelConstants center;
    ChannelConstants doubled_factor;
};

bool fits_in_lanes(const Contrast& contrast) {
    constexpr std::int32_t kEnd = 64 * 256;
    return contrast.all([](const ContrastChannel& channel) { return channel.factor >= 0 && channel.factor < kEnd; });
}

LaneCurve lane_curve_of(const Contrast& contrast) {
    const auto [red, green, blue] = contrast;
    return {ChannelConstants::of(red.center, green.center, blue.center),
            ChannelConstants::of(2 * red.factor, 2 * green.factor, 2 * blue.factor)};
}

struct ContrastInLanes {
    LaneCurve curve;

    TARVO_INLINED void operator()(PixelColor* colors) const {
        map_channels(
            colors, kBlockPixels,
            [](std::int16_t x, std::int16_t c, std::int16_t doubled) TARVO_INLINED {
                const auto distance = static_cast<std::int16_t>((x - c) * 128);
                const auto moved = static_cast<std::int16_t>(c + (std::int32_t{doubled} * distance >> 16));
                return std::clamp<std::int16_t>(moved, 0, 255);
            },
            curve.center, curve.doubled_factor);
    }
};

// Has `map` map in the faster of the two ways that is exact for the factors.
template <class Map>
void map_by(const Contrast& contrast, Map map) {
    if (fits_in_lanes(contrast))
        map(ContrastInLanes{lane_curve_of(contrast)});
    else
        map(contrast);
}

// --- average distance ------------------------------------------------------------------------------------------------

// Adds the distances between the channels of two runs, at most a chunk.
TARVO_ROW_CLONES void sum_distances_row(const PixelColor* colors, const PixelColor* centers, std::size_t count,
                                        ChannelSums& sums) {
    Chunk distances;
    const auto* const a = reinterpret_cast<const std::uint8_t*>(colors);
    const auto* const b = reinterpret_cast<const std::uint8_t*>(centers);
    auto* const apart = reinterpret_cast<std::uint8_t*>(distances.data());
    for (std::size_t i = 0; i < count * sizeof(PixelColor); ++i) {
        const std::uint8_t larger = std::max(a[i], b[i]);
        apart[i] = static_cast<std::uint8_t>((larger - a[i]) | (larger - b[i]));  // one of the two is 0
    }
    add_channels(sums, distances.data(), count);
}

// --- both forms ------------------------------------------------------------------------------------------------------

constexpr CenteredAdjustment kContrast = {"TRV_AdjustContrast", PrivAdjustContrast, PrivAdjustContrastWithMask,
                                          SourceMask::copied};

template <class Form>
void get_average_contrast(Form form, typename Form::Handle p, REALobjectStruct* rect, int center, int* red, int* green,
                          int* blue, int yield) {
    ClearError();
    if (!p) return SetError(ErrorCode::source_nil);
    visit_region_of(form, p, rect, [&](const TRV_Picture& source, const Region& region) {
        PrivGetAverageContrast(source, region, center, red, green, blue, yield);
    });
}

}  // namespace

void PrivAdjustContrast(const TRV_Picture& source, TRV_Picture& result, const Region& region, int center,
                        double red_factor, double green_factor, double blue_factor, int yield) {
    map_by(contrast_about(center, red_factor, green_factor, blue_factor),
           [&](const auto& kernel) { map_region(source, result, region, yield, "PrivAdjustContrast", kernel); });
}

void PrivAdjustContrastWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int center,
                                double red_factor, double green_factor, double blue_factor, int yield) {
    map_by(contrast_about(center, red_factor, green_factor, blue_factor), [&](const auto& kernel) {
        map_pictures(source, result, yield, "PrivAdjustContrastWithMask", ByMask{kernel, MixIn256ths{}}, mask);
    });
}

void PrivGetAverageContrast(const TRV_Picture& source, const Region& region, int center, int* red, int* green,
                            int* blue, int yield) {
    ChannelSums sums;
    Chunk centers;
    centers.fill(static_cast<PixelColor>(center));
    measure_region(source, region, yield, "PrivGetAverageContrast", [&](const PixelColor* colors, std::size_t count) {
        sum_distances_row(colors, centers.data(), count, sums);
    });
    sums.put_means(red, green, blue);
}

REALpictureStruct* TRV_AdjustContrast(REALpictureStruct* p, REALobjectStruct* rect, int center, double red_factor,
                                      double green_factor, double blue_factor, int yield) {
    return adjust_about_center(kContrast, PictureForm{}, p, rect, center, red_factor, green_factor, blue_factor, yield);
}

REALobjectStruct* TRV_ClientPicture_AdjustContrast(REALobjectStruct* cp, REALobjectStruct* rect, int center,
                                                   double red_factor, double green_factor, double blue_factor,
                                                   int yield, bool as_picture) {
    return adjust_about_center(kContrast, ClientForm{as_picture}, cp, rect, center, red_factor, green_factor,
                               blue_factor, yield);
}

REALpictureStruct* TRV_AdjustContrastWithMask(REALpictureStruct* p, REALpictureStruct* mask, int center,
                                              double red_factor, double green_factor, double blue_factor, int yield) {
    return adjust_about_center_with_mask(kContrast, PictureForm{}, p, mask, center, red_factor, green_factor,
                                         blue_factor, yield);
}

REALobjectStruct* TRV_ClientPicture_AdjustContrastWithMask(REALobjectStruct* cp, REALpictureStruct* mask, int center,
                                                           double red_factor, double green_factor, double blue_factor,
                                                           int yield, bool as_picture) {
    return adjust_about_center_with_mask(kContrast, ClientForm{as_picture}, cp, mask, center, red_factor, green_factor,
                                         blue_factor, yield);
}

void TRV_GetAverageContrast(REALpictureStruct* p, REALobjectStruct* rect, int center, int* red_contrast,
                            int* green_contrast, int* blue_contrast, int yield) {
    get_average_contrast(PictureForm{}, p, rect, center, red_contrast, green_contrast, blue_contrast, yield);
}

void TRV_ClientPicture_GetAverageContrast(REALobjectStruct* cp, REALobjectStruct* rect, int center, int* red_contrast,
                                          int* green_contrast, int* blue_contrast, int yield) {
    get_average_contrast(ClientForm{false}, cp, rect, center, red_contrast, green_contrast, blue_contrast, yield);
}
