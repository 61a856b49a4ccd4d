// TRV_Picture: pixels and rows, read and written.

#include <algorithm>
#include <functional>
#include <vector>

#include "locked_picture.h"
#include "plain_image.h"

using namespace tarvo::plugin;

namespace tarvo::test {
namespace {

struct Bound {
    PictureOptions options;
    bool as_mask;
};

std::vector<Bound> every_binding() {
    std::vector<Bound> all;
    for (const int depth : {1, 2, 4, 8, 16, 24, 32, 5, 12})
        for (const int padding : {0, 3})
            for (const bool as_mask : {false, true})
                all.push_back({{.width = 45, .height = 3, .depth = depth, .row_padding = padding}, as_mask});
    for (const bool as_mask : {false, true}) {
        all.push_back({{.width = 45, .height = 3, .depth = 8, .without_color_table = true}, as_mask});
        all.push_back({{.width = 45, .height = 3, .backing = Backing::pixel_buffer}, as_mask});
    }
    all.push_back({{.width = 45, .height = 3, .depth = 8, .backing = Backing::bitmap_context}, true});
    return all;
}

class EveryBinding : public LockedPicture {
protected:
    // Calls `check(locked, stored)` for each kind of picture, as picture and as mask.
    void for_each(const std::function<void(TRV_Picture&, Picture&, const Bound&)>& check) {
        for (const Bound& bound : every_binding()) {
            SCOPED_TRACE(::testing::Message()
                         << bound.options.depth << " bits, kind " << static_cast<int>(bound.options.backing)
                         << ", padded by " << bound.options.row_padding << (bound.as_mask ? ", as mask" : ""));
            const ObjectRef stored = make(bound.options);
            const ObjectRef owner = host.new_picture({.width = 1, .height = 1});
            if (bound.as_mask) of(owner).set_mask(stored);
            TRV_Picture locked(handle(bound.as_mask ? owner : stored), bound.as_mask);
            ASSERT_TRUE(locked.Lock());
            check(locked, of(stored), bound);
        }
    }
    std::vector<std::uint8_t> bytes_of_rows(const Picture& picture) {
        std::vector<std::uint8_t> bytes;
        for (int y = 0; y < picture.height(); ++y)
            bytes.insert(bytes.end(), picture.row(y), picture.row(y) + picture.packed_row_bytes());
        return bytes;
    }
    std::vector<PixelColor> noise(std::size_t count) {
        std::vector<PixelColor> colors(count);
        for (PixelColor& color : colors) color = random() % 4 ? static_cast<PixelColor>(random()) : 0;
        return colors;
    }
};

TEST_F(EveryBinding, PixelsReadAsTheJudgeReadsThem) {
    for_each([&](TRV_Picture& locked, Picture& stored, const Bound& bound) {
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 45; ++x)
                ASSERT_EQ(locked.GetPixel(long{y}, long{x}, "test"), read_pixel(stored, x, y, bound.as_mask));
    });
}

TEST_F(EveryBinding, PixelsAreWrittenAsTheJudgeWritesThem) {
    for_each([&](TRV_Picture& locked, Picture& stored, const Bound& bound) {
        const auto colors = noise(45);
        const auto expected = Picture::make(bound.options);
        for (int y = 0; y < 3; ++y) std::copy_n(stored.row(y), stored.packed_row_bytes(), expected->row(y));
        for (int x = 0; x < 45; ++x) {
            locked.SetPixel(1L, long{x}, colors[static_cast<std::size_t>(x)], "test");
            write_pixel(*expected, x, 1, colors[static_cast<std::size_t>(x)], bound.as_mask);
        }
        EXPECT_EQ(bytes_of_rows(stored), bytes_of_rows(*expected));
    });
}

TEST_F(EveryBinding, RowsReadAsTheirPixels) {
    for_each([&](TRV_Picture& locked, Picture&, const Bound&) {
        for (const long column : {0L, 1L, 7L, 44L}) {
            std::vector<PixelColor> run(static_cast<std::size_t>(45 - column));
            locked.get_pixels(2, column, run, "test");
            for (std::size_t i = 0; i < run.size(); ++i)
                ASSERT_EQ(run[i], locked.GetPixel(2L, column + static_cast<long>(i), "test"));
        }
    });
}

TEST_F(EveryBinding, RowsAreWrittenAsTheirPixels) {
    for_each([&](TRV_Picture& locked, Picture& stored, const Bound&) {
        for (const long column : {0L, 1L, 7L, 44L}) {
            const auto run = noise(static_cast<std::size_t>(45 - column));
            const auto before = bytes_of_rows(stored);
            for (std::size_t i = 0; i < run.size(); ++i)
                locked.SetPixel(1L, column + static_cast<long>(i), run[i], "test");
            const auto expected = bytes_of_rows(stored);
            const std::size_t row = stored.packed_row_bytes();
            std::copy_n(before.begin() + static_cast<std::ptrdiff_t>(row), row, stored.row(1));
            locked.set_pixels(1, column, run, "test");
            ASSERT_EQ(bytes_of_rows(stored), expected);
        }
        locked.set_pixels(1, 0, {}, "test");
    });
}

// The address and the bit step from pixel to pixel by the bits of a pixel.
struct Walk {
    std::uint8_t* address;
    long bit = 0;
    void step(const TRV_Picture& picture) {
        address += picture.bytesPerPixel();
        bit += picture.bitsPerPixel();
        if (bit > 7) {
            bit = 0;
            ++address;
        }
    }
};

TEST_F(EveryBinding, BitAddressedRowsReadAsTheirPixels) {
    for_each([&](TRV_Picture& locked, Picture&, const Bound&) {
        std::vector<PixelColor> run(45);
        locked.get_pixel_bits(1, 0, run, "test");
        Walk walk{locked.row_start(1)};
        for (const PixelColor color : run) {
            ASSERT_EQ(color, locked.GetPixel(walk.address, walk.bit, locked.depth(), "test"));
            walk.step(locked);
        }
        std::vector<PixelColor> tail(45 - 13);
        locked.get_pixel_bits(1, 13, tail, "test");
        EXPECT_TRUE(std::equal(tail.begin(), tail.end(), run.begin() + 13));
    });
}

TEST_F(EveryBinding, BitAddressedRowsAreWrittenAsTheirPixels) {
    for_each([&](TRV_Picture& locked, Picture& stored, const Bound&) {
        const auto run = noise(45);
        const auto before = bytes_of_rows(stored);
        Walk walk{locked.row_start(1)};
        for (const PixelColor color : run) {
            locked.SetPixel(walk.address, walk.bit, color, locked.depth(), "test");
            walk.step(locked);
        }
        const auto expected = bytes_of_rows(stored);
        const std::size_t row = stored.packed_row_bytes();
        std::copy_n(before.begin() + static_cast<std::ptrdiff_t>(row), row, stored.row(1));
        locked.set_pixel_bits(1, 0, run, "test");
        EXPECT_EQ(bytes_of_rows(stored), expected);
    });
}

TEST_F(LockedPicture, OneBitPicturesReadAndWriteSingleBits) {
    const ObjectRef picture = make({.width = 19, .height = 2, .depth = 1});
    TRV_Picture locked(handle(picture), false);
    ASSERT_TRUE(locked.Lock());
    std::vector<PixelColor> run(19);
    locked.get_pixel_bits(0, 0, run, nullptr);
    for (int x = 0; x < 19; ++x)
        EXPECT_EQ(run[static_cast<std::size_t>(x)], bit_at(of(picture), x, 0) ? 0x000000u : 0xFFFFFFu);
    locked.set_pixel_bits(1, 0, run, nullptr);
    for (int x = 0; x < 19; ++x) EXPECT_EQ(bit_at(of(picture), x, 1), bit_at(of(picture), x, 0));
}

// The depth that is given counts, not the picture's own.
TEST_F(LockedPicture, BitAddressedPixelsAreReadAtTheDepthGiven) {
    const ObjectRef picture = make({.width = 2, .height = 1});
    for (int i = 0; i < 8; ++i) of(picture).row(0)[i] = static_cast<std::uint8_t>(0xB1 + 0x11 * i);
    TRV_Picture locked(handle(picture), false);
    ASSERT_TRUE(locked.Lock());
    const std::uint8_t* const at = of(picture).row(0);
    EXPECT_EQ(locked.GetPixel(at, 0, 32, nullptr), 0xB1C2D3E4u);
    EXPECT_EQ(locked.GetPixel(at, 0, 24, nullptr), 0xB1C2D3u);
    EXPECT_EQ(locked.GetPixel(at + 3, 0, 24, nullptr), 0xE4F506u);
    EXPECT_EQ(locked.GetPixel(at, 0, 16, nullptr), 0x607010u);  // of 0x31C2: 12, 14 and 2 fives
    EXPECT_EQ(locked.GetPixel(at, 0, 12, nullptr), 0u);
}

TEST_F(LockedPicture, BitAddressedPixelsAreWrittenAtTheDepthGiven) {
    const ObjectRef picture = make({.width = 1, .height = 1});
    TRV_Picture locked(handle(picture), false);
    ASSERT_TRUE(locked.Lock());
    std::uint8_t* const at = of(picture).row(0);
    const auto written = [&](long depth) {
        std::fill_n(at, 4, std::uint8_t{0x5A});
        locked.SetPixel(at, 0, 0x123456u, depth, nullptr);
        return std::vector<std::uint8_t>(at, at + 4);
    };
    using Bytes = std::vector<std::uint8_t>;
    EXPECT_EQ(written(32), (Bytes{0x00, 0x12, 0x34, 0x56}));
    EXPECT_EQ(written(24), (Bytes{0x12, 0x34, 0x56, 0x5A}));
    EXPECT_EQ(written(16), (Bytes{0x08, 0xCA, 0x5A, 0x5A}));
    EXPECT_EQ(written(8), (Bytes{0x5A, 0x5A, 0x5A, 0x5A}));
}

TEST_F(LockedPicture, EightBitPicturesTakeSingleBitsAtDepthOne) {
    const ObjectRef picture = make({.width = 3, .height = 1, .depth = 8});
    TRV_Picture locked(handle(picture), false);
    ASSERT_TRUE(locked.Lock());
    std::uint8_t* const at = of(picture).row(0) + 1;
    *at = 0xA6;
    for (long bit = 0; bit < 8; ++bit)
        EXPECT_EQ(locked.GetPixel(at, bit, 1, nullptr), 0xA6 >> (7 - bit) & 1 ? 0x000000u : 0xFFFFFFu) << bit;
    for (const long bit : {8L, 9L, 31L, 32L, 63L}) EXPECT_EQ(locked.GetPixel(at, bit, 1, nullptr), 0xFFFFFFu) << bit;
    locked.SetPixel(at, 1, 0x000000u, 1, nullptr);
    EXPECT_EQ(*at, 0xE6);
    locked.SetPixel(at, 0, 0x000001u, 1, nullptr);  // only exactly black sets the bit
    EXPECT_EQ(*at, 0x66);
    locked.SetPixel(at, 7, 0xFFFFFFu, 1, nullptr);
    EXPECT_EQ(*at, 0x66);
}

TEST_F(LockedPicture, PicturesTooLargeForTheCachesAreWrittenAlike) {
    const ObjectRef picture = host.new_picture({.width = 2111, .height = 2000, .row_padding = 4});
    TRV_Picture locked(handle(picture), false);
    ASSERT_TRUE(locked.Lock());
    std::vector<PixelColor> run(2100);
    for (PixelColor& color : run) color = static_cast<PixelColor>(random());
    for (const long column : {0L, 1L, 5L, 11L}) {
        locked.set_pixels(1999, column, run, nullptr);
        for (std::size_t i = 0; i < run.size(); ++i)
            ASSERT_EQ(locked.GetPixel(1999L, column + static_cast<long>(i), nullptr), run[i]);
    }
}

TEST_F(EveryBinding, RowsOfAnyTwoPicturesAreComparedByTheirColours) {
    const ObjectRef other = make({.width = 45, .height = 3});
    TRV_Picture words(handle(other), false);
    ASSERT_TRUE(words.Lock());
    for_each([&](TRV_Picture& locked, Picture&, const Bound&) {
        for (long x = 0; x < 45; ++x) words.SetPixel(1L, x, locked.GetPixel(1L, x, nullptr) ^ 0xFF000000, nullptr);
        EXPECT_TRUE(locked.same_colors(words, 1, 0, 45, nullptr));
        EXPECT_TRUE(words.same_colors(locked, 1, 7, 38, nullptr));
        words.SetPixel(1L, 7L, locked.GetPixel(1L, 7L, nullptr) ^ 0x000100, nullptr);
        EXPECT_FALSE(locked.same_colors(words, 1, 7, 38, nullptr));
        EXPECT_FALSE(words.same_colors(locked, 1, 0, 45, nullptr));
        EXPECT_TRUE(words.same_colors(locked, 1, 8, 37, nullptr));
        EXPECT_TRUE(locked.same_colors(locked, 1, 0, 45, nullptr));
    });
}

TEST_F(LockedPicture, AnAddressThatIsNullReadsZeroAndTakesNoWrites) {
    const ObjectRef picture = make({.width = 2, .height = 1});
    TRV_Picture locked(handle(picture), false);
    ASSERT_TRUE(locked.Lock());
    EXPECT_EQ(locked.GetPixel(nullptr, nullptr), 0u);
    EXPECT_EQ(locked.GetPixel(nullptr, 0, 32, nullptr), 0u);
    locked.SetPixel(nullptr, 0xFFFFFFul, nullptr);
    locked.SetPixel(nullptr, 0, 0xFFFFFFul, 32, nullptr);
}

// Client memory that was let go of, or that is not there yet.
TEST_F(LockedPicture, PicturesWithoutPixelsReadZeroAndTakeNoWrites) {
    const ObjectRef black = host.new_picture({.width = 9, .height = 1}), white = make({.width = 9, .height = 1});
    TRV_Picture zeroes(handle(black), false), others(handle(white), false);
    ASSERT_TRUE(zeroes.Lock() && others.Lock());
    const std::vector<PixelColor> colors(9, 0xFFFFFF), nothing(9, 0);
    zeroes.set_pixels(0, 0, nothing, nullptr);
    others.set_pixels(0, 0, colors, nullptr);
    for (const int depth : {1, 2, 4, 8, 16, 24, 32}) {
        SCOPED_TRACE(depth);
        TRV_ClientPicture_Data data = {};
        data.width = 9;
        data.height = 1;
        data.depth = depth;
        TRV_Picture locked(&data, false);
        ASSERT_TRUE(locked.Lock());
        EXPECT_EQ(locked.words_at(0, 0), nullptr);
        locked.prefetch(0, 0, 9);
        locked.set_pixel_bits(0, 0, colors, nullptr);
        std::vector<PixelColor> run = colors;
        locked.get_pixel_bits(0, 0, run, nullptr);
        EXPECT_EQ(run, nothing);
        EXPECT_TRUE(locked.same_colors(zeroes, 0, 0, 9, nullptr));
        EXPECT_TRUE(zeroes.same_colors(locked, 0, 0, 9, nullptr));
        EXPECT_FALSE(locked.same_colors(others, 0, 0, 9, nullptr));
    }
}

}  // namespace
}  // namespace tarvo::test
