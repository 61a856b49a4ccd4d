#include "average_rgb.h"

#include <cstdint>

#include "centered_adjustment.h"
#include "numbers.h"

namespace tarvo::plugin {
namespace {

// --- any weights, also those that are not a number -------------------------------------------------------------------

// y = (W * c + 256 * x) / (W + 256).
struct MeanWithCenter {
    std::int32_t center;  // c
    std::int32_t weight;  // W, 256 for as much as the pixel's own

    TARVO_INLINED std::uint32_t operator()(std::uint32_t value) const {
        const std::int32_t sum = wrapping_add(wrapping_multiply(weight, center), static_cast<std::int32_t>(value << 8));
        return static_cast<std::uint32_t>(clamp_to_byte(truncating_divide(sum, wrapping_add(weight, 256))));
    }
};

// --- weights from 0 to 255 -------------------------------------------------------------------------------------------

// y = (offset + slope * x) >> 24. The two are rounded up by less than 1 each, so the sum by less than 1 + 255; the
// quotient is then too large by less than 256 / 2^24, which is at most 1 / (W + 256), and that far each of the
// quotients lies below the next integer at least.
struct FixedMean {
    static constexpr int kFixedBits = 24;
    std::uint32_t offset, slope;

    explicit FixedMean(const MeanWithCenter& mean) {
        const auto divisor = static_cast<std::uint64_t>(mean.weight) + 256;
        const auto scaled = [divisor](std::uint64_t dividend) {
            return static_cast<std::uint32_t>(((dividend << kFixedBits) + divisor - 1) / divisor);
        };
        offset = scaled(static_cast<std::uint64_t>(mean.weight) * mean.center);
        slope = scaled(256);
    }

    TARVO_INLINED std::uint32_t operator()(std::uint32_t value) const { return (offset + slope * value) >> kFixedBits; }
};

struct AverageBlend : CenteredAdjustment {
    static constexpr AdjustmentLabels kLabels = {"TRV_AverageRGB", "PrivAverageRGB", "PrivAverageRGBWithMask"};
    static constexpr SourceMask kSourceMask = SourceMask::copied;
    using Mix = MixIn255ths;
    static constexpr int yield = kNoYielding;

    // Multiplies where that is exact, else divides.
    template <class Use>
    void with_kernel(Use use) const {
        const auto means = rules<MeanWithCenter>();
        if (means.all([](const MeanWithCenter& mean) { return mean.weight >= 0; }))
            use(means.each([](const MeanWithCenter& mean) { return FixedMean(mean); }));
        else
            use(means);
    }
};

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void PrivAverageRGB(const TRV_Picture& source, TRV_Picture& result, const Region& region, int center, double red_weight,
                    double green_weight, double blue_weight, int /*yield*/) {
    map_adjusted(source, result, region, AverageBlend{{center, red_weight, green_weight, blue_weight}});
}

void PrivAverageRGBWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int center,
                            double red_weight, double green_weight, double blue_weight, int /*yield*/) {
    map_adjusted_by_mask(source, mask, result, AverageBlend{{center, red_weight, green_weight, blue_weight}});
}

REALpictureStruct* TRV_AverageRGB(REALpictureStruct* p, REALobjectStruct* rect, int center, double red_weight,
                                  double green_weight, double blue_weight, int /*yield*/) {
    return adjust(PictureForm{}, p, rect, AverageBlend{{center, red_weight, green_weight, blue_weight}});
}

REALobjectStruct* TRV_ClientPicture_AverageRGB(REALobjectStruct* cp, REALobjectStruct* rect, int center,
                                               double red_weight, double green_weight, double blue_weight,
                                               int /*yield*/, bool as_picture) {
    return adjust(ClientForm{as_picture}, cp, rect, AverageBlend{{center, red_weight, green_weight, blue_weight}});
}

REALpictureStruct* TRV_AverageRGBWithMask(REALpictureStruct* p, REALpictureStruct* mask, int center, double red_weight,
                                          double green_weight, double blue_weight, int /*yield*/) {
    return adjust_by_mask(PictureForm{}, p, mask, AverageBlend{{center, red_weight, green_weight, blue_weight}});
}

REALobjectStruct* TRV_ClientPicture_AverageRGBWithMask(REALobjectStruct* cp, REALpictureStruct* mask, int center,
                                                       double red_weight, double green_weight, double blue_weight,
                                                       int /*yield*/, bool as_picture) {
    return adjust_by_mask(ClientForm{as_picture}, cp, mask,
                          AverageBlend{{center, red_weight, green_weight, blue_weight}});
}
