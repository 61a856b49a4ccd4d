// Rows of every format against their pixels, and both ways of writing them.

#include "row_codec.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "pixel_blocks.h"

using namespace tarvo::plugin;

namespace {

constexpr PixelFormat kWholeByteFormats[] = {PixelFormat::xrgb32, PixelFormat::rgb24, PixelFormat::rgb555,
                                             PixelFormat::grey8, PixelFormat::indexed8};

class RowCodec : public ::testing::TestWithParam<PixelFormat> {
protected:
    RowCodec() {
        for (PixelColor& color : colors) color = static_cast<PixelColor>(random()) & 0xFFFFFF;
    }
    std::vector<std::uint8_t> noise(std::size_t count) {
        std::vector<std::uint8_t> bytes(count);
        for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
        return bytes;
    }

    std::mt19937 random{1};
    IndexColors colors{};
};

INSTANTIATE_TEST_SUITE_P(Formats, RowCodec, ::testing::ValuesIn(kWholeByteFormats));

TEST_P(RowCodec, RowsDecodeAsTheirPixels) {
    const int bytes = bytes_of(GetParam());
    for (std::size_t count = 0; count <= 70; ++count) {
        for (std::size_t start = 0; start < 4; ++start) {  // rows need not be aligned
            const auto row = noise(start + count * bytes);
            std::vector<PixelColor> span(count);
            decode_row(GetParam(), row.data() + start, span.data(), count, colors);
            for (std::size_t x = 0; x < count; ++x)
                ASSERT_EQ(span[x], load_pixel(GetParam(), row.data() + start + x * bytes, 0, colors));
        }
    }
}

TEST_P(RowCodec, RowsEncodeAsTheirPixelsAndNoFurther) {
    const int bytes = bytes_of(GetParam());
    for (const StoreMode mode : {StoreMode::cached, StoreMode::streamed}) {
        for (std::size_t count = 0; count <= 70; ++count) {
            for (std::size_t start = 0; start < 36; ++start) {
                std::vector<PixelColor> span(count);
                for (PixelColor& color : span) color = static_cast<PixelColor>(random());
                auto expected = noise(start + count * bytes + 8);
                auto row = expected;
                encode_row(GetParam(), span.data(), row.data() + start, count, mode);
                for (std::size_t x = 0; x < count; ++x)
                    store_pixel(GetParam(), expected.data() + start + x * bytes, 0, span[x]);
                ASSERT_EQ(row, expected);
            }
        }
    }
    finish_streaming(StoreMode::streamed);
}

TEST(PixelFormats, KnownEncodings) {
    const IndexColors none{};
    const std::uint8_t word[] = {0xFF, 0x12, 0x34, 0x56};
    EXPECT_EQ(load_pixel(PixelFormat::xrgb32, word, 0, none), 0xFF123456u);
    EXPECT_EQ(load_pixel(PixelFormat::rgb24, word, 0, none), 0xFF1234u);
    EXPECT_EQ(load_pixel(PixelFormat::grey8, word + 1, 0, none), 0x121212u);
    EXPECT_EQ(load_pixel(PixelFormat::opaque, word, 0, none), 0u);

    std::uint8_t stored[4] = {0x7F, 0xFF};
    EXPECT_EQ(load_pixel(PixelFormat::rgb555, stored, 0, none), 0xF8F8F8u);
    stored[0] = 0xFF;  // the unused bit is not read
    EXPECT_EQ(load_pixel(PixelFormat::rgb555, stored, 0, none), 0xF8F8F8u);
    store_pixel(PixelFormat::rgb555, stored, 0, 0xFFFFFF);
    EXPECT_EQ(stored[0], 0x7F);  // and written as 0
    EXPECT_EQ(stored[1], 0xFF);
}

TEST(PixelFormats, SingleBits) {
    const IndexColors none{};
    std::uint8_t byte = 0b10000001;
    EXPECT_EQ(load_pixel(PixelFormat::mono1, &byte, 0, none), 0x000000u);
    EXPECT_EQ(load_pixel(PixelFormat::mono1, &byte, 1, none), 0xFFFFFFu);
    EXPECT_EQ(load_pixel(PixelFormat::mono1, &byte, 7, none), 0x000000u);
    for (const long bit : {8L, 31L, 32L, 63L, 64L, -1L}) {  // no such bit
        EXPECT_EQ(load_pixel(PixelFormat::mono1, &byte, bit, none), 0xFFFFFFu);
        store_pixel(PixelFormat::mono1, &byte, bit, 0);
        EXPECT_EQ(byte, 0b10000001);
    }
    store_pixel(PixelFormat::mono1, &byte, 7, 0x000001);  // only exactly 0 is black
    EXPECT_EQ(byte, 0b10000000);
    store_pixel(PixelFormat::mono1, &byte, 3, 0);
    EXPECT_EQ(byte, 0b10010000);
}

TEST(PixelFormats, ThoseWithoutWholeBytesReadAsBlackAndTakeNoRows) {
    const IndexColors none{};
    for (const PixelFormat format : {PixelFormat::opaque, PixelFormat::mono1}) {
        EXPECT_EQ(bytes_of(format), 0);
        std::uint8_t row[] = {0xFF, 0x00, 0xAA}, other[] = {0x00, 0xFF, 0x55};
        std::vector<PixelColor> span(3, 0x123456);
        encode_row(format, span.data(), row, 3);
        EXPECT_EQ(std::vector(row, row + 3), (std::vector<std::uint8_t>{0xFF, 0x00, 0xAA}));
        decode_row(format, row, span.data(), 3, none);
        EXPECT_EQ(span, std::vector<PixelColor>(3, 0));
        EXPECT_TRUE(rows_agree(format, row, other, 3, none, none));
    }
}

}  // namespace
