// What a file's pixels are said to be, and that a picture goes back into such pixels where that loses nothing.

#include <gtest/gtest.h>

#include "file_samples.h"
#include "picture_source.h"
#ifdef TARVO_PICTURE_LIBRARIES
#include "jpeg_samples.h"
#include "png_samples.h"
#endif

namespace tarvo::host {

void PrintTo(const FilePixels& pixels, std::ostream* out) { *out << in_words(pixels); }

namespace {

using Colors = std::vector<std::uint32_t>;
using Kind = FilePixels::Colors;

constexpr FilePixels kGrey{Kind::grey, 8}, kBilevel{Kind::black_and_white, 1}, kPalette{Kind::palette, 8};

class FilePixelsTest : public FilesTest {
protected:
    // What the pixels of a file of these bytes are, in words.
    std::string words_for(const FileBytes& file) {
        write_bytes(path_, file);
        Carried carried;
        read_picture_file(host, path_, {}, &carried);
        return in_words(carried.pixels);
    }

    ObjectRef picture(int width, const Colors& colors, const Colors& mask = {}) {
        const int height = static_cast<int>(colors.size()) / width;
        const ObjectRef made = host.new_picture({.width = width, .height = height});
        const auto paint = [&](Picture& picture, const Colors& all) {
            for (std::size_t i = 0; i < all.size(); ++i)
                store_pixel(picture.row(static_cast<int>(i) / width), static_cast<int>(i) % width, 32, all[i]);
        };
        paint(picture_in(made), colors);
        if (mask.empty()) return made;
        const ObjectRef levels = host.new_picture({.width = width, .height = height});
        paint(picture_in(levels), mask);
        picture_in(made).set_mask(levels);
        return made;
    }

    // The pixels of a file that is to be like that; the picture must come back whole, but for its mask when the
    // format has none.
    std::string written_like(const FilePixels& like, const ObjectRef& shown, const char* ending = ".pam") {
        const std::string path = folder_.file(std::string("out") + ending);
        const Carried carried{like};
        const WriteReport report = write_picture_file(picture_in(shown), path, {.carried = &carried});
        Carried read;
        const ObjectRef again = read_picture_file(host, path, {}, &read);
        EXPECT_EQ(read.pixels, report.pixels);
        EXPECT_EQ(colors_of(again), colors_of(shown));
        const bool masked = picture_in(shown).mask() && !report.mask_left_out;
        EXPECT_EQ(static_cast<bool>(picture_in(again).mask()), masked);
        if (masked) {
            EXPECT_EQ(colors_of(picture_in(again).mask()), colors_of(picture_in(shown).mask()));
        }
        return in_words(report.pixels);
    }

    Colors greys(int step, int count) {
        Colors all;
        for (int i = 0; i < count; ++i) all.push_back(static_cast<std::uint32_t>(i * step) * 0x010101);
        return all;
    }

    const Folder folder_;
    const std::string path_ = folder_.file("file");
};

// --- of files that are read -----------------------------------------------------------------------------------------

TEST_F(FilePixelsTest, OfPnmAreToldByTheHeader) {
    EXPECT_EQ(words_for(bytes_of("P1 1 1 0")), "black and white");
    EXPECT_EQ(words_for(bytes_of("P2 1 1 1 0")), "black and white");
    EXPECT_EQ(words_for(bytes_of("P2 1 1 15 7")), "grey, 4 bits a channel");
    EXPECT_EQ(words_for(bytes_of("P2 1 1 255 7")), "grey, 8 bits a channel");
    EXPECT_EQ(words_for(bytes_of("P5 1 1 65535 ab")), "grey, 16 bits a channel");
    EXPECT_EQ(words_for(bytes_of("P3 1 1 255 1 2 3")), "RGB, 8 bits a channel");
    EXPECT_EQ(words_for(bytes_of("P6 1 1 1 ") + FileBytes{0, 1, 0}), "RGB, 1 bit a channel");
    const auto pam = [](const std::string& channels, const std::string& pixel) {
        return bytes_of("P7\nWIDTH 1\nHEIGHT 1\nDEPTH " + channels + "\nMAXVAL 255\nENDHDR\n" + pixel);
    };
    EXPECT_EQ(words_for(pam("1", "a")), "grey, 8 bits a channel");
    EXPECT_EQ(words_for(pam("2", "ab")), "grey, 8 bits a channel, mask");
    EXPECT_EQ(words_for(pam("3", "abc")), "RGB, 8 bits a channel");
    EXPECT_EQ(words_for(pam("4", "abcd")), "RGB, 8 bits a channel, mask");
}

#ifdef TARVO_PICTURE_LIBRARIES
TEST_F(FilePixelsTest, OfPngAreToldByTheHeader) {
    const struct {
        PngSample sample;
        const char* words;
    } rows[] = {
        {{1, 1, 1, 0, {0, 0}}, "black and white"},
        {{1, 1, 2, 0, {0, 0}}, "grey, 2 bits a channel"},
        {{1, 1, 8, 0, {0, 0}}, "grey, 8 bits a channel"},
        {{1, 1, 16, 0, {0, 0, 0}}, "grey, 16 bits a channel"},
        {{1, 1, 8, 4, {0, 0, 0}}, "grey, 8 bits a channel, mask"},
        {{1, 1, 16, 0, {0, 0, 0}, {}, {0, 9}}, "grey, 16 bits a channel, mask"},
        {{1, 1, 8, 2, {0, 0, 0, 0}}, "RGB, 8 bits a channel"},
        {{1, 1, 16, 2, {0, 0, 0, 0, 0, 0, 0}}, "RGB, 16 bits a channel"},
        {{1, 1, 16, 6, {0, 0, 0, 0, 0, 0, 0, 0, 0}}, "RGB, 16 bits a channel, mask"},
        {{1, 1, 1, 3, {0, 0}, {1, 2, 3}}, "palette, 1 bit a pixel"},
        {{1, 1, 8, 3, {0, 0}, {1, 2, 3}}, "palette, 8 bits a pixel"},
        {{1, 1, 8, 3, {0, 0}, {1, 2, 3}, {0}}, "palette, 8 bits a pixel, mask"},
    };
    for (const auto& [sample, words] : rows) EXPECT_EQ(words_for(png_file(sample)), words);
}

TEST_F(FilePixelsTest, OfJpegAreToldByTheHeader) {
    EXPECT_EQ(words_for(jpeg_file({1, 1, JpegColors::grey, {9}})), "grey, 8 bits a channel");
    EXPECT_EQ(words_for(jpeg_file({1, 1, JpegColors::ycc, {9, 9, 9}})), "RGB, 8 bits a channel");
    EXPECT_EQ(words_for(jpeg_file({1, 1, JpegColors::adobe_ycck, {9, 9, 9, 9}})), "CMYK, 8 bits a channel");
}
#endif

// --- of files that are written --------------------------------------------------------------------------------------

TEST_F(FilePixelsTest, GreysComeBackGrey) {
    const ObjectRef shown = picture(16, greys(17, 16));
    EXPECT_EQ(written_like({}, shown), "RGB, 8 bits a channel");
    EXPECT_EQ(written_like(kPalette, shown, ".ppm"), "RGB, 8 bits a channel");
    EXPECT_EQ(written_like(kGrey, shown), "grey, 8 bits a channel");
    EXPECT_EQ(written_like(kGrey, shown, ".pgm"), "grey, 8 bits a channel");
    EXPECT_EQ(written_like(kBilevel, shown), "grey, 8 bits a channel");
    EXPECT_EQ(written_like(kBilevel, picture(2, {0, 0xFFFFFF, 0xFFFFFF, 0})), "black and white");
    EXPECT_EQ(written_like(kBilevel, picture(2, {0, 0xFFFFFF, 0xFFFFFF, 0}), ".pbm"), "black and white");
    for (const std::uint32_t tinted : {0x010100u, 0x000101u, 0x010001u})
        EXPECT_EQ(written_like(kGrey, picture(2, {0, 0, 0, tinted})), "RGB, 8 bits a channel") << tinted;
}

TEST_F(FilePixelsTest, GreysWithAMaskComeBackWithAlpha) {
    const Colors mask = {0, 0xFFFFFF, 0x808080, 0x010101};
    EXPECT_EQ(written_like(kGrey, picture(2, greys(17, 4), mask)), "grey, 8 bits a channel, mask");
    EXPECT_EQ(written_like(kGrey, picture(2, greys(17, 4), mask), ".pgm"), "grey, 8 bits a channel");
    EXPECT_EQ(written_like(kGrey, picture(2, {1, 2, 3, 4}, mask)), "RGB, 8 bits a channel, mask");
}

#ifdef TARVO_PICTURE_LIBRARIES
TEST_F(FilePixelsTest, GreysOfFewBitsStaySoInPng) {
    const struct {
        int bits, step;
        const char* words;
    } rows[] = {
        {1, 255, "black and white"},       {2, 85, "grey, 2 bits a channel"},
        {4, 17, "grey, 4 bits a channel"}, {3, 36, "grey, 8 bits a channel"},  // no such file can be written
        {8, 1, "grey, 8 bits a channel"},  {16, 1, "grey, 8 bits a channel"},
    };
    for (const auto& [bits, step, words] : rows) {
        const Colors all = greys(step, 256 / step + (step > 1 ? 1 : 0));
        const FilePixels like{bits == 1 ? Kind::black_and_white : Kind::grey, bits};
        EXPECT_EQ(written_like(like, picture(static_cast<int>(all.size()), all), ".png"), words);
        const Colors between = {0x020202};
        EXPECT_EQ(written_like(like, picture(1, between), ".png"), "grey, 8 bits a channel");
    }
    EXPECT_EQ(written_like(kGrey, picture(2, greys(9, 2), {0, 0x707070}), ".png"), "grey, 8 bits a channel, mask");
}

TEST_F(FilePixelsTest, PalettesComeBackAsOneOfTheFewestBits) {
    const struct {
        int colors;
        const char* words;
    } rows[] = {
        {1, "palette, 1 bit a pixel"},   {2, "palette, 1 bit a pixel"},    {3, "palette, 2 bits a pixel"},
        {4, "palette, 2 bits a pixel"},  {5, "palette, 4 bits a pixel"},   {16, "palette, 4 bits a pixel"},
        {17, "palette, 8 bits a pixel"}, {256, "palette, 8 bits a pixel"}, {257, "RGB, 8 bits a channel"},
        {1000, "RGB, 8 bits a channel"},
    };
    for (const auto& [count, words] : rows) {
        Colors colors;
        for (int i = 0; i < 2 * count; ++i)
            colors.push_back(0xFF8000u ^ static_cast<std::uint32_t>(i % count * 0x1003));
        EXPECT_EQ(written_like(kPalette, picture(count, colors), ".png"), words) << count;
    }
    // White comes first, and what is not black behind it.
    EXPECT_EQ(written_like(kPalette, picture(2, {0xFFFFFF, 0xFF0000}), ".png"), "palette, 1 bit a pixel");
    // A clear colour is another one than the same without.
    const ObjectRef clear = picture(2, {1, 1, 2, 1}, {0, 0xFFFFFF, 0x808080, 0});
    EXPECT_EQ(written_like(kPalette, clear, ".png"), "palette, 2 bits a pixel, mask");
    EXPECT_EQ(written_like(kPalette, clear), "RGB, 8 bits a channel, mask");  // PAM has none
}

TEST_F(FilePixelsTest, GreyJpegComesBackGrey) {
    const ObjectRef shown = picture(2, Colors(4, 0x606060));
    EXPECT_EQ(written_like(kGrey, shown, ".jpg"), "grey, 8 bits a channel");
    EXPECT_EQ(written_like(kGrey, picture(2, Colors(4, 0x606060), Colors(4, 0x707070)), ".jpg"),
              "grey, 8 bits a channel");
    EXPECT_EQ(written_like(kPalette, shown, ".jpg"), "grey, 8 bits a channel");
    EXPECT_EQ(written_like({}, shown, ".jpg"), "RGB, 8 bits a channel");
}

// Depths up to 8 are the file's already.
TEST_F(FilePixelsTest, StoredIndicesAreWrittenAsTheyAre) {
    const ObjectRef indexed = random_picture(host, {.width = 5, .height = 4, .depth = 4}, 1);
    EXPECT_EQ(written_like(kPalette, indexed, ".png"), "grey, 4 bits a channel");
    const ObjectRef bits = random_picture(host, {.width = 5, .height = 4, .depth = 1}, 1);
    EXPECT_EQ(written_like({}, bits, ".png"), "black and white");
}
#endif

}  // namespace
}  // namespace tarvo::host
