#include "png_samples.h"

#include <gtest/gtest.h>

#include "file_samples.h"

namespace tarvo::host {
namespace {

using PngTest = FilesTest;
using Colors = std::vector<std::uint32_t>;

constexpr int kGrey = 0, kRgb = 2, kPalette = 3, kGreyAlpha = 4, kRgba = 6;

TEST_F(PngTest, ColorsBecomeWords) {
    const ObjectRef picture = decode(png_file({2, 2, 8, kRgb, {0, 1, 2, 3, 4, 5, 6, 0, 7, 8, 9, 250, 251, 252}}));
    EXPECT_EQ(stored_bytes(picture), (FileBytes{0, 1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 250, 251, 252}));
    EXPECT_FALSE(picture_in(picture).mask());
}

TEST_F(PngTest, FiltersAreUndone) {
    // The second row: up. The third: left of itself.
    EXPECT_EQ(colors_of(decode(png_file({2, 3, 8, kGrey, {0, 10, 20, 2, 1, 1, 1, 5, 5}}))),
              (Colors{0x0A0A0A, 0x141414, 0x0B0B0B, 0x151515, 0x050505, 0x0A0A0A}));
}

TEST_F(PngTest, AlphaBecomesTheMask) {
    const ObjectRef picture = decode(png_file({2, 1, 8, kRgba, {0, 1, 2, 3, 255, 4, 5, 6, 55}}));
    EXPECT_EQ(colors_of(picture), (Colors{0x010203, 0x040506}));
    EXPECT_EQ(stored_bytes(picture_in(picture).mask()), (FileBytes{0, 0, 0, 0, 0, 200, 200, 200}));
}

TEST_F(PngTest, GreyWithAlphaBecomesColorsAndAMask) {
    const ObjectRef picture = decode_keeping(png_file({2, 1, 8, kGreyAlpha, {0, 9, 0, 200, 254}}));
    EXPECT_EQ(picture_in(picture).depth(), 32);
    EXPECT_EQ(colors_of(picture), (Colors{0x090909, 0xC8C8C8}));
    EXPECT_EQ(colors_of(picture_in(picture).mask()), (Colors{0xFFFFFF, 0x010101}));
}

TEST_F(PngTest, OneColorCanBeClear) {
    const ObjectRef color = decode(png_file({.width = 2,
                                             .height = 1,
                                             .bit_depth = 8,
                                             .color_type = kRgb,
                                             .rows = {0, 1, 2, 3, 1, 2, 4},
                                             .clear = {0, 1, 0, 2, 0, 3}}));
    EXPECT_EQ(colors_of(picture_in(color).mask()), (Colors{0xFFFFFF, 0}));

    const PngSample grey{
        .width = 4, .height = 1, .bit_depth = 2, .color_type = kGrey, .rows = {0, 0x1B}, .clear = {0, 2}};
    EXPECT_EQ(colors_of(decode(png_file(grey))), (Colors{0, 0x555555, 0xAAAAAA, 0xFFFFFF}));
    EXPECT_EQ(colors_of(picture_in(decode(png_file(grey))).mask()), (Colors{0, 0, 0xFFFFFF, 0}));

    // A grey that the depth does not have: its low bits count, and the table has no more entries.
    const ObjectRef wild = decode(png_file(
        {.width = 4, .height = 1, .bit_depth = 1, .color_type = kGrey, .rows = {0, 0x50}, .clear = {0xFF, 0xFF}}));
    EXPECT_EQ(colors_of(wild), (Colors{0, 0xFFFFFF, 0, 0xFFFFFF}));
    EXPECT_EQ(colors_of(picture_in(wild).mask()), (Colors{0, 0xFFFFFF, 0, 0xFFFFFF}));

    // Of deep greys the whole value is compared, not the high byte that is kept.
    const ObjectRef deep = decode(png_file({.width = 2,
                                            .height = 1,
                                            .bit_depth = 16,
                                            .color_type = kGrey,
                                            .rows = {0, 0x12, 0x34, 0x12, 0x35},
                                            .clear = {0x12, 0x35}}));
    EXPECT_EQ(colors_of(deep), (Colors{0x121212, 0x121212}));
    EXPECT_EQ(colors_of(picture_in(deep).mask()), (Colors{0, 0xFFFFFF}));
}

TEST_F(PngTest, DeepChannelsKeepTheirHighByte) {
    EXPECT_EQ(colors_of(decode(png_file({1, 1, 16, kRgb, {0, 0x12, 0xFF, 0x80, 0x80, 0xFF, 0x00}}))), Colors{0x1280FF});
    const ObjectRef clear = decode(png_file({1, 1, 16, kRgba, {0, 1, 255, 2, 255, 3, 255, 4, 255}}));
    EXPECT_EQ(colors_of(picture_in(clear).mask()), Colors{0xFBFBFB});
    const ObjectRef grey = decode_keeping(png_file({2, 1, 16, kGrey, {0, 0x7F, 0xFF, 0x80, 0x00}}));
    EXPECT_EQ(picture_in(grey).depth(), 8);
    EXPECT_EQ(stored_bytes(grey), (FileBytes{0x7F, 0x80}));
}

TEST_F(PngTest, OneBitGreyKeepsItsDepth) {
    const FileBytes file = png_file({10, 1, 1, kGrey, {0, 0x0F, 0x80}});
    const ObjectRef picture = decode_keeping(file);
    EXPECT_EQ(picture_in(picture).depth(), 1);
    EXPECT_EQ(stored_bytes(picture), (FileBytes{0xF0, 0x40}));  // black is a set bit
    EXPECT_EQ(picture_in(decode(file)).depth(), 32);
    EXPECT_EQ(colors_of(decode(file)), colors_of(picture));
}

TEST_F(PngTest, OneBitPaletteKeepsItsDepthWhenBlackAndWhite) {
    PngSample sample{.width = 4,
                     .height = 1,
                     .bit_depth = 1,
                     .color_type = kPalette,
                     .rows = {0, 0x50},
                     .palette = {255, 255, 255, 0, 0, 0}};
    EXPECT_EQ(stored_bytes(decode_keeping(png_file(sample))), FileBytes{0x50});
    sample.palette = {0, 0, 0, 255, 255, 255};
    EXPECT_EQ(stored_bytes(decode_keeping(png_file(sample))), FileBytes{0xA0});

    for (const FileBytes& other : {FileBytes{0, 0, 0, 255, 0, 0}, FileBytes{255, 0, 0, 255, 255, 255}}) {
        sample.palette = other;
        EXPECT_EQ(picture_in(decode_keeping(png_file(sample))).depth(), 8);
    }
    sample.palette = {255, 0, 0, 0, 0, 255};
    const ObjectRef colored = decode_keeping(png_file(sample));
    EXPECT_EQ(picture_in(colored).depth(), 8);
    EXPECT_EQ(stored_bytes(colored), (FileBytes{0, 1, 0, 1}));
    EXPECT_EQ(colors_of(colored), (Colors{0xFF0000, 0x0000FF, 0xFF0000, 0x0000FF}));
}

TEST_F(PngTest, PaletteBecomesTheColorTable) {
    const PngSample sample{.width = 3,
                           .height = 1,
                           .bit_depth = 8,
                           .color_type = kPalette,
                           .rows = {0, 2, 0, 1},
                           .palette = {1, 2, 3, 255, 0, 128, 7, 7, 7},
                           .clear = {255, 100}};
    const ObjectRef kept = decode_keeping(png_file(sample));
    EXPECT_EQ(picture_in(kept).depth(), 8);
    EXPECT_EQ(stored_bytes(kept), (FileBytes{2, 0, 1}));
    ASSERT_EQ(picture_in(kept).colors().size(), 256u);
    EXPECT_EQ(picture_in(kept).colors()[1].red, 0xFFFF);
    EXPECT_EQ(picture_in(kept).colors()[1].blue, 0x8080);
    EXPECT_EQ(packed_color(picture_in(kept).colors()[3]), 0u);
    EXPECT_EQ(colors_of(picture_in(kept).mask()), (Colors{0, 0, 0x9B9B9B}));
    EXPECT_EQ(colors_of(decode(png_file(sample))), (Colors{0x070707, 0x010203, 0xFF0080}));
}

TEST_F(PngTest, IndexBeyondThePaletteIsBlack) {
    EXPECT_EQ(colors_of(decode(png_file({.width = 2,
                                         .height = 1,
                                         .bit_depth = 8,
                                         .color_type = kPalette,
                                         .rows = {0, 0, 200},
                                         .palette = {1, 2, 3}}))),
              (Colors{0x010203, 0}));
}

TEST_F(PngTest, InterlacedFilesAreRead) {
    // Rows of the seven passes over 3 x 3 pixels numbered 1 to 9; passes 2 and 3 have no pixels.
    EXPECT_EQ(colors_of(decode(png_file({.width = 3,
                                         .height = 3,
                                         .bit_depth = 8,
                                         .color_type = kGrey,
                                         .rows = {0, 1, 0, 3, 0, 7, 9, 0, 2, 0, 8, 0, 4, 5, 6},
                                         .interlaced = true}))),
              (Colors{0x010101, 0x020202, 0x030303, 0x040404, 0x050505, 0x060606, 0x070707, 0x080808, 0x090909}));
}

TEST_F(PngTest, OrientationIsApplied) {
    for (const bool big_endian : {true, false})
        for (const bool behind : {true, false})
            for (const bool interlaced : {true, false})
                EXPECT_EQ(
                    colors_of(decode(png_file({.width = 3,
                                               .height = 1,
                                               .bit_depth = 8,
                                               .color_type = kGrey,
                                               .rows = interlaced ? FileBytes{0, 1, 0, 3, 0, 2} : FileBytes{0, 1, 2, 3},
                                               .exif = exif_of_orientation(3, big_endian),
                                               .interlaced = interlaced,
                                               .exif_behind = behind}))),
                    (Colors{0x030303, 0x020202, 0x010101}));
}

TEST_F(PngTest, MasksAreTurnedWithTheirPicture) {
    for (const bool behind : {true, false}) {
        const ObjectRef picture = decode(png_file({.width = 2,
                                                   .height = 1,
                                                   .bit_depth = 8,
                                                   .color_type = kRgba,
                                                   .rows = {0, 1, 2, 3, 255, 4, 5, 6, 55},
                                                   .exif = exif_of_orientation(6),
                                                   .exif_behind = behind}));
        EXPECT_EQ(picture_in(picture).height(), 2);
        EXPECT_EQ(colors_of(picture), (Colors{0x010203, 0x040506}));
        EXPECT_EQ(picture_in(picture_in(picture).mask()).height(), 2);
        EXPECT_EQ(colors_of(picture_in(picture).mask()), (Colors{0, 0xC8C8C8}));
    }
}

TEST_F(PngTest, SizesAreBounded) {
    EXPECT_EQ(error_of(png_file({32768, 1, 1, kGrey, {0}})), "the size is 32768 x 1 pixels, a side may have 32767");
    EXPECT_EQ(error_of(png_file({0x7FFFFFFF, 0x7FFFFFFF, 1, kGrey, {0}})),
              "the size is 2147483647 x 2147483647 pixels, a side may have 32767");
    EXPECT_EQ(error_of(png_file({32767, 32767, 1, kGrey, {0}})),
              "the size is 32767 x 32767 pixels, together 1073676289, the limit is 268435456");
    EXPECT_EQ(file_error([&] {
                  decode_picture(host, png_file({5, 3, 8, kGrey, {0}}), {.max_pixels = 14});
              }),
              "the size is 5 x 3 pixels, together 15, the limit is 14");
}

TEST_F(PngTest, ErrorsSayWhatIsWrong) {
    EXPECT_EQ(error_of(png_file({2, 2, 8, kGrey, {0, 1, 2, 0, 1}})), "damaged: Not enough image data");
    FileBytes file = png_file({2, 2, 8, kGrey, {0, 1, 2, 0, 1, 2}});
    FileBytes cut(file.begin(), file.end() - 12);
    EXPECT_EQ(error_of(cut), "cut short after 2 rows");
    file[50] ^= 1;
    EXPECT_EQ(error_of(file).rfind("damaged: ", 0), 0u) << error_of(file);
}

// What is written is read by the reader that the hand-made files above have proved.
TEST_F(PngTest, EveryDepthAndStoreSurvivesAFile) {
    const Backing stores[] = {Backing::graphics_world, Backing::bitmap_context, Backing::pixel_buffer};
    unsigned seed = 1;
    for (const int depth : {1, 2, 4, 8, 16, 24, 32})
        for (const Backing store : stores) {
            if (store == Backing::pixel_buffer && depth != 32) continue;
            for (const int width : {1, 7, 8, 33}) {
                SCOPED_TRACE(testing::Message() << depth << " bits, width " << width);
                const bool padded = store != Backing::pixel_buffer;
                const ObjectRef picture = random_picture(
                    host,
                    {.width = width, .height = 5, .depth = depth, .backing = store, .row_padding = padded ? 3 : 0},
                    ++seed);
                const FileBytes file = encode_picture(picture_in(picture), "a.png");
                EXPECT_EQ(colors_of(decode(file)), colors_of(picture));
                EXPECT_FALSE(picture_in(decode(file)).mask());
                EXPECT_EQ(colors_of(decode_keeping(file)), colors_of(picture));
            }
        }
}

TEST_F(PngTest, IndicesAndColorTableSurviveAFile) {
    std::vector<RGBColor> colors;
    for (unsigned i = 0; i < 256; ++i)
        colors.push_back(
            {static_cast<std::uint16_t>(i * 0x101), 0x4040, static_cast<std::uint16_t>((255 - i) * 0x101)});
    const ObjectRef picture = random_picture(host, {.width = 19, .height = 4, .depth = 8, .colors = colors}, 5);
    const ObjectRef read = decode_keeping(encode_picture(picture_in(picture), "a.png"));
    EXPECT_EQ(picture_in(read).depth(), 8);
    EXPECT_EQ(stored_bytes(read), stored_bytes(picture));
    for (std::size_t i = 0; i < 256; ++i) {
        EXPECT_EQ(picture_in(read).colors()[i].red, colors[i].red) << i;
        EXPECT_EQ(picture_in(read).colors()[i].blue, colors[i].blue) << i;
    }
}

// Bytes 24 and 25 of a file: bit depth and colour type.
TEST_F(PngTest, DepthsUpToEightAreWrittenAsPaletteOrGrey) {
    const auto form = [&](const PictureOptions& options) {
        const FileBytes file = encode_picture(picture_in(host.new_picture(options)), "a.png");
        return std::pair<int, int>(file[24], file[25]);
    };
    EXPECT_EQ(form({.width = 2, .height = 2, .depth = 1}), std::pair(1, kGrey));
    EXPECT_EQ(form({.width = 2, .height = 2, .depth = 2}), std::pair(2, kGrey));
    EXPECT_EQ(form({.width = 2, .height = 2, .depth = 8}), std::pair(8, kGrey));
    EXPECT_EQ(form({.width = 2, .height = 2, .depth = 4, .colors = {{0xFFFF, 0, 0}}}), std::pair(4, kPalette));
    EXPECT_EQ(form({.width = 2, .height = 2, .depth = 8, .colors = {{0xFFFF, 0, 0}}}), std::pair(8, kPalette));
    EXPECT_EQ(form({.width = 2, .height = 2, .depth = 16}), std::pair(8, kRgb));
}

TEST_F(PngTest, SixteenBitWhiteIsWhite) {
    EXPECT_EQ(colors_of(decode(
                  encode_picture(picture_in(host.new_picture({.width = 1, .height = 1, .depth = 16})), "a.png"))),
              Colors{0xFFFFFF});
}

TEST_F(PngTest, MasksOfEveryDepthBecomeAlpha) {
    for (const int depth : {1, 2, 4, 8, 16, 24, 32}) {
        SCOPED_TRACE(depth);
        // A table whose colours are not the levels: a mask's indices are levels all the same.
        std::vector<RGBColor> colors(depth <= 8 ? 1 : 0, RGBColor{0x1234, 0x5678, 0x9ABC});
        const ObjectRef mask = random_picture(host, {.width = 9, .height = 3, .depth = depth, .colors = colors}, 77);
        const ObjectRef picture = random_picture(host, {.width = 9, .height = 3, .depth = 8}, 78);
        picture_in(picture).set_mask(mask);
        const ObjectRef read = decode(encode_picture(picture_in(picture), "a.png"));
        EXPECT_EQ(colors_of(read), colors_of(picture));
        ASSERT_TRUE(picture_in(read).mask());
        const Picture& stored = picture_in(mask);
        Colors levels;
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 9; ++x)
                levels.push_back((color_of(load_pixel(stored.row(y), x, depth), depth, {}) & 255) * 0x010101);
        EXPECT_EQ(colors_of(picture_in(read).mask()), levels);
    }
}

TEST_F(PngTest, PictureIsOpaqueBeyondItsMask) {
    const ObjectRef picture = host.new_picture({.width = 3, .height = 2});
    picture_in(picture).set_mask(host.new_picture({.width = 1, .height = 1}));  // white: clear
    const ObjectRef read = decode(encode_picture(picture_in(picture), "a.png"));
    EXPECT_EQ(colors_of(picture_in(read).mask()), (Colors{0xFFFFFF, 0, 0, 0, 0, 0}));

    picture_in(picture).set_mask(host.new_picture({.width = 10, .height = 10}));
    EXPECT_EQ(colors_of(picture_in(decode(encode_picture(picture_in(picture), "a.png"))).mask()), Colors(6, 0xFFFFFF));
}

}  // namespace
}  // namespace tarvo::host
