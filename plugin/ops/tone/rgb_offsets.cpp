#include "rgb_offsets.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "adjustment.h"
#include "channel_sums.h"
#include "per_channel.h"
#include "pixel_maps.h"
#include "row_clones.h"
#include "rows.h"

namespace tarvo::plugin {
namespace {

// What each byte of a block in memory is raised by, and lowered by; one of the two is 0. Top bytes are lowered to 0.
struct OffsetBytes {
    ColorBlock raised, lowered;

    explicit OffsetBytes(const PerChannel<std::int32_t>& offsets) {
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

// Makes sums that are not clamped, which a mask mixes with the source.
struct AddOffsets {
    PerChannel<std::int32_t> offsets;

    TARVO_INLINED UnclampedColor operator()(PixelColor color) const {
        return {static_cast<std::int32_t>(red_of(color)) + offsets.red,
                static_cast<std::int32_t>(green_of(color)) + offsets.green,
                static_cast<std::int32_t>(blue_of(color)) + offsets.blue};
    }
};

struct OffsetAdjustment {
    static constexpr AdjustmentLabels kLabels = {"TRV_AdjustRGB", "PrivAdjustRGB", "PrivAdjustRGBWithMask"};
    static constexpr SourceMask kSourceMask = SourceMask::left_behind;
    using Mix = MixIn255thsAndClamp;
    static constexpr int yield = kNoYielding;

    PerChannel<std::int32_t> offsets;

    bool arguments_pass() const { return channels_in_range(-255, 255, offsets.red, offsets.green, offsets.blue); }

    template <class Use>
    void with_kernel(Use use) const {
        use(OffsetBytes(offsets));
    }
    AddOffsets unclamped() const { return {offsets}; }

    void apply_in_place(TRV_Picture& picture, const Region& region) const {
        map_in_place(picture, region, "PrivAdjustRGB_InPlace", OffsetBytes(offsets));
    }
};

// --- the average -----------------------------------------------------------------------------------------------------

TARVO_ROW_CLONES void add_channels_row(ChannelSums& sums, const PixelColor* colors, std::size_t count) {
    add_channels(sums, colors, count);
}

struct AverageColor {
    int *red, *green, *blue;

    void operator()(const TRV_Picture& source, const Region& region) const {
        ChannelSums sums;
        measure_region(source, region, kNoYielding, "PrivGetAverageRGB",
                       [&](const PixelColor* colors, std::size_t count) { add_channels_row(sums, colors, count); });
        sums.put_means(red, green, blue);
    }
};

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void PrivAdjustRGB(const TRV_Picture& source, TRV_Picture& result, const Region& region, int red_delta, int green_delta,
                   int blue_delta) {
    map_adjusted(source, result, region, OffsetAdjustment{{red_delta, green_delta, blue_delta}});
}

void PrivAdjustRGBWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int red_delta,
                           int green_delta, int blue_delta) {
    map_adjusted_by_mask(source, mask, result, OffsetAdjustment{{red_delta, green_delta, blue_delta}});
}

void PrivAdjustRGB_InPlace(TRV_Picture& picture, const Region& region, int red_delta, int green_delta, int blue_delta) {
    OffsetAdjustment{{red_delta, green_delta, blue_delta}}.apply_in_place(picture, region);
}

void PrivGetAverageRGB(const TRV_Picture& source, const Region& region, int* red, int* green, int* blue) {
    AverageColor{red, green, blue}(source, region);
}

REALpictureStruct* TRV_AdjustRGB(REALpictureStruct* p, REALobjectStruct* rect, int red_delta, int green_delta,
                                 int blue_delta) {
    return adjust(PictureForm{}, p, rect, OffsetAdjustment{{red_delta, green_delta, blue_delta}});
}

REALpictureStruct* TRV_AdjustRGBWithMask(REALpictureStruct* p, REALpictureStruct* mask, int red_delta, int green_delta,
                                         int blue_delta) {
    return adjust_by_mask(PictureForm{}, p, mask, OffsetAdjustment{{red_delta, green_delta, blue_delta}});
}

void TRV_AdjustRGB_InPlace(REALpictureStruct* p, REALobjectStruct* rect, int red_delta, int green_delta,
                           int blue_delta) {
    const OffsetAdjustment adjustment{{red_delta, green_delta, blue_delta}};
    clear_error();
    if (!p) return set_error(ErrorCode::source_nil);
    if (!adjustment.arguments_pass()) return;
    visit_region_of(PictureForm{}, p, rect,
                    [&](TRV_Picture& picture, const Region& region) { adjustment.apply_in_place(picture, region); });
}

void TRV_GetAverageRGB(REALpictureStruct* p, REALobjectStruct* rect, int* red, int* green, int* blue) {
    average(PictureForm{}, p, rect, AverageColor{red, green, blue});
}
