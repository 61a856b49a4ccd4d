#include "jpeg_samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>  // jpeglib.h needs it
#include <cstdlib>

#include <jpeglib.h>

#include <jerror.h>  // what it holds depends on the library's

#include "file_samples.h"
#include "jpeg_errors.h"
#include "png_samples.h"

namespace tarvo::host {
namespace {

using JpegTest = FilesTest;

constexpr std::uint32_t kRed = 0xFF0000, kGreen = 0x00FF00, kBlue = 0x0000FF, kWhite = 0xFFFFFF;

bool close_to(std::uint32_t color, std::uint32_t wanted, int tolerance) {
    for (int shift = 0; shift < 24; shift += 8)
        if (std::abs(static_cast<int>(color >> shift & 255) - static_cast<int>(wanted >> shift & 255)) > tolerance)
            return false;
    return true;
}

#define EXPECT_COLOR(color, wanted) \
    EXPECT_TRUE(close_to(color, wanted, 3)) << std::hex << (color) << " is not " << (wanted)

FileBytes one_color(unsigned pixels, const FileBytes& samples) {
    FileBytes all;
    for (unsigned i = 0; i < pixels; ++i) all = all + samples;
    return all;
}

// Four fields of 16 x 8 pixels: red and green over blue and white.
JpegSample four_fields(const FileBytes& exif) {
    JpegSample sample{32, 16, JpegColors::ycc, {}, exif};
    for (unsigned y = 0; y < 16; ++y)
        for (unsigned x = 0; x < 32; ++x) {
            const bool right = x >= 16, low = y >= 8;
            sample.samples = sample.samples + FileBytes({static_cast<std::uint8_t>(right == low ? 255 : 0),
                                                         static_cast<std::uint8_t>(right ? 255 : 0),
                                                         static_cast<std::uint8_t>(low ? 255 : 0)});
        }
    return sample;
}

TEST_F(JpegTest, ColorsComeBack) {
    const ObjectRef picture = decode(jpeg_file({3, 2, JpegColors::ycc, one_color(6, {200, 100, 50})}));
    EXPECT_EQ(picture_in(picture).width(), 3);
    EXPECT_EQ(picture_in(picture).height(), 2);
    EXPECT_EQ(picture_in(picture).depth(), 32);
    EXPECT_EQ(stored_bytes(picture)[0], 0);
    for (const std::uint32_t color : colors_of(picture)) EXPECT_COLOR(color, 0xC86432u);
    EXPECT_FALSE(picture_in(picture).mask());
    EXPECT_COLOR(colors_of(decode(jpeg_file({1, 1, JpegColors::rgb, {200, 100, 50}})))[0], 0xC86432u);
}

TEST_F(JpegTest, ProgressiveFilesAreRead) {
    JpegSample sample = four_fields({});
    sample.progressive = true;
    const std::vector<std::uint32_t> colors = colors_of(decode(jpeg_file(sample)));
    EXPECT_COLOR(colors.front(), kRed);
    EXPECT_COLOR(colors.back(), kWhite);
}

TEST_F(JpegTest, GreysKeepTheirDepthOnRequest) {
    const FileBytes file = jpeg_file({8, 8, JpegColors::grey, one_color(64, {77})});
    EXPECT_EQ(picture_in(decode_keeping(file)).depth(), 8);
    EXPECT_EQ(stored_bytes(decode_keeping(file)), FileBytes(64, 77));
    EXPECT_EQ(colors_of(decode(file)), std::vector<std::uint32_t>(64, 0x4D4D4D));
}

TEST_F(JpegTest, InksAreConvertedPlainly) {
    // Cyan 20 %, magenta 40 %, yellow 60 %, black 50 %.
    const FileBytes inks = {51, 102, 153, 128};
    const FileBytes inverted = {204, 153, 102, 127};
    constexpr std::uint32_t kWanted = 0x664C33;
    EXPECT_COLOR(colors_of(decode(jpeg_file({1, 1, JpegColors::cmyk, inks})))[0], kWanted);
    EXPECT_COLOR(colors_of(decode(jpeg_file({1, 1, JpegColors::adobe_cmyk, inverted})))[0], kWanted);
    EXPECT_COLOR(colors_of(decode(jpeg_file({1, 1, JpegColors::adobe_ycck, inverted})))[0], kWanted);
    EXPECT_COLOR(colors_of(decode(jpeg_file({1, 1, JpegColors::cmyk, {0, 0, 0, 0}})))[0], kWhite);
    EXPECT_COLOR(colors_of(decode(jpeg_file({1, 1, JpegColors::adobe_cmyk, {255, 255, 255, 255}})))[0], kWhite);
}

// Whether a warning ends the library's call.
bool ends(int code, int level) {
    JpegErrors errors;
    jpeg_decompress_struct info;
    info.err = &errors.manager;
    errors.manager.msg_code = code;
    if (setjmp(errors.target)) return true;
    errors.manager.emit_message(reinterpret_cast<j_common_ptr>(&info), level);
    return false;
}

TEST(JpegErrorsTest, WarningsOfDamageEndTheCall) {
    for (const int code : {JWRN_JPEG_EOF, JWRN_HIT_MARKER, JWRN_MUST_RESYNC, JWRN_HUFF_BAD_CODE, JWRN_ARITH_BAD_CODE,
                           JWRN_BOGUS_PROGRESSION}) {
        EXPECT_TRUE(ends(code, -1)) << code;
        EXPECT_FALSE(ends(code, 0)) << code << ": a trace is no warning";
    }
    for (const int code : {JWRN_EXTRANEOUS_DATA, JWRN_JFIF_MAJOR, JWRN_ADOBE_XFORM}) EXPECT_FALSE(ends(code, -1));
}

TEST_F(JpegTest, ColorsThatNobodyKnowsAreRefused) {
    EXPECT_EQ(error_of(jpeg_file({1, 1, JpegColors::two_channels, {1, 2}})), "damaged: colors of an unknown kind");
}

TEST_F(JpegTest, EveryOrientationIsApplied) {
    const struct {
        int orientation;
        std::uint32_t top_left, top_right, bottom_left, bottom_right;
    } cases[] = {
        {1, kRed, kGreen, kBlue, kWhite}, {2, kGreen, kRed, kWhite, kBlue}, {3, kWhite, kBlue, kGreen, kRed},
        {4, kBlue, kWhite, kRed, kGreen}, {5, kRed, kBlue, kGreen, kWhite}, {6, kBlue, kRed, kWhite, kGreen},
        {7, kWhite, kGreen, kBlue, kRed}, {8, kGreen, kWhite, kRed, kBlue},
    };
    for (const auto& c : cases)
        for (const bool big_endian : {true, false}) {
            SCOPED_TRACE(c.orientation);
            const ObjectRef picture = decode(jpeg_file(four_fields(exif_of_orientation(c.orientation, big_endian))));
            EXPECT_EQ(picture_in(picture).width(), c.orientation < 5 ? 32 : 16);
            EXPECT_EQ(picture_in(picture).height(), c.orientation < 5 ? 16 : 32);
            const std::vector<std::uint32_t> colors = colors_of(picture);
            const auto width = static_cast<std::size_t>(picture_in(picture).width());
            EXPECT_COLOR(colors[0], c.top_left);
            EXPECT_COLOR(colors[width - 1], c.top_right);
            EXPECT_COLOR(colors[colors.size() - width], c.bottom_left);
            EXPECT_COLOR(colors.back(), c.bottom_right);
        }
}

TEST_F(JpegTest, ExifThatMeansNothingIsIgnored) {
    FileBytes wrong_type = exif_of_orientation(6);
    wrong_type[13] = 2;  // text
    const FileBytes kinds[] = {exif_of_orientation(0), exif_of_orientation(9), wrong_type, bytes_of("MM"),
                               bytes_of("no TIFF header at all")};
    for (const FileBytes& exif : kinds) EXPECT_EQ(picture_in(decode(jpeg_file(four_fields(exif)))).width(), 32);
}

// A decoder asks from the smallest size on, of pictures as they are seen.
TEST_F(JpegTest, DraftsAreOfTheFirstSizeThatDoes) {
    const struct {
        JpegColors colors;
        FileBytes pixel;
    } kinds[] = {{JpegColors::ycc, {200, 100, 50}}, {JpegColors::grey, {77}}, {JpegColors::cmyk, {51, 102, 153, 128}}};
    for (const auto& kind : kinds)
        for (const int orientation : {1, 6})
            for (const bool progressive : {false, true}) {
                const bool turned = orientation == 6;
                const JpegSample sample{
                    33, 20, kind.colors, one_color(33 * 20, kind.pixel), exif_of_orientation(orientation), progressive};
                const FileBytes file = jpeg_file(sample);
                const std::uint32_t color = colors_of(decode(file))[0];
                for (int eighths = 1; eighths <= 8; ++eighths) {
                    const int width = (33 * eighths + 7) / 8, height = (20 * eighths + 7) / 8;
                    int asked = 0;
                    const DraftRule rule = [&](int whole_width, int whole_height, int seen_width, int seen_height) {
                        ++asked;
                        EXPECT_EQ(whole_width, turned ? 20 : 33);
                        EXPECT_EQ(whole_height, turned ? 33 : 20);
                        return seen_width == (turned ? height : width) && seen_height == (turned ? width : height);
                    };
                    Carried carried;
                    const ObjectRef picture = decode_picture(host, file, {.draft = rule}, &carried);
                    EXPECT_EQ(asked, std::min(eighths, 7));
                    EXPECT_EQ(picture_in(picture).width(), turned ? height : width);
                    EXPECT_EQ(picture_in(picture).height(), turned ? width : height);
                    for (const std::uint32_t seen : colors_of(picture)) EXPECT_COLOR(seen, color);
                    EXPECT_EQ(carried.losses.size(), eighths < 8 ? 1u : 0u);
                }
            }
}

// The file with a segment of that marker and contents behind its first two bytes.
FileBytes with_segment(const FileBytes& file, std::uint8_t marker, const FileBytes& contents) {
    const std::size_t length = contents.size() + 2;
    const FileBytes head = {
        0xFF, 0xD8, 0xFF, marker, static_cast<std::uint8_t>(length >> 8), static_cast<std::uint8_t>(length)};
    return head + contents + FileBytes(file.begin() + 2, file.end());
}

TEST_F(JpegTest, FirstExifBlockCounts) {
    const FileBytes file = jpeg_file(four_fields(exif_of_orientation(3)));
    EXPECT_COLOR(colors_of(decode(with_segment(file, 0xE1, bytes_of("http://ns and more"))))[0], kWhite);
    EXPECT_COLOR(colors_of(decode(with_segment(file, 0xE1, bytes_of("Exi"))))[0], kWhite);
    EXPECT_COLOR(colors_of(decode(with_segment(file, 0xE1, {})))[0], kWhite);
    const FileBytes mark = bytes_of(std::string_view("Exif\0\0", 6));
    EXPECT_COLOR(colors_of(decode(with_segment(file, 0xE1, mark + exif_of_orientation(2))))[0], kGreen);
    const FileBytes longest = mark + exif_of_orientation(2) + FileBytes(65533 - 6 - exif_of_orientation(2).size());
    EXPECT_COLOR(colors_of(decode(with_segment(file, 0xE1, longest)))[0], kGreen);
}

// Of those that the library skips, and of those that are looked at, one lies across the end of a block of the file.
TEST_F(JpegTest, SegmentsThatMeanNothingAreSkipped) {
    const Folder folder;
    FileBytes file = jpeg_file(four_fields(exif_of_orientation(3)));
    FileBytes ends(65533, 0xFF);  // each of which would end the file
    for (std::size_t i = 1; i < ends.size(); i += 2) ends[i] = 0xD9;
    for (int i = 0; i < 9; ++i) file = with_segment(file, i < 4 ? 0xE1 : 0xFE, ends);
    write_bytes(folder.file("a.jpg"), file);
    EXPECT_COLOR(colors_of(read_picture_file(host, folder.file("a.jpg")))[0], kWhite);
    file.resize(300000);
    write_bytes(folder.file("a.jpg"), file);
    EXPECT_EQ(file_error([&] { read_picture_file(host, folder.file("a.jpg")); }), folder.file("a.jpg") + ": cut short");
}

TEST_F(JpegTest, SizesAreBounded) {
    FileBytes file = jpeg_file({8, 8, JpegColors::grey, FileBytes(64)});
    const FileBytes frame_mark = {0xFF, 0xC0};
    const auto frame = std::search(file.begin(), file.end(), frame_mark.begin(), frame_mark.end());
    ASSERT_NE(frame, file.end());
    frame[7] = 0x80;  // the width's high byte
    EXPECT_EQ(error_of(file), "the size is 32776 x 8 pixels, a side may have 32767");
    frame[7] = frame[5] = 0x7F;
    EXPECT_EQ(error_of(file), "the size is 32520 x 32520 pixels, together 1057550400, the limit is 268435456");
}

TEST_F(JpegTest, TablesThatNoFileHasAreDamage) {
    FileBytes file = jpeg_file({8, 8, JpegColors::grey, FileBytes(64)});
    const FileBytes frame_mark = {0xFF, 0xC0};
    const auto frame = std::search(file.begin(), file.end(), frame_mark.begin(), frame_mark.end());
    ASSERT_NE(frame, file.end());
    frame[12] = 4;  // the number of the channel's
    EXPECT_EQ(error_of(file), "damaged: Quantization table 0x04 was not defined");
}

// Each scan costs as much time as a picture, in however few bytes.
TEST_F(JpegTest, ScansAreBounded) {
    JpegSample sample = four_fields({});
    sample.separate_scans = true;
    const FileBytes file = jpeg_file(sample);
    EXPECT_COLOR(colors_of(decode(file))[0], kRed);

    const FileBytes scan_mark = {0xFF, 0xDA}, end_mark = {0xFF, 0xD9};
    const auto last_scan = std::find_end(file.begin(), file.end(), scan_mark.begin(), scan_mark.end());
    const FileBytes scan(last_scan, file.end() - 2);
    FileBytes longer(file.begin(), file.end() - 2);
    for (int i = 0; i < 190; ++i) longer = longer + scan;
    EXPECT_EQ(error_of(longer + end_mark), "");
    for (int i = 0; i < 20; ++i) longer = longer + scan;
    EXPECT_EQ(error_of(longer + end_mark), "damaged: too many scans");
}

TEST_F(JpegTest, WrittenColorsAreNear) {
    const ObjectRef picture = decode(jpeg_file(four_fields({})));
    const std::vector<std::uint32_t> before = colors_of(picture);
    const std::vector<std::uint32_t> after = colors_of(decode(encode_picture(picture_in(picture), "a.jpg")));
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < before.size(); ++i) EXPECT_TRUE(close_to(after[i], before[i], 6)) << i;
}

TEST_F(JpegTest, QualityCosts) {
    const ObjectRef picture = random_picture(host, {.width = 40, .height = 40}, 3);
    EXPECT_GT(encode_picture(picture_in(picture), "a.jpg", {.quality = 95}).size(),
              2 * encode_picture(picture_in(picture), "a.jpg", {.quality = 20}).size());
}

TEST_F(JpegTest, LargeFilesAreWrittenInChunks) {
    const ObjectRef picture = random_picture(host, {.width = 300, .height = 300}, 4);
    const FileBytes file = encode_picture(picture_in(picture), "a.jpeg", {.quality = 100});
    EXPECT_GT(file.size(), 2u * 65536);
    EXPECT_EQ(picture_in(decode(file)).height(), 300);
}

TEST_F(JpegTest, PicturesOfGreysAreWrittenAsGreys) {
    const ObjectRef grey = random_picture(host, {.width = 16, .height = 16, .depth = 8}, 9);
    EXPECT_EQ(picture_in(decode_keeping(encode_picture(picture_in(grey), "a.jpg"))).depth(), 8);
    const ObjectRef colored = host.new_picture({.width = 8, .height = 8, .depth = 8, .colors = {{0xFFFF, 0, 0}}});
    EXPECT_EQ(picture_in(decode_keeping(encode_picture(picture_in(colored), "a.jpg"))).depth(), 32);
}

}  // namespace
}  // namespace tarvo::host
