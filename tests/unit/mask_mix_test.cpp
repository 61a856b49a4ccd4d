// The ways in which a mask weighs, on every value there is.

#include "mask_mix.h"

#include <gtest/gtest.h>

#include <array>

using namespace tarvo::plugin;

namespace {

// All levels of the mask, for one source and one changed channel.
template <class Mix>
std::array<PixelColor, 256> at_all_levels(Mix mix, std::uint32_t from, std::uint32_t to) {
    std::array<PixelColor, 256> colors, changed, masks;
    colors.fill(0xAB000000 | pack_rgb(from, to, from));
    changed.fill(pack_rgb(to, from, to));
    for (std::uint32_t level = 0; level < 256; ++level) masks[level] = 0x00ABCD00 | level;
    for (std::size_t level = 0; level < 256; ++level) colors[level] = mix(colors[level], changed[level], masks[level]);
    return colors;
}

TEST(MaskMix, DivisionBy255) {
    for (std::uint32_t n = 0; n < 65535; ++n) ASSERT_EQ(divided_by_255(n), n / 255) << n;
}

TEST(MaskMix, In255ths) {
    for (std::uint32_t from = 0; from < 256; ++from) {
        for (std::uint32_t to = 0; to < 256; ++to) {
            const auto colors = at_all_levels(MixIn255ths{}, from, to);
            for (std::uint32_t m = 0; m < 256; ++m) {
                const std::uint32_t there = (from * (255 - m) + to * m) / 255, back = (to * (255 - m) + from * m) / 255;
                ASSERT_EQ(colors[m], pack_rgb(there, back, there)) << from << " to " << to << " by " << m;
            }
        }
    }
}

TEST(MaskMix, In256ths) {
    for (std::uint32_t from = 0; from < 256; ++from) {
        for (std::uint32_t to = 0; to < 256; ++to) {
            const auto colors = at_all_levels(MixIn256ths{}, from, to);
            ASSERT_EQ(colors[0], 0xAB000000 | pack_rgb(from, to, from));
            for (std::uint32_t m = 1; m < 256; ++m) {
                const std::uint32_t w = m > 127 ? m + 1 : m;
                const std::uint32_t there = (from * (256 - w) + to * w) >> 8, back = (to * (256 - w) + from * w) >> 8;
                ASSERT_EQ(colors[m], pack_rgb(there, back, there)) << from << " to " << to << " by " << m;
            }
        }
    }
}

TEST(MaskMix, In255thsAndClamped) {
    for (std::int32_t x = 0; x < 256; ++x) {
        for (const std::int32_t changed : {-2097152, -70000, -65536, -1000, -256, -255, -1, 0, 1, 128, 254, 255, 256,
                                           511, 1000, 65535, 70000, 2097151}) {
            for (std::int32_t m = 0; m < 256; ++m) {
                const std::int32_t exact = (x * (255 - m) + changed * m) / 255;
                ASSERT_EQ(
                    mixed_in_255ths_and_clamped(static_cast<std::uint32_t>(x), changed, static_cast<std::uint32_t>(m)),
                    static_cast<std::uint32_t>(exact < 0     ? 0
                                               : exact > 255 ? 255
                                                             : exact))
                    << x << " to " << changed << " by " << m;
            }
        }
    }
}

}  // namespace
