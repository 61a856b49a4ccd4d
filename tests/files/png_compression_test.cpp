// PNG files of every compression, with bands of more than one kind.

#include <gtest/gtest.h>

#include <functional>

#include "file_samples.h"

namespace tarvo::host {
namespace {

constexpr Compression kCompressions[] = {Compression::fast, Compression::normal, Compression::small};

struct PngCompression : FilesTest {
    FileBytes png(const ObjectRef& picture, Compression compression) {
        return encode_picture(picture_in(picture), "a.png", {.compression = compression});
    }

    // 32 bits deep; `color(x, y)` gives its pixels.
    ObjectRef drawn(int width, int height, const std::function<std::uint32_t(int, int)>& color) {
        const ObjectRef made = host.new_picture({.width = width, .height = height});
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) store_pixel(picture_in(made).row(y), x, 32, color(x, y));
        return made;
    }

    // A ramp with noise, as photographs have it.
    ObjectRef photograph(int width, int height) {
        std::mt19937 random(7);
        return drawn(width, height, [&](int x, int y) {
            const auto channel = [&](int ramp) { return static_cast<std::uint32_t>(ramp % 240) + random() % 16; };
            return channel(x / 8) << 16 | channel(y / 8) << 8 | channel((x + y) / 8);
        });
    }

    // A pattern of noise that repeats: only matches are good for it, and no filter is.
    ObjectRef wallpaper(int width, int height) {
        return drawn(width, height, [](int x, int y) {
            const auto cell = static_cast<std::uint32_t>(x % 31 + y % 7 * 31);
            return cell * cell * 0x9E3779B1u >> 8;
        });
    }

    ObjectRef in_halves(const ObjectRef& top, const ObjectRef& bottom) {
        const Picture &first = picture_in(top), &second = picture_in(bottom);
        return drawn(first.width(), first.height() + second.height(), [&](int x, int y) {
            const bool in_first = y < first.height();
            return load_pixel((in_first ? first : second).row(in_first ? y : y - first.height()), x, 32);
        });
    }
};

TEST_F(PngCompression, KeepsEveryPixelOfEveryKind) {
    unsigned seed = 1;
    for (const Compression compression : kCompressions)
        for (const int depth : {1, 2, 4, 8, 16, 32})
            for (const bool masked : {false, true})
                for (const int width : {1, 3, 17, 600}) {
                    SCOPED_TRACE(testing::Message() << static_cast<int>(compression) << ": " << depth << " bits, width "
                                                    << width << (masked ? ", mask" : ""));
                    const ObjectRef picture =
                        random_picture(host, {.width = width, .height = 9, .depth = depth}, ++seed);
                    if (masked)
                        picture_in(picture).set_mask(random_picture(host, {.width = width, .height = 9}, ++seed));
                    const ObjectRef read = decode(png(picture, compression));
                    EXPECT_EQ(colors_of(read), colors_of(picture));
                    ASSERT_EQ(bool(picture_in(read).mask()), masked);
                }
}

TEST_F(PngCompression, KeepsPicturesOfManyBands) {
    const ObjectRef picture =
        in_halves(in_halves(photograph(1500, 300), wallpaper(1500, 500)), drawn(1500, 600, [](int, int) { return 0; }));
    for (const Compression compression : kCompressions)
        EXPECT_EQ(colors_of(decode(png(picture, compression))), colors_of(picture));
}

TEST_F(PngCompression, KeepsRowsLongerThanABand) {
    const ObjectRef picture = photograph(32767, 12);
    EXPECT_EQ(colors_of(decode(png(picture, Compression::normal))), colors_of(picture));
}

TEST_F(PngCompression, MakesTheSameBytesAgain) {
    const ObjectRef picture = in_halves(photograph(1000, 400), wallpaper(1000, 300));
    for (const Compression compression : kCompressions) EXPECT_EQ(png(picture, compression), png(picture, compression));
}

TEST_F(PngCompression, TakesMoreTimeForSmallerFiles) {
    const ObjectRef picture = in_halves(photograph(1000, 400), wallpaper(1000, 300));
    const std::size_t fast = png(picture, Compression::fast).size(), normal = png(picture, Compression::normal).size(),
                      small = png(picture, Compression::small).size();
    EXPECT_LE(normal, fast);
    EXPECT_LE(small, normal);
}

// Noise of four bits a channel cannot take less, and should not take much more.
TEST_F(PngCompression, CostsLittleMoreThanTheNoiseOfAPhotograph) {
    const ObjectRef picture = photograph(1000, 1000);
    EXPECT_LT(png(picture, Compression::normal).size(), std::size_t{1000} * 1000 * 3 * 5 / 8 * 11 / 10);
}

TEST_F(PngCompression, FindsWhatRepeats) {
    EXPECT_LT(png(wallpaper(1000, 1000), Compression::normal).size(), 40000u);
    EXPECT_LT(png(drawn(1000, 1000, [](int, int) { return 0x123456; }), Compression::normal).size(), 5000u);
}

// Each half is deflated as is best for it.
TEST_F(PngCompression, IsChosenBandByBand) {
    const ObjectRef noise = photograph(1000, 700), pattern = wallpaper(1000, 700);
    const std::size_t together = png(in_halves(noise, pattern), Compression::normal).size();
    EXPECT_LT(together, (png(noise, Compression::normal).size() + png(pattern, Compression::normal).size()) * 11 / 10);
}

TEST_F(PngCompression, CanBeStoppedBetweenBands) {
    struct Stop {};
    const ObjectRef picture = photograph(1000, 1000);
    int left = 600;
    const auto on_block = [&] {
        if (--left == 0) throw Stop{};
    };
    EXPECT_THROW(encode_picture(picture_in(picture), "a.png", {.on_block = on_block}), Stop);
    EXPECT_GT(left, -400) << "asked on for all the rows that were left";
}

}  // namespace
}  // namespace tarvo::host
