#include "image.h"

#include <gtest/gtest.h>

#include "file_samples.h"
#include "picture_image.h"

namespace tarvo::host {
namespace {

// What comes of an image of 3 x 2 pixels that are numbered from 0, row by row: 0 1 2 / 3 4 5.
struct Seen {
    int width, height;
    std::vector<std::uint32_t> colors, mask;
};

Seen numbered(Host& host, Layout layout, int orientation, bool told_before, bool keep_depth = false, int bits = 8) {
    ImageForm form{.width = 3, .height = 2, .layout = layout, .index_bits = bits};
    form.palette = grey_palette(8);
    if (bits == 1) form.palette = grey_palette(1);
    PictureBuilder builder(host, keep_depth);
    if (told_before) builder.turn(orientation);
    builder.begin(form, 0);
    // In two runs a row, the second of every other pixel, as interlaced files give them.
    for (int y = 0; y < 2; ++y) {
        FileBytes odd(form.pixel_bytes(), static_cast<std::uint8_t>(y * 3 + 1));
        FileBytes even(form.pixel_bytes(), static_cast<std::uint8_t>(y * 3));
        even = even + FileBytes(form.pixel_bytes(), static_cast<std::uint8_t>(y * 3 + 2));
        if (bits == 1)
            for (FileBytes* bytes : {&odd, &even})
                for (std::uint8_t& byte : *bytes) byte &= 1;
        builder.put({.x = 1, .y = y, .step = 1, .count = 1, .pixels = odd.data()});
        builder.put({.x = 0, .y = y, .step = 2, .count = 2, .pixels = even.data()});
    }
    if (!told_before) builder.turn(orientation);
    const ObjectRef made = builder.finish();
    const Picture& picture = picture_in(made);
    Seen seen{picture.width(), picture.height(), colors_of(made), {}};
    if (picture.mask()) seen.mask = colors_of(picture.mask());
    return seen;
}

TEST(Image, IsTurnedAsEachOrientationSays) {
    const struct {
        int orientation, width;
        std::vector<std::uint32_t> seen;
    } cases[] = {
        {1, 3, {0, 1, 2, 3, 4, 5}}, {2, 3, {2, 1, 0, 5, 4, 3}}, {3, 3, {5, 4, 3, 2, 1, 0}},  {4, 3, {3, 4, 5, 0, 1, 2}},
        {5, 2, {0, 3, 1, 4, 2, 5}}, {6, 2, {3, 0, 4, 1, 5, 2}}, {7, 2, {5, 2, 4, 1, 3, 0}},  {8, 2, {2, 5, 1, 4, 0, 3}},
        {0, 3, {0, 1, 2, 3, 4, 5}}, {9, 3, {0, 1, 2, 3, 4, 5}}, {-1, 3, {0, 1, 2, 3, 4, 5}},
    };
    Host host;
    for (const auto& c : cases)
        for (const bool told_before : {true, false})
            for (const bool keep_depth : {true, false})
                for (const Layout layout : {Layout::indexed, Layout::grey_alpha, Layout::rgb, Layout::rgba}) {
                    const Seen seen = numbered(host, layout, c.orientation, told_before, keep_depth);
                    EXPECT_EQ(seen.width, c.width) << c.orientation;
                    EXPECT_EQ(seen.width * seen.height, 6) << c.orientation;
                    std::vector<std::uint32_t> greys, mask;
                    for (const std::uint32_t number : c.seen) {
                        greys.push_back(number * 0x010101);
                        mask.push_back((255 - number) * 0x010101);
                    }
                    EXPECT_EQ(seen.colors, greys) << c.orientation;
                    const bool masked = layout == Layout::rgba || layout == Layout::grey_alpha;
                    EXPECT_EQ(seen.mask, masked ? mask : std::vector<std::uint32_t>()) << c.orientation;
                }
}

TEST(Image, OfBitsIsTurned) {
    Host host;
    for (const bool told_before : {true, false}) {
        const Seen seen = numbered(host, Layout::indexed, 6, told_before, true, 1);
        EXPECT_EQ(seen.colors, (std::vector<std::uint32_t>{0xFFFFFF, 0, 0, 0xFFFFFF, 0xFFFFFF, 0}));
    }
}

TEST(Image, GreyPalettesGoFromBlackToWhite) {
    EXPECT_EQ(grey_palette(1)[0], kBlack);
    EXPECT_EQ(grey_palette(1)[1], kWhite);
    EXPECT_EQ(grey_palette(2)[2], (Rgba{170, 170, 170}));
    EXPECT_EQ(grey_palette(4)[3], (Rgba{51, 51, 51}));
    EXPECT_EQ(grey_palette(8)[200], (Rgba{200, 200, 200}));
    EXPECT_EQ(grey_palette(8)[255], kWhite);
}

TEST(Image, FormsAreOfTheColorsThatTheirIndicesReach) {
    const auto indexed = [](Rgba first, Rgba second, int bits = 1) {
        ImageForm form;
        form.layout = Layout::indexed;
        form.index_bits = bits;
        form.palette.fill(Rgba{1, 2, 3, 4});
        form.palette[0] = first;
        form.palette[1] = second;
        return form;
    };
    const Rgba clear{0, 0, 0, 0}, grey{128, 128, 128}, red{255, 0, 0};
    EXPECT_TRUE(is_bilevel(indexed(kBlack, kWhite)));
    EXPECT_TRUE(is_bilevel(indexed(kWhite, kBlack)));
    EXPECT_TRUE(is_bilevel(indexed(kWhite, kWhite)));
    EXPECT_FALSE(is_bilevel(indexed(grey, kWhite)));
    EXPECT_FALSE(is_bilevel(indexed(kBlack, red)));
    EXPECT_FALSE(is_bilevel(indexed(kBlack, clear)));
    EXPECT_FALSE(is_bilevel(indexed(kBlack, kWhite, 2)));
    EXPECT_TRUE(is_grey(indexed(grey, kWhite)));
    EXPECT_FALSE(is_grey(indexed(grey, red)));
    for (const Rgba& other : {Rgba{1, 0, 0}, Rgba{0, 1, 0}, Rgba{0, 0, 1}, clear}) EXPECT_FALSE(other == kBlack);
    ImageForm colors;
    colors.layout = Layout::rgb;
    EXPECT_FALSE(is_bilevel(colors));
}

TEST(Image, FilePixelsDifferInEachOfTheirParts) {
    const FilePixels usual;
    EXPECT_EQ(usual, FilePixels{});
    EXPECT_FALSE(usual == (FilePixels{.colors = FilePixels::Colors::grey}));
    EXPECT_FALSE(usual == FilePixels{.bits = 16});
    EXPECT_FALSE(usual == FilePixels{.alpha = true});
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
