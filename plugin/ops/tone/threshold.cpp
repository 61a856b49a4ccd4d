#include "threshold.h"

#include "adjustment.h"

namespace tarvo::plugin {
namespace {

constexpr PixelColor kChannels = 0xFFFFFF;
constexpr PixelColor kHighBits = 0x808080;

// Returns the high bit of each channel of `a` that is at or above the channel of `b`. The low seven bits are compared
// by a subtraction that cannot borrow from the next channel; they decide where the high bits are equal.
[[gnu::always_inline]] inline PixelColor at_or_above(PixelColor a, PixelColor b) {
    const PixelColor low_bits = (a | kHighBits) - (b & ~kHighBits & kChannels);
    return ((a & ~b) | (~(a ^ b) & low_bits)) & kHighBits;
}

enum class Matches { if_all_pass, if_any_passes };

// Pixels that do not match stay whole. The others get the target's colour, without a top byte.
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
    PixelColor flip_;  // inverts both colours for `darker`, so that at or below becomes at or above
    PixelColor threshold_, target_;
};

struct Threshold {
    static constexpr AdjustmentLabels kLabels = {"TRV_Threshold", "TRV_Threshold", "TRV_ThresholdWithMask"};
    static constexpr SourceMask kSourceMask = SourceMask::left_behind;
    using Mix = MixIn255ths;
    static constexpr int yield = kNoYielding;

    bool darker, and_threshold;
    int threshold, target;

    static bool arguments_pass() { return true; }  // any colours do

    template <class Use>
    void with_kernel(Use use) const {
        if (and_threshold)
            use(Replace<Matches::if_all_pass>(darker, threshold, target));
        else
            use(Replace<Matches::if_any_passes>(darker, threshold, target));
    }
};

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void PrivThreshold(const TRV_Picture& source, TRV_Picture& result, const Region& region, bool darker,
                   bool and_threshold, int threshold, int target) {
    map_adjusted(source, result, region, Threshold{darker, and_threshold, threshold, target});
}

void PrivThresholdWithMask(const TRV_Picture& source, const TRV_Picture& mask, TRV_Picture& result, bool darker,
                           bool and_threshold, int threshold, int target) {
    map_adjusted_by_mask(source, mask, result, Threshold{darker, and_threshold, threshold, target});
}

REALpictureStruct* TRV_Threshold(REALpictureStruct* p, REALobjectStruct* rect, bool darker, bool and_threshold,
                                 int threshold, int target) {
    return adjust(PictureForm{}, p, rect, Threshold{darker, and_threshold, threshold, target});
}

REALpictureStruct* TRV_ThresholdWithMask(REALpictureStruct* p, REALpictureStruct* mask, bool darker, bool and_threshold,
                                         int threshold, int target) {
    return adjust_by_mask(PictureForm{}, p, mask, Threshold{darker, and_threshold, threshold, target});
}
