#include "rgb_offsets.h"

#include <algorithm>
#include <array>
#include <bit>
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

// How far each byte of a colour in memory is raised and lowered; one of the two is 0. The top byte is lowered to 0.
struct ByteOffsets {
    using Bytes = std::array<std::uint8_t, sizeof(PixelColor)>;
    Bytes raised, lowered;
};

ByteOffsets byte_offsets_of(const Offsets& offsets) {
    const auto bytes = [](PixelColor color) { return std::bit_cast<ByteOffsets::Bytes>(color); };
    const auto up = [](std::int32_t delta) { return static_cast<std::uint32_t>(std::max(delta, 0)); };
    const auto down = [](std::int32_t delta) { return static_cast<std::uint32_t>(std::max(-delta, 0)); };
    return {bytes(pack_rgb(up(offsets.red), up(offsets.green), up(offsets.blue))),
            bytes(0xFF000000 | pack_rgb(down(offsets.red), down(offsets.green), down(offsets.blue)))};
}

struct OffsetBytes {
    ByteOffsets offsets;

    TARVO_INLINED void operator()(PixelColor* colors) const {
        const auto [raised, lowered] = offsets;
        auto* const bytes = reinterpret_cast<std::uint8_t*>(colors);
        for (std::size_t i = 0; i < kBlockPixels * sizeof(PixelColor); i += sizeof(PixelColor)) {
            for (std::size_t k = 0; k < sizeof(PixelColor); ++k) {
                const auto room = static_cast<std::uint8_t>(255 - raised[k]);
                const auto up = static_cast<std::uint8_t>(std::min(bytes[i + k], room) + raised[k]);
                bytes[i + k] = static_cast<std::uint8_t>(std::max(up, lowered[k]) - lowered[k]);
            }
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
    map_region(source, result, region, kNoYielding, "PrivAdjustRGB",
               OffsetBytes{byte_offsets_of({red_delta, green_delta, blue_delta})});
}

void PrivAdjustRGBWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int red_delta,
                           int green_delta, int blue_delta) {
    map_pictures(source, result, kNoYielding, "PrivAdjustRGBWithMask",
                 OffsetByMask{{red_delta, green_delta, blue_delta}}, mask);
}

void PrivAdjustRGB_InPlace(TRV_Picture& picture, const Region& region, int red_delta, int green_delta, int blue_delta) {
    map_in_place(picture, region, "PrivAdjustRGB_InPlace",
                 OffsetBytes{byte_offsets_of({red_delta, green_delta, blue_delta})});
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
