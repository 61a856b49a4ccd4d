#include "gamma.h"

#include <cstdint>

#include "centered_adjustment.h"
#include "numbers.h"

namespace tarvo::plugin {
namespace {

constexpr std::int32_t kOne = 256;
constexpr std::int32_t kWhite = 255 * kOne;

// A curve of two segments, from black to the bend and from the bend to white: y = (offset + slope * x) / 256, clamped
// to 0..255.
struct BentCurve {
    std::int32_t bend;  // the last value of the lower segment, whose offset is 0
    std::int32_t lower_slope;
    std::int32_t upper_offset = 0, upper_slope = kOne;

    // The upper segment ends at white, but for what the two truncated divisions lose: white can come out a step darker.
    // Large factors wrap. With the bend at white there is no upper segment, and nothing is divided by.
    BentCurve(std::int32_t center, std::int32_t factor) : bend(center), lower_slope(factor) {
        if (factor == kOne) return;
        const std::int32_t run = kWhite - kOne * center;
        const std::int32_t lift = wrapping_multiply(kWhite * center, wrapping_subtract(factor, kOne));
        const std::int32_t rise = wrapping_subtract(kWhite, wrapping_multiply(center, factor));
        upper_offset = truncating_divide(lift, run);
        upper_slope = truncating_divide(wrapping_multiply(rise, kOne), run);
    }

    // A shift and a division differ only below 0, where both are clamped to 0.
    TARVO_INLINED std::uint32_t operator()(std::uint32_t value) const {
        const auto x = static_cast<std::int32_t>(value);
        const bool upper = x > bend;
        const std::int32_t offset = upper ? upper_offset : 0;
        const std::int32_t slope = upper ? upper_slope : lower_slope;
        const std::int32_t sum = wrapping_add(offset, wrapping_multiply(slope, x));
        return static_cast<std::uint32_t>(clamp_to_byte(floor_shift(sum, 8)));
    }
};

struct Gamma : CenteredAdjustment {
    static constexpr AdjustmentLabels kLabels = {"TRV_AdjustGamma", "PrivAdjustGamma", "PrivAdjustGammaWithMask"};
    static constexpr SourceMask kSourceMask = SourceMask::left_behind;
    using Mix = MixIn255ths;
    static constexpr int yield = kNoYielding;

    template <class Use>
    void with_kernel(Use use) const {
        use(rules<BentCurve>());
    }
};

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void PrivAdjustGamma(const TRV_Picture& source, TRV_Picture& result, const Region& region, int center,
                     double red_factor, double green_factor, double blue_factor, int /*yield*/) {
    map_adjusted(source, result, region, Gamma{{center, red_factor, green_factor, blue_factor}});
}

void PrivAdjustGammaWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, int center,
                             double red_factor, double green_factor, double blue_factor, int /*yield*/) {
    map_adjusted_by_mask(source, mask, result, Gamma{{center, red_factor, green_factor, blue_factor}});
}

REALpictureStruct* TRV_AdjustGamma(REALpictureStruct* p, REALobjectStruct* rect, int center, double red_factor,
                                   double green_factor, double blue_factor, int /*yield*/) {
    return adjust(PictureForm{}, p, rect, Gamma{{center, red_factor, green_factor, blue_factor}});
}

REALobjectStruct* TRV_ClientPicture_AdjustGamma(REALobjectStruct* cp, REALobjectStruct* rect, int center,
                                                double red_factor, double green_factor, double blue_factor,
                                                int /*yield*/, bool as_picture) {
    return adjust(ClientForm{as_picture}, cp, rect, Gamma{{center, red_factor, green_factor, blue_factor}});
}

REALpictureStruct* TRV_AdjustGammaWithMask(REALpictureStruct* p, REALpictureStruct* mask, int center, double red_factor,
                                           double green_factor, double blue_factor, int /*yield*/) {
    return adjust_by_mask(PictureForm{}, p, mask, Gamma{{center, red_factor, green_factor, blue_factor}});
}

REALobjectStruct* TRV_ClientPicture_AdjustGammaWithMask(REALobjectStruct* cp, REALpictureStruct* mask, int center,
                                                        double red_factor, double green_factor, double blue_factor,
                                                        int /*yield*/, bool as_picture) {
    return adjust_by_mask(ClientForm{as_picture}, cp, mask, Gamma{{center, red_factor, green_factor, blue_factor}});
}
