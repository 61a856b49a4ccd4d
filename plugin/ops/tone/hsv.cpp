#include "hsv.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "adjustment.h"
#include "channel_sums.h"
#include "numbers.h"
#include "pixel.h"
#include "pixel_maps.h"
#include "row_clones.h"
#include "rows.h"

namespace tarvo::plugin {
namespace {

// --- the adjustment --------------------------------------------------------------------------------------------------

// How far hues are turned, from 0 to 6143, and the factors of saturation and value in 1024ths.
struct HsvChange {
    std::int32_t turn, saturation_factor, value_factor;
};

// A factor that is not a number becomes 0.
HsvChange change_of(double hue_degrees, double saturation_factor, double brightness_factor) {
    return {wrapped_up(floor_to_int32(hue_degrees * kSector / 60.0)), std::max(in_1024ths(saturation_factor), 0),
            std::max(in_1024ths(brightness_factor), 0)};
}

[[gnu::always_inline]] inline std::int32_t scaled(std::int32_t value, std::int32_t factor, std::int32_t most) {
    return std::min(floor_shift(factor * value, 10), most);
}

// Full saturation is not reached again: a colour that had it keeps 1023 of 1024.
constexpr std::int32_t kMostSaturation = kFullSaturation - 1;

[[gnu::always_inline]] inline Hsv1024 adjusted(PixelColor color, const HsvChange& change) {
    const Hsv1024 from = hsv_1024_of(color);
    return {wrapped_down(from.hue + change.turn), scaled(from.saturation, change.saturation_factor, kMostSaturation),
            scaled(from.value, change.value_factor, 255)};
}

// This takes blocks, so that a mask's mix comes in a loop after it: a processor's registers do not hold what both need.
struct AdjustHsv {
    HsvChange change;

    TARVO_INLINED void operator()(PixelColor* colors) const {
        for (std::size_t x = 0; x < kBlockPixels; ++x) colors[x] = rgb_of(adjusted(colors[x], change));
    }
};

// The adjustment for a turn that is not a number: greys keep their hue, which is none, and all else becomes black.
struct KeepGreys {
    HsvChange change;

    TARVO_INLINED PixelColor operator()(PixelColor color) const {
        const Hsv1024 to = adjusted(color, {0, change.saturation_factor, change.value_factor});
        return to.saturation == 0 ? grey(static_cast<std::uint32_t>(to.value)) : 0;
    }
};

struct Invert {
    TARVO_INLINED PixelColor operator()(PixelColor color) const { return ~color & 0xFFFFFF; }
};

struct HsvAdjustment {
    static constexpr AdjustmentLabels kLabels = {"TRV_AdjustHSV", "PrivAdjustHSV", "PrivAdjustHSVWithMask"};
    static constexpr int yield = kNoYielding;

    double hue_degrees, saturation_factor, brightness_factor;

    // NaN passes.
    bool pass_below(double end_of_factors) const {
        const auto outside = [end_of_factors](double factor) { return factor < 0.0 || factor >= end_of_factors; };
        if (hue_degrees <= -360.0 || hue_degrees >= 360.0) return set_error(ErrorCode::degrees), false;
        if (outside(saturation_factor)) return set_error(ErrorCode::saturation), false;
        if (outside(brightness_factor)) return set_error(ErrorCode::brightness), false;
        return true;
    }

    template <class Use>
    void with_kernel(Use use) const {
        const HsvChange change = change_of(hue_degrees, saturation_factor, brightness_factor);
        if (std::isnan(hue_degrees))
            use(KeepGreys{change});
        else
            use(AdjustHsv{change});
    }
};

struct HsvOfRegion : HsvAdjustment {
    static constexpr SourceMask kSourceMask = SourceMask::copied;
    bool negative;

    bool arguments_pass() const { return pass_below(1000.0); }

    template <class Use>
    void with_kernel(Use use) const {
        HsvAdjustment::with_kernel([&](const auto& adjust) {
            if (negative)
                use(Chain{adjust, Invert{}}, Invert{});
            else
                use(adjust);
        });
    }
};

struct HsvByMask : HsvAdjustment {
    using Mix = MixIn255ths;

    bool arguments_pass() const { return pass_below(10.0); }
};

// --- the average -----------------------------------------------------------------------------------------------------

// Saturations are added in the order of the pixels, which decides the sum's last bits. Values are multiples of 1/256,
// whose sums are exact in any order.
struct HsvSums {
    ChannelSums channels;
    double saturation = 0.0;
    std::uint64_t largest_channels = 0;
};

constexpr std::size_t kBlock = 16;

// Adds at most a block of colours. The block's divisions become vector code, and while its saturations are added up,
// one after the other, a processor goes on to the next block's divisions.
[[gnu::always_inline]] inline void add_block(HsvSums& sums, const PixelColor* colors, std::size_t count) {
    double saturations[kBlock];
    std::uint32_t largest_channels = 0;
    add_channels(sums.channels, colors, count);
    for (std::size_t x = 0; x < count; ++x) {
        const Extent extent = extent_of(colors[x]);
        saturations[x] = static_cast<double>(extent.delta) / static_cast<double>(std::max(extent.largest, 1));
        largest_channels += static_cast<std::uint32_t>(extent.largest);
    }
    for (std::size_t x = 0; x < count; ++x) sums.saturation += saturations[x];
    sums.largest_channels += largest_channels;
}

TARVO_ROW_CLONES void add_colors_row(HsvSums& sums, const PixelColor* colors, std::size_t count) {
    std::size_t x = 0;
    for (; x + kBlock <= count; x += kBlock) add_block(sums, colors + x, kBlock);
    add_block(sums, colors + x, count - x);
}

struct AverageHsv {
    double *hue, *saturation, *brightness;

    void operator()(const TRV_Picture& source, const Region& region) const {
        HsvSums sums;
        measure_region(source, region, kNoYielding, "PrivGetAverageHSV",
                       [&](const PixelColor* colors, std::size_t count) { add_colors_row(sums, colors, count); });
        const auto count = static_cast<double>(sums.channels.count);
        double mean_hue = 0.0, saturation_of_mean = 0.0, value_of_mean = 0.0;
        TRV_Pixel::RGBToHSV(sums.channels.mean_color(), mean_hue, saturation_of_mean, value_of_mean);
        if (hue) *hue = mean_hue;
        if (saturation) *saturation = sums.saturation / count;
        if (brightness) *brightness = static_cast<double>(sums.largest_channels) * kValueScale / count;
    }
};

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void PrivAdjustHSV(const TRV_Picture& source, TRV_Picture& result, const Region& region, double hue_degrees,
                   double saturation_factor, double brightness_factor, bool negative, int /*yield*/) {
    map_adjusted(source, result, region, HsvOfRegion{{hue_degrees, saturation_factor, brightness_factor}, negative});
}

void PrivAdjustHSVWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, double hue_degrees,
                           double saturation_factor, double brightness_factor, int /*yield*/) {
    map_adjusted_by_mask(source, mask, result, HsvByMask{{hue_degrees, saturation_factor, brightness_factor}});
}

void PrivGetAverageHSV(const TRV_Picture& source, const Region& region, double* hue, double* saturation,
                       double* brightness, int /*yield*/) {
    AverageHsv{hue, saturation, brightness}(source, region);
}

REALpictureStruct* TRV_AdjustHSV(REALpictureStruct* p, REALobjectStruct* rect, double hue_degrees,
                                 double saturation_factor, double brightness_factor, bool negative, int /*yield*/) {
    return adjust(PictureForm{}, p, rect, HsvOfRegion{{hue_degrees, saturation_factor, brightness_factor}, negative});
}

REALobjectStruct* TRV_ClientPicture_AdjustHSV(REALobjectStruct* cp, REALobjectStruct* rect, double hue_degrees,
                                              double saturation_factor, double brightness_factor, bool negative,
                                              int /*yield*/, bool as_picture) {
    return adjust(ClientForm{as_picture}, cp, rect,
                  HsvOfRegion{{hue_degrees, saturation_factor, brightness_factor}, negative});
}

REALpictureStruct* TRV_AdjustHSVWithMask(REALpictureStruct* p, REALpictureStruct* mask, double hue_degrees,
                                         double saturation_factor, double brightness_factor, int /*yield*/) {
    return adjust_by_mask(PictureForm{}, p, mask, HsvByMask{{hue_degrees, saturation_factor, brightness_factor}});
}

REALobjectStruct* TRV_ClientPicture_AdjustHSVWithMask(REALobjectStruct* cp, REALpictureStruct* mask, double hue_degrees,
                                                      double saturation_factor, double brightness_factor, int /*yield*/,
                                                      bool as_picture) {
    return adjust_by_mask(ClientForm{as_picture}, cp, mask,
                          HsvByMask{{hue_degrees, saturation_factor, brightness_factor}});
}

void TRV_GetAverageHSV(REALpictureStruct* p, REALobjectStruct* rect, double* hue_degrees, double* saturation,
                       double* brightness, int /*yield*/) {
    average(PictureForm{}, p, rect, AverageHsv{hue_degrees, saturation, brightness});
}

void TRV_ClientPicture_GetAverageHSV(REALobjectStruct* cp, REALobjectStruct* rect, double* hue_degrees,
                                     double* saturation, double* brightness, int /*yield*/) {
    average(ClientForm{}, cp, rect, AverageHsv{hue_degrees, saturation, brightness});
}
