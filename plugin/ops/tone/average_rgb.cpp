#include "average_rgb.h"

#include <cstddef>
#include <cstdint>

#include "centered_adjustment.h"
#include "mask_mix.h"
#include "numbers.h"
#include "per_channel.h"
#include "pixel_maps.h"

namespace {

// --- any weights, also those that are not a number -------------------------------------------------------------------

// y = (W * c + 256 * x) / (W + 256).
struct BlendChannel {
    std::int32_t center;  // c
    std::int32_t weight;  // W, 256 for as much as the pixel's own

    TARVO_INLINED std::uint32_t operator()(std::uint32_t value) const {
        const std::int32_t sum = wrapping_add(wrapping_multiply(weight, center), static_cast<std::int32_t>(value << 8));
        return static_cast<std::uint32_t>(clamp_to_byte(truncating_divide(sum, wrapping_add(weight, 256))));
    }
};

using Blend = PerChannel<BlendChannel>;

Blend blend_with(int center, double red_weight, double green_weight, double blue_weight) {
    return about_center(center, red_weight, green_weight, blue_weight, [](std::int32_t value, std::int32_t weight) {
        return BlendChannel{value, weight};
    });
}

// --- weights from 0 to 255 -------------------------------------------------------------------------------------------

// y = (offset + slope * x) >> 24. The two are rounded up by less than 1 each, so the sum by less than 1 + 255; the
// quotient is then too large by less than 256 / 2^24, which is at most 1 / (W + 256), and that far each of the
// quotients lies below the next integer at least.
struct FixedBlendChannel {
    static constexpr int kFixedBits = 24;
    std::uint32_t offset, slope;

    explicit FixedBlendChannel(const BlendChannel& of) {
        const auto divisor = static_cast<std::uint64_t>(of.weight) + 256;
        const auto scaled = [divisor](std::uint64_t dividend) {
            return static_cast<std::uint32_t>(((dividend << kFixedBits) + divisor - 1) / divisor);
        };
        offset = scaled(static_cast<std::uint64_t>(of.weight) * of.center);
        slope = scaled(256);
    }

    TARVO_INLINED std::uint32_t operator()(std::uint32_t value) const { return (offset + slope * value) >> kFixedBits; }
};

// Has `map` map by multiplication where that is exact, else by division.
template <class Map>
void map_by(const Blend& blend, Map map) {
    if (blend.all([](const BlendChannel& channel) { return channel.weight >= 0; }))
        map(blend.each([](const BlendChannel& channel) { return FixedBlendChannel(channel); }));
    else
        map(blend);
}

constexpr CenteredAdjustment kAverage = {"TRV_AverageRGB", PrivAverageRGB, PrivAverageRGBWithMask, SourceMask::copied};

}  // namespace

void PrivAverageRGB(const TRV_Picture& source, TRV_Picture& result, const Region& region, int center, double red_weight,
                    double green_weight, double blue_weight, int /*yield*/) {
    map_by(blend_with(center, red_weight, green_weight, blue_weight),
           [&](const auto& kernel) { map_region(source, result, region, kNoYielding, "PrivAverageRGB", kernel); });
}

void PrivAverageRGBWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int center,
                            double red_weight, double green_weight, double blue_weight, int /*yield*/) {
    map_by(blend_with(center, red_weight, green_weight, blue_weight), [&](const auto& kernel) {
        map_pictures(source, result, kNoYielding, "PrivAverageRGBWithMask", ByMask{kernel, MixIn255ths{}}, mask);
    });
}

REALpictureStruct* TRV_AverageRGB(REALpictureStruct* p, REALobjectStruct* rect, int center, double red_weight,
                                  double green_weight, double blue_weight, int yield) {
    return adjust_about_center(kAverage, PictureForm{}, p, rect, center, red_weight, green_weight, blue_weight, yield);
}

REALobjectStruct* TRV_ClientPicture_AverageRGB(REALobjectStruct* cp, REALobjectStruct* rect, int center,
                                               double red_weight, double green_weight, double blue_weight, int yield,
                                               bool as_picture) {
    return adjust_about_center(kAverage, ClientForm{as_picture}, cp, rect, center, red_weight, green_weight,
                               blue_weight, yield);
}

REALpictureStruct* TRV_AverageRGBWithMask(REALpictureStruct* p, REALpictureStruct* mask, int center, double red_weight,
                                          double green_weight, double blue_weight, int yield) {
    return adjust_about_center_with_mask(kAverage, PictureForm{}, p, mask, center, red_weight, green_weight,
                                         blue_weight, yield);
}

REALobjectStruct* TRV_ClientPicture_AverageRGBWithMask(REALobjectStruct* cp, REALpictureStruct* mask, int center,
                                                       double red_weight, double green_weight, double blue_weight,
                                                       int yield, bool as_picture) {
    return adjust_about_center_with_mask(kAverage, ClientForm{as_picture}, cp, mask, center, red_weight, green_weight,
                                         blue_weight, yield);
}
