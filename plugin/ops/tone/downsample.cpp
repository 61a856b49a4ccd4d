#include "downsample.h"

#include <cstddef>
#include <cstdint>

#include "error_state.h"
#include "forms.h"
#include "pixel_maps.h"

namespace tarvo::plugin {
namespace {

// Rounds channels to multiples of the step, halves upward. What would become 256 becomes 255, so that there is one
// level more than the bits can tell apart.
struct Round {
    std::uint8_t half;
    std::uint8_t multiples;  // the bits of a channel that multiples of the step have
    std::uint8_t last;       // the last level that is not rounded to 256

    explicit Round(int step)
        : half(static_cast<std::uint8_t>(step / 2)),
          multiples(static_cast<std::uint8_t>(256 - step)),
          last(static_cast<std::uint8_t>(255 - half)) {}

    TARVO_INLINED void operator()(PixelColor* colors) const {
        const Round by = *this;
        auto* const channels = reinterpret_cast<std::uint8_t*>(colors);
        for (std::size_t i = 0; i < kBlockPixels * sizeof(PixelColor); ++i) {
            const auto rounded = static_cast<std::uint8_t>((channels[i] + by.half) & by.multiples);
            channels[i] = channels[i] > by.last ? 255 : rounded;
        }
        for (std::size_t x = 0; x < kBlockPixels; ++x) colors[x] &= 0xFFFFFF;
    }
};

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void PrivDownsample(const TRV_Picture& source, TRV_Picture& result, int bits_per_channel) {
    map_pictures(source, result, kNoYielding, "TRV_Downsample", Round(1 << (8 - bits_per_channel)));
}

REALpictureStruct* TRV_Downsample(REALpictureStruct* p, int bits_per_channel) {
    clear_error();
    if (!p) return fail(ErrorCode::source_nil);
    if (bits_per_channel < 1 || bits_per_channel > 8) return fail(ErrorCode::bits_per_channel);
    TRV_Picture source(p, kAsImage);
    if (!source.Lock()) return fail(ErrorCode::source_lock);
    return PictureForm{}.produce(source.width(), source.height(), result_depth(source), ResultMask::none,
                                 [&](TRV_Picture& result) { PrivDownsample(source, result, bits_per_channel); });
}
