#include "contrast.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "centered_adjustment.h"
#include "channel_lanes.h"
#include "channel_sums.h"
#include "numbers.h"
#include "row_clones.h"
#include "rows.h"

namespace tarvo::plugin {
namespace {

// --- any factors, in lanes of 32 bits --------------------------------------------------------------------------------

// y = c + floor(F * (x - c) / 256), clamped to 0..255. The product wraps only when the factor is not a number.
struct ContrastChannel {
    std::int32_t center;  // c
    std::int32_t factor;  // F, 256 for no change

    TARVO_INLINED std::uint32_t operator()(std::uint32_t value) const {
        const std::int32_t product = wrapping_multiply(factor, static_cast<std::int32_t>(value) - center);
        return static_cast<std::uint32_t>(clamp_to_byte(center + floor_shift(product, 8)));
    }
};

using ContrastChannels = PerChannel<ContrastChannel>;

// --- factors below 64, in lanes of 16 bits ---------------------------------------------------------------------------

// F * (x - c) / 256 is the high half of (2 * F) * (128 * (x - c)), each factor of which fits in 16 bits.
struct ContrastInLanes {
    ChannelConstants center;
    ChannelConstants doubled_factor;

    explicit ContrastInLanes(const ContrastChannels& of)
        : center(ChannelConstants::of(of.red.center, of.green.center, of.blue.center)),
          doubled_factor(ChannelConstants::of(2 * of.red.factor, 2 * of.green.factor, 2 * of.blue.factor)) {}

    static bool is_exact_for(const ContrastChannels& channels) {
        constexpr std::int32_t kEnd = 64 * 256;
        return channels.all(
            [](const ContrastChannel& channel) { return channel.factor >= 0 && channel.factor < kEnd; });
    }

    TARVO_INLINED void operator()(PixelColor* colors) const {
        map_channels(
            colors, kBlockPixels,
            [](std::int16_t x, std::int16_t c, std::int16_t doubled) TARVO_INLINED {
                const auto distance = static_cast<std::int16_t>((x - c) * 128);
                const auto moved = static_cast<std::int16_t>(c + (std::int32_t{doubled} * distance >> 16));
                return std::clamp<std::int16_t>(moved, 0, 255);
            },
            center, doubled_factor);
    }
};

struct Contrast : CenteredAdjustment {
    static constexpr AdjustmentLabels kLabels = {"TRV_AdjustContrast", "PrivAdjustContrast",
                                                 "PrivAdjustContrastWithMask"};
    static constexpr SourceMask kSourceMask = SourceMask::copied;
    using Mix = MixIn256ths;
    int yield;

    // Works in lanes of 16 bits where that is exact, because it is faster.
    template <class Use>
    void with_kernel(Use use) const {
        const auto channels = rules<ContrastChannel>();
        if (kHasHighProducts && ContrastInLanes::is_exact_for(channels))
            use(ContrastInLanes(channels));
        else
            use(channels);
    }
};

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

struct AverageContrast {
    int center;
    int *red, *green, *blue;
    int yield;

    void operator()(const TRV_Picture& source, const Region& region) const {
        ChannelSums sums;
        Chunk centers;
        centers.fill(static_cast<PixelColor>(center));
        measure_region(source, region, yield, "PrivGetAverageContrast",
                       [&](const PixelColor* colors, std::size_t count) {
                           sum_distances_row(colors, centers.data(), count, sums);
                       });
        sums.put_means(red, green, blue);
    }
};

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void PrivAdjustContrast(const TRV_Picture& source, TRV_Picture& result, const Region& region, int center,
                        double red_factor, double green_factor, double blue_factor, int yield) {
    map_adjusted(source, result, region, Contrast{{center, red_factor, green_factor, blue_factor}, yield});
}

void PrivAdjustContrastWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int center,
                                double red_factor, double green_factor, double blue_factor, int yield) {
    map_adjusted_by_mask(source, mask, result, Contrast{{center, red_factor, green_factor, blue_factor}, yield});
}

void PrivGetAverageContrast(const TRV_Picture& source, const Region& region, int center, int* red, int* green,
                            int* blue, int yield) {
    AverageContrast{center, red, green, blue, yield}(source, region);
}

REALpictureStruct* TRV_AdjustContrast(REALpictureStruct* p, REALobjectStruct* rect, int center, double red_factor,
                                      double green_factor, double blue_factor, int yield) {
    return adjust(PictureForm{}, p, rect, Contrast{{center, red_factor, green_factor, blue_factor}, yield});
}

REALobjectStruct* TRV_ClientPicture_AdjustContrast(REALobjectStruct* cp, REALobjectStruct* rect, int center,
                                                   double red_factor, double green_factor, double blue_factor,
                                                   int yield, bool as_picture) {
    return adjust(ClientForm{as_picture}, cp, rect, Contrast{{center, red_factor, green_factor, blue_factor}, yield});
}

REALpictureStruct* TRV_AdjustContrastWithMask(REALpictureStruct* p, REALpictureStruct* mask, int center,
                                              double red_factor, double green_factor, double blue_factor, int yield) {
    return adjust_by_mask(PictureForm{}, p, mask, Contrast{{center, red_factor, green_factor, blue_factor}, yield});
}

REALobjectStruct* TRV_ClientPicture_AdjustContrastWithMask(REALobjectStruct* cp, REALpictureStruct* mask, int center,
                                                           double red_factor, double green_factor, double blue_factor,
                                                           int yield, bool as_picture) {
    return adjust_by_mask(ClientForm{as_picture}, cp, mask,
                          Contrast{{center, red_factor, green_factor, blue_factor}, yield});
}

void TRV_GetAverageContrast(REALpictureStruct* p, REALobjectStruct* rect, int center, int* red_contrast,
                            int* green_contrast, int* blue_contrast, int yield) {
    average(PictureForm{}, p, rect, AverageContrast{center, red_contrast, green_contrast, blue_contrast, yield});
}

void TRV_ClientPicture_GetAverageContrast(REALobjectStruct* cp, REALobjectStruct* rect, int center, int* red_contrast,
                                          int* green_contrast, int* blue_contrast, int yield) {
    average(ClientForm{}, cp, rect, AverageContrast{center, red_contrast, green_contrast, blue_contrast, yield});
}
