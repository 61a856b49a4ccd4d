#include "rgb_offsets.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "adjustment.h"
#include "channel_sums.h"
#include "mask_mix.h"
#include "pixel_maps.h"
#include "row_clones.h"
#include "rows.h"

namespace {

// For each channel a number from -255 to 255.
struct Offsets {
    std::int32_t red, green, blue;
};

// --- clamped, in bytes -----------------------------------------------------------------------------------------------

// Each byte of a block in memory is raised, or lowered, by a byte of these; one of the two is 0. Top bytes are lowered
// to 0.
struct OffsetBytes {
    ColorBlock raised, lowered;

    explicit OffsetBytes(const Offsets& offsets) {
        const auto up = [](std::int32_t delta) { return static_cast<std::uint32_t>(std::max(delta, 0)); };
        const auto down = [](std::int32_t delta) { return static_cast<std::uint32_t>(std::max(-delta, 0)); };
        std::ranges::fill(raised.colors, pack_rgb(up(offsets.red), up(offsets.green), up(offsets.blue)));
        std::ranges::fill(lowered.colors,
                          0xFF000000 | pack_rgb(down(offsets.red), down(offsets.green), down(offsets.blue)));
    }

    TARVO_INLINED void operator()(PixelColor* colors) const {
        auto* const bytes = reinterpret_cast<std::uint8_t*>(colors);
        const auto* const up = reinterpret_cast<const std::uint8_t*>(raised.colors);
        const auto* const down = reinterpret_cast<const std::uint8_t*>(lowered.colors);
        for (std::size_t i = 0; i < sizeof(ColorBlock); ++i) {
            const auto room = static_cast<std::uint8_t>(255 - up[i]);
            const auto risen = static_cast<std::uint8_t>(std::min(bytes[i], room) + up[i]);
            bytes[i] = static_cast<std::uint8_t>(std::max(risen, down[i]) - down[i]);
        }
    }
};

// --- weighted by a mask, clamped after that --------------------------------------------------------------------------

struct OffsetByMask {
    Offsets offsets;

    TARVO_INLINED PixelColor operator()(PixelColor color, PixelColor mask) const {
        const std::uint32_t level = mask & 255;
        const auto channel = [level](std::uint32_t value, std::int32_t delta) TARVO_INLINED {
            return mixed_in_255ths_and_clamped(value, static_cast<std::int32_t>(value) + delta, level);
        };
        return pack_rgb(channel(red_of(color), offsets.red), channel(green_of(color), offsets.green),
                        channel(blue_of(color), offsets.blue));
    }
};

// --- the average -----------------------------------------------------------------------------------------------------

TARVO_ROW_CLONES void add_channels_row(ChannelSums& sums, const PixelColor* colors, std::size_t count) {
    add_channels(sums, colors, count);
}

// --- checks ----------------------------------------------------------------------------------------------------------

bool deltas_pass(int red_delta, int green_delta, int blue_delta) {
    return ChannelsInRange(-255, 255, red_delta, green_delta, blue_delta);
}

}  // namespace

void PrivAdjustRGB(const TRV_Picture& source, TRV_Picture& result, const Region& region, int red_delta, int green_delta,
                   int blue_delta) {
    map_region(source, result, region, kNoYielding, "PrivAdjustRGB", OffsetBytes({red_delta, green_delta, blue_delta}));
}

void PrivAdjustRGBWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int red_delta,
                           int green_delta, int blue_delta) {
    map_pictures(source, result, kNoYielding, "PrivAdjustRGBWithMask",
                 OffsetByMask{{red_delta, green_delta, blue_delta}}, mask);
}

void PrivAdjustRGB_InPlace(TRV_Picture& picture, const Region& region, int red_delta, int green_delta, int blue_delta) {
    map_in_place(picture, region, "PrivAdjustRGB_InPlace", OffsetBytes({red_delta, green_delta, blue_delta}));
}

void PrivGetAverageRGB(const TRV_Picture& source, const Region& region, int* red, int* green, int* blue) {
    ChannelSums sums;
    measure_region(source, region, kNoYielding, "PrivGetAverageRGB",
                   [&](const PixelColor* colors, std::size_t count) { add_channels_row(sums, colors, count); });
    sums.put_means(red, green, blue);
}

REALpictureStruct* TRV_AdjustRGB(REALpictureStruct* p, REALobjectStruct* rect, int red_delta, int green_delta,
                                 int blue_delta) {
    ClearError();
    if (!p) return Fail(ErrorCode::source_nil);
    if (!deltas_pass(red_delta, green_delta, blue_delta)) return nullptr;
    return adjust_region(PictureForm{}, p, rect, SourceMask::left_behind, "TRV_AdjustRGB",
                         [&](const TRV_Picture& source, TRV_Picture& result, const Region& region) {
                             PrivAdjustRGB(source, result, region, red_delta, green_delta, blue_delta);
                         });
}

REALpictureStruct* TRV_AdjustRGBWithMask(REALpictureStruct* p, REALpictureStruct* mask, int red_delta, int green_delta,
                                         int blue_delta) {
    ClearError();
    if (!p) return Fail(ErrorCode::source_nil);
    if (!mask) return Fail(ErrorCode::mask_nil);
    if (!deltas_pass(red_delta, green_delta, blue_delta)) return nullptr;
    return adjust_with_mask(PictureForm{}, p, mask,
                            [&](const TRV_Picture& source, const TRV_Picture& weights, TRV_Picture& result) {
                                PrivAdjustRGBWithMask(source, weights, result, red_delta, green_delta, blue_delta);
                            });
}

void TRV_AdjustRGB_InPlace(REALpictureStruct* p, REALobjectStruct* rect, int red_delta, int green_delta,
                           int blue_delta) {
    ClearError();
    if (!p) return SetError(ErrorCode::source_nil);
    if (!deltas_pass(red_delta, green_delta, blue_delta)) return;
    visit_region_of(PictureForm{}, p, rect, [&](TRV_Picture& picture, const Region& region) {
        PrivAdjustRGB_InPlace(picture, region, red_delta, green_delta, blue_delta);
    });
}

void TRV_GetAverageRGB(REALpictureStruct* p, REALobjectStruct* rect, int* red, int* green, int* blue) {
    ClearError();
    if (!p) return SetError(ErrorCode::source_nil);
    visit_region_of(PictureForm{}, p, rect, [&](const TRV_Picture& source, const Region& region) {
        PrivGetAverageRGB(source, region, red, green, blue);
    });
}
