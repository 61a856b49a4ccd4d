#include "threshold.h"

#include <cstddef>

#include "adjustment.h"
#include "mask_mix.h"
#include "pixel_maps.h"

namespace {

constexpr PixelColor kChannels = 0xFFFFFF;
constexpr PixelColor kHighBits = 0x808080;

// The high bit of each channel of `a` that is at or above that of `b`. The low seven bits are compared by a subtraction
// that cannot borrow from the next channel; they decide where the high bits are equal.
[[gnu::always_inline]] inline PixelColor at_or_above(PixelColor a, PixelColor b) {
    const PixelColor low_bits = (a | kHighBits) - (b & ~kHighBits & kChannels);
    return ((a & ~b) | (~(a ^ b) & low_bits)) & kHighBits;
}

enum class Matches { if_all_pass, if_any_passes };

// Kept pixels stay whole; replaced ones are the target, without a top byte.
template <Matches matches>
class Replace {
public:
    Replace(bool darker, int threshold, int target)
        : flip_(darker ? kChannels : 0),
          threshold_((static_cast<PixelColor>(threshold) & kChannels) ^ flip_),
          target_(static_cast<PixelColor>(target) & kChannels) {}

    TARVO_INLINED PixelColor operator()(PixelColor color) const {
        const PixelColor passing = at_or_above(color ^ flip_, threshold_);
        const bool match = matches == Matches::if_all_pass ? passing == kHighBits : passing != 0;
        return match ? target_ : color;
    }

private:
    PixelColor flip_;  // of what is compared: it turns at or below into at or above
    PixelColor threshold_, target_;
};

// `paint(kernel)` with the one that the arguments ask for.
template <class Paint>
void with_replacement(bool darker, bool and_threshold, int threshold, int target, Paint paint) {
    if (and_threshold)
        paint(Replace<Matches::if_all_pass>(darker, threshold, target));
    else
        paint(Replace<Matches::if_any_passes>(darker, threshold, target));
}

}  // namespace

void PrivThreshold(const TRV_Picture& source, TRV_Picture& result, const Region& region, bool darker,
                   bool and_threshold, int threshold, int target) {
    with_replacement(darker, and_threshold, threshold, target, [&](const auto& replace) {
        map_region(source, result, region, kNoYielding, "TRV_Threshold", replace);
    });
}

void PrivThresholdWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, bool darker,
                           bool and_threshold, int threshold, int target) {
    with_replacement(darker, and_threshold, threshold, target, [&](const auto& replace) {
        map_pictures(source, result, kNoYielding, "TRV_ThresholdWithMask", ByMask{replace, MixIn255ths{}}, mask);
    });
}

REALpictureStruct* TRV_Threshold(REALpictureStruct* p, REALobjectStruct* rect, bool darker, bool and_threshold,
                                 int threshold, int target) {
    ClearError();
    if (!p) return Fail(ErrorCode::source_nil);
    return adjust_region(PictureForm{}, p, rect, SourceMask::left_behind, "TRV_Threshold",
                         [&](const TRV_Picture& source, TRV_Picture& result, const Region& region) {
                             PrivThreshold(source, result, region, darker, and_threshold, threshold, target);
                         });
}

REALpictureStruct* TRV_ThresholdWithMask(REALpictureStruct* p, REALpictureStruct* mask, bool darker, bool and_threshold,
                                         int threshold, int target) {
    ClearError();
    if (!p) return Fail(ErrorCode::source_nil);
    if (!mask) return Fail(ErrorCode::mask_nil);
    return adjust_with_mask(
        PictureForm{}, p, mask, [&](const TRV_Picture& source, const TRV_Picture& weights, TRV_Picture& result) {
            PrivThresholdWithMask(source, weights, result, darker, and_threshold, threshold, target);
        });
}
