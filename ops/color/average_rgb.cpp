#include "average_rgb.h"

#include <cstddef>
#include <cstdint>

#include "centered_adjustment.h"
#include "mask_mix.h"
#include "numbers.h"
#include "pixel_maps.h"

namespace {

// y = (W * c + 256 * x) / (W + 256) for each channel.
struct Blend {
    struct Channel {
        std::int32_t center;  // c
        std::int32_t weight;  // W, 256 for as much as the pixel's own
    };
    Channel red, green, blue;
};

Blend blend_of(int center, double red_weight, double green_weight, double blue_weight) {
    const auto color = static_cast<PixelColor>(center);
    const auto channel = [](std::uint32_t value, double weight) {
        return Blend::Channel{static_cast<std::int32_t>(value), in_256ths(weight)};
    };
    return {channel(red_of(color), red_weight), channel(green_of(color), green_weight),
            channel(blue_of(color), blue_weight)};
}

// --- any weights, also those that are not a number -------------------------------------------------------------------

std::uint32_t blended(std::uint32_t value, const Blend::Channel& channel) {
    const std::int32_t sum =
        wrapping_add(wrapping_multiply(channel.weight, channel.center), static_cast<std::int32_t>(value << 8));
    return static_cast<std::uint32_t>(clamp_to_byte(truncating_divide(sum, wrapping_add(channel.weight, 256))));
}

struct BlendByDivision {
    Blend blend;

    TARVO_INLINED PixelColor operator()(PixelColor color) const {
        return pack_rgb(blended(red_of(color), blend.red), blended(green_of(color), blend.green),
                        blended(blue_of(color), blend.blue));
    }
};

// --- weights from 0 to 255 -------------------------------------------------------------------------------------------

// y = (offset + slope * x) >> 24. The two are rounded up by less than 1 each, so the sum by less than 1 + 255; the
// quotient is then too large by less than 256 / 2^24, which is at most 1 / (W + 256), and that far each of the
// quotients lies below the next integer at least.
struct FixedBlend {
    struct Channel {
        std::uint32_t offset, slope;
    };
    Channel red, green, blue;
};

constexpr int kFixedBits = 24;

bool is_fixed(const Blend& blend) {
    const auto in_range = [](const Blend::Channel& channel) { return channel.weight >= 0; };
    return in_range(blend.red) && in_range(blend.green) && in_range(blend.blue);
}

FixedBlend fixed_blend_of(const Blend& blend) {
    const auto channel = [](const Blend::Channel& of) {
        const auto divisor = static_cast<std::uint64_t>(of.weight) + 256;
        const auto scaled = [divisor](std::uint64_t dividend) {
            return static_cast<std::uint32_t>(((dividend << kFixedBits) + divisor - 1) / divisor);
        };
        return FixedBlend::Channel{scaled(static_cast<std::uint64_t>(of.weight) * of.center), scaled(256)};
    };
    return {channel(blend.red), channel(blend.green), channel(blend.blue)};
}

[[gnu::always_inline]] inline std::uint32_t blended(std::uint32_t value, const FixedBlend::Channel& channel) {
    return (channel.offset + channel.slope * value) >> kFixedBits;
}

struct BlendByMultiplication {
    FixedBlend blend;

    TARVO_INLINED PixelColor operator()(PixelColor color) const {
        return pack_rgb(blended(red_of(color), blend.red), blended(green_of(color), blend.green),
                        blended(blue_of(color), blend.blue));
    }
};

// Has `map` map by the blend, by multiplication where that is exact.
template <class Map>
void map_by_blend(const Blend& blend, Map map) {
    if (is_fixed(blend))
        map(BlendByMultiplication{fixed_blend_of(blend)});
    else
        map(BlendByDivision{blend});
}

constexpr CenteredAdjustment kAverage = {"TRV_AverageRGB", PrivAverageRGB, PrivAverageRGBWithMask, SourceMask::copied};

}  // namespace

void PrivAverageRGB(const TRV_Picture& source, TRV_Picture& result, const Region& region, int center, double red_weight,
                    double green_weight, double blue_weight, int /*yield*/) {
    map_by_blend(blend_of(center, red_weight, green_weight, blue_weight), [&](const auto& kernel) {
        map_region(source, result, region, kNoYielding, "PrivAverageRGB", kernel);
    });
}

void PrivAverageRGBWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int center,
                            double red_weight, double green_weight, double blue_weight, int /*yield*/) {
    map_by_blend(blend_of(center, red_weight, green_weight, blue_weight), [&](const auto& kernel) {
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
