// Files that are cut off, damaged or lie: each gives a picture or an error of one line, and nothing is left behind.

#include <gtest/gtest.h>

#include "file_samples.h"
#ifdef TARVO_PICTURE_LIBRARIES
#include "jpeg_samples.h"
#include "png_samples.h"
#endif
#ifdef TARVO_TIFF
#include "tiff_samples.h"
#endif

namespace tarvo::host {
namespace {

struct NamedFile {
    std::string name;
    FileBytes bytes;
};

FileBytes counting(std::size_t count) {
    FileBytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(i * 37 + 11);
    return bytes;
}

std::vector<NamedFile> valid_files([[maybe_unused]] Host& host) {
    std::vector<NamedFile> files = {
        {"pbm", bytes_of("P4\n# bits\n12 3\n") + counting(6)},
        {"pgm", bytes_of("P5\n5 3\n65535\n") + counting(30)},
        {"ppm", bytes_of("P6\n5 3\n255\n") + counting(45)},
        {"pam", bytes_of("P7\nWIDTH 3\nHEIGHT 2\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n") + counting(24)},
    };
#ifdef TARVO_PICTURE_LIBRARIES
    FileBytes rows = counting(3 * (1 + 5 * 4));
    for (std::size_t y = 0; y < 3; ++y) rows[y * 21] = static_cast<std::uint8_t>(y);  // the filters
    files.push_back({"png", png_file({.width = 5,
                                      .height = 3,
                                      .bit_depth = 8,
                                      .color_type = 6,
                                      .rows = rows,
                                      .exif = exif_of_orientation(6)})});
    files.push_back({"palette png", png_file({.width = 6,
                                              .height = 2,
                                              .bit_depth = 2,
                                              .color_type = 3,
                                              .rows = {0, 0x1B, 0xE4, 0, 0x00, 0xFF},
                                              .palette = counting(9),
                                              .clear = {0, 128, 255}})});
    files.push_back({"interlaced png", png_file({.width = 3,
                                                 .height = 3,
                                                 .bit_depth = 8,
                                                 .color_type = 0,
                                                 .rows = {0, 1, 0, 3, 0, 7, 9, 0, 2, 0, 8, 0, 4, 5, 6},
                                                 .interlaced = true})});
    files.push_back({"jpeg", jpeg_file({9, 9, JpegColors::ycc, counting(243), exif_of_orientation(8)})});
    files.push_back({"progressive jpeg", jpeg_file({17, 9, JpegColors::ycc, counting(459), {}, true})});
    files.push_back({"inks jpeg", jpeg_file({9, 9, JpegColors::adobe_ycck, counting(324)})});
#endif
#ifdef TARVO_TIFF
    const FileBytes some = counting(19 * 17 * 3);
    TiffSample tiff{19, 17, 8, 3, 2, {some.begin(), some.end()}};
    files.push_back({"tiff", tiff_file(tiff)});
    tiff.compression = 5;
    tiff.tile = 16;
    tiff.mode = "b";
    files.push_back({"tiff of tiles", tiff_file(tiff)});
    tiff.compression = 8;
    tiff.tile = 0;
    tiff.planes = true;
    tiff.mode = "8l";
    files.push_back({"tiff of planes", tiff_file(tiff)});
    TiffSample fax{40, 6, 1, 1, 0, std::vector<std::uint16_t>(240)};
    for (std::size_t i = 0; i < fax.values.size(); ++i) fax.values[i] = i * i % 7 < 3;
    fax.compression = 4;
    files.push_back({"fax tiff", tiff_file(fax)});
    TiffSample photo{16, 16, 8, 3, 6, {some.begin(), some.begin() + 768}};
    photo.compression = 7;
    photo.rows_in_a_strip = 16;
    files.push_back({"jpeg tiff", tiff_file(photo)});
#endif
#ifdef TARVO_WEBP
    const ObjectRef some_picture = random_picture(host, {.width = 19, .height = 17}, 3);
    picture_in(some_picture).set_mask(random_picture(host, {.width = 19, .height = 17}, 4));
    const Carried with{.metadata = {.exif = exif_of_orientation(1), .xmp = bytes_of("<x:xmpmeta/>")}};
    files.push_back({"webp", encode_picture(picture_in(some_picture), "a.webp")});
    files.push_back({"webp with metadata", encode_picture(picture_in(some_picture), "a.webp", {.carried = &with})});
    files.push_back({"webp with loss", encode_picture(picture_in(some_picture), "a.webp", {.quality = 70})});
#endif
    return files;
}

class HostileFiles : public FilesTest {
protected:
    // True when a picture came of it; anything but that and a proper error fails the test.
    bool opens(const FileBytes& file) {
        const Accounts before = host.accounts();
        bool opened = false;
        const std::string error = file_error([&] {
            for (const bool keep_depth : {false, true}) {
                const ObjectRef picture = decode_picture(host, file, {.keep_depth = keep_depth, .max_pixels = 1 << 20});
                opened = picture_in(picture).width() > 0;
            }
        });
        EXPECT_NE(opened, !error.empty());
        EXPECT_EQ(error.find_first_of("\r\n"), std::string::npos) << error;
        EXPECT_LT(error.size(), 200u);
        EXPECT_EQ(host.accounts(), before);
        return opened;
    }
};

TEST_F(HostileFiles, CutShortAnywhereAreErrors) {
    for (const NamedFile& file : valid_files(host)) {
        EXPECT_TRUE(opens(file.bytes)) << file.name;
        for (std::size_t length = 0; length < file.bytes.size(); ++length) {
            const FileBytes cut(file.bytes.begin(), file.bytes.begin() + static_cast<std::ptrdiff_t>(length));
            EXPECT_FALSE(opens(cut)) << file.name << " of " << length << " bytes";
        }
    }
}

TEST_F(HostileFiles, WithFlippedBitsOpenOrAreErrors) {
    std::mt19937 random(20051);
    for (const NamedFile& file : valid_files(host)) {
        int opened = 0;
        for (int round = 0; round < 1500; ++round) {
            FileBytes damaged = file.bytes;
            for (std::uint32_t flips = 1 + random() % 4; flips > 0; --flips)
                damaged[random() % damaged.size()] ^= static_cast<std::uint8_t>(1u << random() % 8);
            opened += opens(damaged);
        }
        EXPECT_LT(opened, 1500) << file.name;
    }
}

TEST_F(HostileFiles, OfJunkBehindAnySignatureOpenOrAreErrors) {
    const std::string_view signatures[] = {"P1 ",
                                           "P2 ",
                                           "P3 ",
                                           "P4 ",
                                           "P5 9 9 255 ",
                                           "P6 ",
                                           "P7\n",
                                           "\x89PNG\r\n\x1A\n",
                                           "\xFF\xD8\xFF",
                                           "\xFF\xD8\xFF\xE1",
                                           {"II*\0", 4},
                                           {"MM\0*\0\0\0\x8", 8},
                                           {"RIFF\x90\1\0\0WEBPVP8 ", 16},
                                           {"RIFF\x90\1\0\0WEBPVP8L", 16},
                                           {"RIFF\x90\1\0\0WEBPVP8X\x0A\0\0\0\x10\0\0\0\x08\0\0\x08\0\0", 30},
                                           {"II+\0\x8\0\0", 7}};
    std::mt19937 random(20060);
    for (const std::string_view signature : signatures)
        for (int round = 0; round < 300; ++round) {
            FileBytes junk(random() % 400);
            for (std::uint8_t& byte : junk) byte = static_cast<std::uint8_t>(random());
            opens(bytes_of(signature) + junk);
        }
}

TEST_F(HostileFiles, ThatGoOnAfterTheirEndOpen) {
    for (const NamedFile& file : valid_files(host)) EXPECT_TRUE(opens(file.bytes + counting(100))) << file.name;
}

}  // namespace
}  // namespace tarvo::host
