#include "pixels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <vector>

namespace tarvo::host {
namespace {

constexpr RGBColor kWhite{0xFFFF, 0xFFFF, 0xFFFF};
constexpr RGBColor kRed{0xFFFF, 0, 0};
constexpr RGBColor kBlack{0, 0, 0};

std::uint32_t largest(int depth) { return static_cast<std::uint32_t>((std::uint64_t{1} << depth) - 1); }

TEST(Pixels, AreStoredBigEndianFromTheLeft) {
    std::array<std::uint8_t, 4> row{};
    store_pixel(row.data(), 0, 32, 0x01020304);
    EXPECT_EQ(row, (std::array<std::uint8_t, 4>{1, 2, 3, 4}));
    row = {};
    store_pixel(row.data(), 1, 16, 0x7ABC);
    EXPECT_EQ(row, (std::array<std::uint8_t, 4>{0, 0, 0x7A, 0xBC}));
    row = {};
    store_pixel(row.data(), 0, 1, 1);
    store_pixel(row.data(), 3, 4, 0x9);
    EXPECT_EQ(row, (std::array<std::uint8_t, 4>{0x80, 0x09, 0, 0}));
}

TEST(Pixels, OfEveryDepthAreReadBackAndDisturbNoOther) {
    std::mt19937 random(1);
    constexpr int kCount = 19;
    for (int depth = 1; depth <= 32; ++depth) {
        std::vector<std::uint8_t> row(static_cast<std::size_t>((kCount * depth + 7) / 8), 0xFF);
        std::vector<std::uint32_t> values(kCount, largest(depth));
        for (int i = 0; i < 200; ++i) {
            const auto x = static_cast<int>(random() % kCount);
            const auto value = static_cast<std::uint32_t>(random()) & largest(depth);
            values[static_cast<std::size_t>(x)] = value;
            store_pixel(row.data(), x, depth, value);
            for (int at = 0; at < kCount; ++at) {
                ASSERT_EQ(load_pixel(row.data(), at, depth), values[static_cast<std::size_t>(at)]) << depth << " bits";
            }
        }
    }
}

TEST(Pixels, ValuesAreCutToTheirDepth) {
    std::array<std::uint8_t, 1> row{};
    store_pixel(row.data(), 1, 2, 0xFF);
    EXPECT_EQ(row[0], 0x30);
}

TEST(Pixels, FillWithOneValue) {
    for (int depth = 1; depth <= 32; ++depth) {
        for (const std::uint32_t value : {0u, 1u, largest(depth), largest(depth) / 3}) {
            for (const std::size_t pixels : {8u, 40u, 3u, 1u}) {
                std::vector<std::uint8_t> bytes((pixels * static_cast<std::size_t>(depth) + 7) / 8, 0xA5);
                fill_pixels(bytes, depth, value);
                for (std::size_t x = 0; x < pixels; ++x) {
                    ASSERT_EQ(load_pixel(bytes.data(), static_cast<int>(x), depth), value) << depth << " bits";
                }
            }
        }
    }
    fill_pixels({}, 32, 1);
}

TEST(Pixels, FillLargeMemory) {
    constexpr std::size_t kPixels = (std::size_t{4} << 20) / 4 + 5;
    for (const std::size_t offset : {0u, 1u, 4u, 16u}) {
        std::vector<std::uint8_t> bytes(offset + 4 * kPixels + 1, 0xA5);
        fill_pixels(std::span(bytes).subspan(offset, 4 * kPixels), 32, 0x00123456);
        for (std::size_t x = 0; x < kPixels; ++x)
            ASSERT_EQ(load_pixel(bytes.data() + offset, static_cast<int>(x), 32), 0x00123456u) << x;
        EXPECT_EQ(bytes.back(), 0xA5);
    }
}

TEST(Pixels, HaveColors) {
    EXPECT_EQ(color_of(0, 1, {}), 0xFFFFFFu);
    EXPECT_EQ(color_of(1, 1, {}), 0x000000u);
    EXPECT_EQ(color_of(5, 4, {}), 0x555555u) << "a grey level without colours";
    EXPECT_EQ(color_of(0x80, 8, {}), 0x808080u);
    EXPECT_EQ(color_of(1, 8, std::array{kWhite, kRed}), 0xFF0000u);
    EXPECT_EQ(color_of(0x7FFF, 16, {}), 0xFFFFFFu);
    EXPECT_EQ(color_of(0x4000, 16, {}), 0x840000u);
    EXPECT_EQ(color_of(0x123456, 24, {}), 0x123456u);
    EXPECT_EQ(color_of(0xAB123456, 32, {}), 0x123456u);
    EXPECT_EQ(color_of(0x123, 12, {}), 0u) << "a depth that means nothing";
}

TEST(Pixels, AreMadeOfColors) {
    EXPECT_EQ(value_of(0x000000, 1, {}), 1u);
    EXPECT_EQ(value_of(0x7F7F7F, 1, {}), 1u);
    EXPECT_EQ(value_of(0x808080, 1, {}), 0u);
    EXPECT_EQ(value_of(0xFFFFFF, 4, {}), 15u);
    EXPECT_EQ(value_of(0xE01010, 8, std::array{kWhite, kBlack, kRed}), 2u) << "the nearest colour";
    EXPECT_EQ(value_of(0xFFFFFF, 16, {}), 0x7FFFu);
    EXPECT_EQ(value_of(0xF8F8F8, 16, {}), 0x7FFFu);
    EXPECT_EQ(value_of(0x123456, 24, {}), 0x123456u);
    EXPECT_EQ(value_of(0x123456, 32, {}), 0x123456u);
}

TEST(Pixels, ColorsOfEveryUsefulDepthComeBack) {
    for (const int depth : {2, 4, 8, 16, 24}) {
        const std::uint32_t last = depth == 16 ? 0x7FFF : largest(depth);
        for (std::uint32_t value = 0; value <= last; value += depth == 24 ? 4097 : 1) {
            ASSERT_EQ(value_of(color_of(value, depth, {}), depth, {}), value) << depth << " bits";
        }
    }
}

}  // namespace
}  // namespace tarvo::host
