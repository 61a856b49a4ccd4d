#include "threshold.h"

#include <cstddef>

#include "adjustment.h"
#include "mask_mix.h"
#include "row_clones.h"
#include "rows.h"

namespace {

constexpr PixelColor kChannels = 0xFFFFFF;
constexpr PixelColor kHighBits = 0x808080;

// The high bit of each channel of `a` that is at or above that of `b`. The low seven bits are compared by a subtraction
// that cannot borrow from the next channel; they decide where the high bits are equal.
[[gnu::always_inline]] inline PixelColor at_or_above(PixelColor a, PixelColor b) {
    const PixelColor low_bits = (a | kHighBits) - (b & ~kHighBits & kChannels);
    return ((a & ~b) | (~(a ^ b) & low_bits)) & kHighBits;
}

// Colours are compared after `flip`, which turns at or below into at or above.
TARVO_ROW_CLONES void replace_if_all_pass(PixelColor* colors, std::size_t count, PixelColor flip, PixelColor threshold,
                                          PixelColor target) {
    for (std::size_t x = 0; x < count; ++x)
        colors[x] = at_or_above(colors[x] ^ flip, threshold) == kHighBits ? target : colors[x];
}

TARVO_ROW_CLONES void replace_if_any_passes(PixelColor* colors, std::size_t count, PixelColor flip,
                                            PixelColor threshold, PixelColor target) {
    for (std::size_t x = 0; x < count; ++x)
        colors[x] = at_or_above(colors[x] ^ flip, threshold) != 0 ? target : colors[x];
}

// The threshold on spans of colours. Kept pixels stay whole; replaced ones are the target, without a top byte.
class ThresholdSpan {
public:
    ThresholdSpan(bool darker, bool and_threshold, int threshold, int target)
        : replace_(and_threshold ? replace_if_all_pass : replace_if_any_passes),
          flip_(darker ? kChannels : 0),
          threshold_((static_cast<PixelColor>(threshold) & kChannels) ^ flip_),
          target_(static_cast<PixelColor>(target) & kChannels) {}

    void operator()(PixelColor* colors, std::size_t count) const {
        replace_(colors, count, flip_, threshold_, target_);
    }

private:
    decltype(&replace_if_all_pass) replace_;
    PixelColor flip_, threshold_, target_;
};

}  // namespace

void PrivThreshold(const TRV_Picture& source, TRV_Picture& result, const Region& region, bool darker,
                   bool and_threshold, int threshold, int target) {
    transform_region(source, result, region, 0, "TRV_Threshold",
                     ThresholdSpan(darker, and_threshold, threshold, target));
}

void PrivThresholdWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, bool darker,
                           bool and_threshold, int threshold, int target) {
    transform_by_mask(source, mask, result, 0, "TRV_ThresholdWithMask",
                      ThresholdSpan(darker, and_threshold, threshold, target), mix_in_255ths);
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
    return adjust_with_mask(PictureForm{}, p, mask,
                            [&](const TRV_Picture& source, const TRV_Picture& weights, TRV_Picture& result) {
                                PrivThresholdWithMask(source, weights, result, darker, and_threshold, threshold,
                                                      target);
                            });
}
