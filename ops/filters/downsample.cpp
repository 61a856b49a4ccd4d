#include "downsample.h"

#include <cstddef>

#include "error_state.h"
#include "forms.h"
#include "row_clones.h"
#include "rows.h"

namespace {

// Two channels in a word, of 16 bits each, become multiples of the step, halves rounded upward. What would be 256 is
// 255: one level more than the bits can tell apart.
[[gnu::always_inline]] inline std::uint32_t round_both(std::uint32_t channels, std::uint32_t half,
                                                       std::uint32_t multiples) {
    const std::uint32_t rounded = (channels + half) & multiples;
    return rounded - (rounded >> 8 & 0x10001);
}

TARVO_ROW_CLONES void round_row(PixelColor* colors, std::size_t count, std::uint32_t step) {
    constexpr std::uint32_t kBoth = 0x10001;
    const std::uint32_t half = step / 2 * kBoth;
    const std::uint32_t multiples = (0x200 - step) * kBoth;
    for (std::size_t x = 0; x < count; ++x) {
        const std::uint32_t red_blue = round_both(colors[x] & 0xFF00FF, half, multiples);
        const std::uint32_t green = round_both(green_of(colors[x]), half, multiples);
        colors[x] = red_blue | (green & 0xFF) << 8;
    }
}

}  // namespace

void PrivDownsample(const TRV_Picture& source, TRV_Picture& result, int bits_per_channel) {
    const std::uint32_t step = 1u << (8 - bits_per_channel);
    transform_region(source, result, whole_of(source), 0, "TRV_Downsample",
                     [step](PixelColor* colors, std::size_t count) { round_row(colors, count, step); });
}

REALpictureStruct* TRV_Downsample(REALpictureStruct* p, int bits_per_channel) {
    ClearError();
    if (!p) return Fail(ErrorCode::source_nil);
    if (bits_per_channel < 1 || bits_per_channel > 8) return Fail(ErrorCode::bits_per_channel);
    TRV_Picture source(p, false);
    if (!source.Lock()) return Fail(ErrorCode::source_lock);
    return PictureForm{}.produce(source.width(), source.height(), result_depth(source), false,
                                 [&](TRV_Picture& result) { PrivDownsample(source, result, bits_per_channel); });
}
