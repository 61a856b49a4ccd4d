#include "image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

namespace tarvo::host {
namespace {

// Numbers its pixels from 0, row by row: 0 1 2 / 3 4 5.
Image numbered(Layout layout) {
    Image image(3, 2, layout);
    for (int i = 0; i < 6; ++i)
        std::fill_n(image.pixels.get() + static_cast<std::size_t>(i) * image.pixel_bytes(), image.pixel_bytes(),
                    static_cast<std::uint8_t>(i));
    return image;
}

std::vector<int> numbers(const Image& image) {
    std::vector<int> result;
    for (int y = 0; y < image.height; ++y)
        for (std::size_t x = 0; x < image.row_bytes(); x += image.pixel_bytes()) {
            const std::uint8_t* pixel = image.row(y) + x;
            EXPECT_TRUE(std::all_of(pixel, pixel + image.pixel_bytes(), [&](int byte) { return byte == *pixel; }));
            result.push_back(*pixel);
        }
    return result;
}

TEST(Image, IsTurnedAsEachOrientationSays) {
    const struct {
        int orientation, width;
        std::vector<int> seen;
    } cases[] = {
        {1, 3, {0, 1, 2, 3, 4, 5}}, {2, 3, {2, 1, 0, 5, 4, 3}}, {3, 3, {5, 4, 3, 2, 1, 0}},  {4, 3, {3, 4, 5, 0, 1, 2}},
        {5, 2, {0, 3, 1, 4, 2, 5}}, {6, 2, {3, 0, 4, 1, 5, 2}}, {7, 2, {5, 2, 4, 1, 3, 0}},  {8, 2, {2, 5, 1, 4, 0, 3}},
        {0, 3, {0, 1, 2, 3, 4, 5}}, {9, 3, {0, 1, 2, 3, 4, 5}}, {-1, 3, {0, 1, 2, 3, 4, 5}},
    };
    for (const auto& c : cases)
        for (const Layout layout : {Layout::indexed, Layout::rgb, Layout::rgba}) {
            const Image seen = oriented(numbered(layout), c.orientation);
            EXPECT_EQ(seen.width, c.width) << c.orientation;
            EXPECT_EQ(seen.width * seen.height, 6) << c.orientation;
            EXPECT_EQ(numbers(seen), c.seen) << c.orientation;
        }
}

TEST(Image, KeepsItsPaletteWhenTurned) {
    Image image = numbered(Layout::indexed);
    image.index_bits = 4;
    image.palette[5] = {1, 2, 3, 4};
    const Image seen = oriented(std::move(image), 6);
    EXPECT_EQ(seen.index_bits, 4);
    EXPECT_EQ(seen.palette[5], (Rgba{1, 2, 3, 4}));
}

TEST(Image, GreyPalettesGoFromBlackToWhite) {
    EXPECT_EQ(grey_palette(1)[0], kBlack);
    EXPECT_EQ(grey_palette(1)[1], kWhite);
    EXPECT_EQ(grey_palette(2)[2], (Rgba{170, 170, 170}));
    EXPECT_EQ(grey_palette(4)[3], (Rgba{51, 51, 51}));
    EXPECT_EQ(grey_palette(8)[200], (Rgba{200, 200, 200}));
    EXPECT_EQ(grey_palette(8)[255], kWhite);
}

TEST(Image, LumaOfGreysIsTheGrey) {
    for (int v = 0; v < 256; ++v) {
        const auto grey = static_cast<std::uint8_t>(v);
        EXPECT_EQ(luma({grey, grey, grey}), v);
    }
    EXPECT_EQ(luma({255, 0, 0}), 77);
    EXPECT_EQ(luma({0, 255, 0}), 150);
    EXPECT_EQ(luma({0, 0, 255}), 28);
}

}  // namespace
}  // namespace tarvo::host
