#include "mask_mix.h"

#include "row_clones.h"

namespace {

// Red and blue share a word: what is mixed of them has 16 bits each.
constexpr PixelColor kRedBlue = 0xFF00FF;

// from * (full - weight) + to * weight.
[[gnu::always_inline]] inline std::uint32_t mixed(std::uint32_t from, std::uint32_t to, std::uint32_t weight,
                                                  std::uint32_t full) {
    return from * full + (to - from) * weight;
}

TARVO_ROW_CLONES void mix_in_256ths_row(PixelColor* colors, const PixelColor* changed, const PixelColor* masks,
                                        std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) {
        const std::uint32_t level = masks[x] & 255;
        const std::uint32_t weight = level + (level > 127);
        const std::uint32_t red_blue = mixed(colors[x] & kRedBlue, changed[x] & kRedBlue, weight, 256);
        const std::uint32_t green = mixed(green_of(colors[x]), green_of(changed[x]), weight, 256);
        colors[x] = weight ? (red_blue >> 8 & kRedBlue) | (green & 0xFF00) : colors[x];
    }
}

// divided_by_255 for two at once.
[[gnu::always_inline]] inline std::uint32_t both_divided_by_255(std::uint32_t red_blue) {
    return (red_blue + 0x10001 + (red_blue >> 8 & kRedBlue)) >> 8 & kRedBlue;
}

TARVO_ROW_CLONES void mix_in_255ths_row(PixelColor* colors, const PixelColor* changed, const PixelColor* masks,
                                        std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) {
        const std::uint32_t level = masks[x] & 255;
        const std::uint32_t red_blue = mixed(colors[x] & kRedBlue, changed[x] & kRedBlue, level, 255);
        const std::uint32_t green = mixed(green_of(colors[x]), green_of(changed[x]), level, 255);
        colors[x] = both_divided_by_255(red_blue) | divided_by_255(green) << 8;
    }
}

}  // namespace

// Clones are called through functions without them: not every compiler lets another file call a clone.
void mix_in_256ths(PixelColor* colors, const PixelColor* changed, const PixelColor* masks, std::size_t count) {
    mix_in_256ths_row(colors, changed, masks, count);
}

void mix_in_255ths(PixelColor* colors, const PixelColor* changed, const PixelColor* masks, std::size_t count) {
    mix_in_255ths_row(colors, changed, masks, count);
}
