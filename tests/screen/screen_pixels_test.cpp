#include "screen_pixels.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace tarvo::host {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr ScreenPixelLayout kPlain{32, false, 0xFF0000, 0xFF00, 0xFF};

Bytes converted(const ScreenPixelLayout& layout, const Bytes& from) {
    const auto pixels = ScreenPixels::of(layout);
    if (!pixels) return {};
    const std::size_t count = from.size() / (static_cast<std::size_t>(layout.bits_per_pixel) / 8);
    Bytes to(count * 4, 0xEE);
    pixels->convert_row(from.data(), to.data(), count);
    return to;
}

TEST(ScreenPixels, OfBothByteOrdersAreRead) {
    ScreenPixelLayout layout = kPlain;
    EXPECT_EQ(converted(layout, {0x33, 0x22, 0x11, 0xFF, 0x66, 0x55, 0x44, 0x00}),
              (Bytes{0, 0x11, 0x22, 0x33, 0, 0x44, 0x55, 0x66}));
    layout.big_endian = true;
    EXPECT_EQ(converted(layout, {0xFF, 0x11, 0x22, 0x33, 0x00, 0x44, 0x55, 0x66}),
              (Bytes{0, 0x11, 0x22, 0x33, 0, 0x44, 0x55, 0x66}));
}

TEST(ScreenPixels, OfThreeBytesAreRead) {
    ScreenPixelLayout layout{24, false, 0xFF0000, 0xFF00, 0xFF};
    EXPECT_EQ(converted(layout, {0x33, 0x22, 0x11, 0x66, 0x55, 0x44}),
              (Bytes{0, 0x11, 0x22, 0x33, 0, 0x44, 0x55, 0x66}));
    layout.big_endian = true;
    EXPECT_EQ(converted(layout, {0x11, 0x22, 0x33, 0x44, 0x55, 0x66}),
              (Bytes{0, 0x11, 0x22, 0x33, 0, 0x44, 0x55, 0x66}));
}

TEST(ScreenPixels, MayHoldTheirColoursInAnyOrder) {
    EXPECT_EQ(converted({32, false, 0xFF, 0xFF00, 0xFF0000}, {0x11, 0x22, 0x33, 0}), (Bytes{0, 0x11, 0x22, 0x33}));
    EXPECT_EQ(converted({32, true, 0xFF000000, 0xFF0000, 0xFF00}, {0x11, 0x22, 0x33, 0}), (Bytes{0, 0x11, 0x22, 0x33}));
}

TEST(ScreenPixels, ArePlainOnlyIfEveryColourIs) {
    EXPECT_EQ(converted({32, false, 0xFF0000, 0xFF, 0xFF00}, {0x33, 0x22, 0x11, 0}), (Bytes{0, 0x11, 0x33, 0x22}));
    EXPECT_EQ(converted({32, false, 0xFF0000, 0xFF00, 0x7F}, {0x7F, 0x22, 0x11, 0}), (Bytes{0, 0x11, 0x22, 255}));
    EXPECT_EQ(converted({32, false, 0xFF0000, 0x7F00, 0xFF}, {0x33, 0x7F, 0x11, 0}), (Bytes{0, 0x11, 255, 0x33}));
}

TEST(ScreenPixels, OfFewerBitsAreScaled) {
    const ScreenPixelLayout layout{16, false, 0xF800, 0x07E0, 0x001F};
    // All, none, and 1 of 31, 63 and 31.
    EXPECT_EQ(converted(layout, {0xFF, 0xFF, 0, 0, 0x21, 0x08}), (Bytes{0, 255, 255, 255, 0, 0, 0, 0, 0, 8, 4, 8}));
    ScreenPixelLayout swapped = layout;
    swapped.big_endian = true;
    EXPECT_EQ(converted(swapped, {0x08, 0x21}), (Bytes{0, 8, 4, 8}));
}

TEST(ScreenPixels, OfMoreBitsAreRounded) {
    const ScreenPixelLayout layout{32, true, 0x3FF00000, 0xFFC00, 0x3FF};
    const auto bytes_of = [](std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
        const std::uint32_t word = 3u << 30 | red << 20 | green << 10 | blue;
        return Bytes{static_cast<std::uint8_t>(word >> 24), static_cast<std::uint8_t>(word >> 16),
                     static_cast<std::uint8_t>(word >> 8), static_cast<std::uint8_t>(word)};
    };
    EXPECT_EQ(converted(layout, bytes_of(1023, 0, 512)), (Bytes{0, 255, 0, 128}));
    EXPECT_EQ(converted(layout, bytes_of(2, 3, 1021)), (Bytes{0, 0, 1, 255}));  // 0.499, 0.748, 254.501
}

TEST(ScreenPixels, OfTheWidestChannelDoNotOverflow) {
    EXPECT_EQ(converted({32, true, 0xFFFFFFFF, 0xFFFFFFFE, 0x1}, {0xFF, 0xFF, 0xFF, 0xFF}), (Bytes{0, 255, 255, 255}));
}

TEST(ScreenPixels, OfOtherLayoutsAreNotUnderstood) {
    ASSERT_TRUE(ScreenPixels::of(kPlain));
    EXPECT_FALSE(ScreenPixels::of({8, false, 0xE0, 0x1C, 0x03}));
    EXPECT_FALSE(ScreenPixels::of({1, false, 1, 1, 1}));
    EXPECT_FALSE(ScreenPixels::of({32, false, 0, 0xFF00, 0xFF}));
    EXPECT_FALSE(ScreenPixels::of({32, false, 0xFF0000, 0xF0F0, 0xFF}));
    EXPECT_FALSE(ScreenPixels::of({24, false, 0xFF000000, 0xFF00, 0xFF}));
    EXPECT_FALSE(ScreenPixels::of({16, false, 0x1F0000, 0x07E0, 0x001F}));
}

}  // namespace
}  // namespace tarvo::host
