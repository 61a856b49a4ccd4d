// WebP files: what is written and read, without loss and with it, with metadata, animations, and of other makers.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <webp/encode.h>
#include <webp/mux.h>

#include <algorithm>
#include <thread>

#include "file_samples.h"
#include "metadata_samples.h"
#include "pixels.h"
#include "png_samples.h"
#include "watched.h"

namespace tarvo::host {
namespace {

using Colors = std::vector<std::uint32_t>;

class WebpTest : public FilesTest {
protected:
    FileBytes webp(const ObjectRef& picture, WriteOptions options = {}) {
        return encode_picture(picture_in(picture), "a.webp", options, &report);
    }
    ObjectRef read(const FileBytes& file) { return decode_picture(host, file, {}, &carried); }

    ObjectRef masked(int width, int height, unsigned seed) {
        const ObjectRef made = random_picture(host, {.width = width, .height = height}, seed);
        picture_in(made).set_mask(random_picture(host, {.width = width, .height = height, .depth = 8}, seed + 1));
        return made;
    }

    Carried carried;
    WriteReport report;
};

TEST_F(WebpTest, EveryPixelIsKept) {
    unsigned seed = 1;
    for (const Compression compression : {Compression::fast, Compression::normal, Compression::small})
        for (const int depth : {1, 2, 4, 8, 16, 32})
            for (const bool with_mask : {false, true})
                for (const int width : {1, 3, 70}) {
                    SCOPED_TRACE(testing::Message() << static_cast<int>(compression) << ": " << depth << " bits, width "
                                                    << width << (with_mask ? ", mask" : ""));
                    const PictureOptions options{.width = width, .height = 9, .depth = depth};
                    const ObjectRef picture = random_picture(host, options, ++seed);
                    if (with_mask)
                        picture_in(picture).set_mask(random_picture(host, {.width = width, .height = 9}, ++seed));
                    const ObjectRef made = read(webp(picture, {.compression = compression}));
                    EXPECT_EQ(colors_of(made), colors_of(picture));  // also of what is clear
                    ASSERT_EQ(bool(picture_in(made).mask()), with_mask);
                    EXPECT_FALSE(report.mask_left_out);
                    EXPECT_EQ(in_words(report.pixels), in_words(carried.pixels));
                }
    EXPECT_EQ(in_words(carried.pixels), "RGB, 8 bits a channel, mask");
}

TEST_F(WebpTest, MasksAreAlpha) {
    const ObjectRef picture = masked(5, 4, 3);
    const ObjectRef made = read(webp(picture));
    Colors levels;
    for (const std::uint8_t level : stored_bytes(picture_in(picture).mask())) levels.push_back(level * 0x010101u);
    EXPECT_EQ(colors_of(picture_in(made).mask()), levels);
}

TEST_F(WebpTest, AQualityLosesSomething) {
    const ObjectRef picture = random_picture(host, {.width = 64, .height = 64}, 3);
    const FileBytes all = webp(picture), good = webp(picture, {.quality = 95}), poor = webp(picture, {.quality = 20});
    EXPECT_GT(all.size(), good.size());
    EXPECT_GT(good.size(), 2 * poor.size());
    EXPECT_NE(colors_of(read(poor)), colors_of(picture));
    EXPECT_EQ(colors_of(read(poor)).size(), 64u * 64);
    const ObjectRef with_mask = masked(20, 20, 5);
    const ObjectRef made = read(webp(with_mask, {.quality = 50}));
    EXPECT_EQ(colors_of(picture_in(made).mask()), colors_of(picture_in(read(webp(with_mask))).mask()));
}

// The planes are made in parts.
TEST_F(WebpTest, WhatLosesSomethingIsAsTheLibraryMakesItOfTheWhole) {
    for (const int height : {1, 64, 65, 127, 200}) {
        const ObjectRef picture = random_picture(host, {.width = 33, .height = height}, 8);
        Bytes rgb;
        for (const std::uint32_t color : colors_of(picture))
            for (const int shift : {16, 8, 0}) rgb.push_back(static_cast<std::uint8_t>(color >> shift));
        std::uint8_t* made = nullptr;
        const std::size_t length = WebPEncodeRGB(rgb.data(), 33, height, 33 * 3, 60, &made);
        EXPECT_EQ(webp(picture, {.quality = 60}), FileBytes(made, made + length)) << height;
        WebPFree(made);
    }
}

// Alpha in some bands alone.
TEST_F(WebpTest, MasksAreKeptWhereColorsAreNot) {
    for (const int clear : {0, 70, 199}) {
        const ObjectRef picture = random_picture(host, {.width = 9, .height = 200}, 8);
        picture_in(picture).set_mask(host.new_picture({.width = 9, .height = 200}));
        Picture& mask = picture_in(picture_in(picture).mask());
        for (int y = 0; y < 200; ++y)
            for (int x = 0; x < 9; ++x) store_pixel(mask.row(y), x, 32, y == clear ? 0xFFFFFF : 0);
        const ObjectRef made = read(webp(picture, {.quality = 60}));
        ASSERT_TRUE(picture_in(made).mask());
        EXPECT_EQ(colors_of(picture_in(made).mask()), colors_of(picture_in(picture).mask()));
    }
}

// So much noise is told with more effort than was asked for.
TEST_F(WebpTest, LargeFilesOfNoiseCanBeMadeWithLittleEffort) {
    if (test::kAddressesWatched) GTEST_SKIP() << "libwebp takes seconds, and nobody watches it";
    const ObjectRef picture = random_picture(host, {.width = 4000, .height = 4000}, 4);
    const FileBytes file = webp(picture, {.quality = 100, .compression = Compression::fast});
    EXPECT_EQ(picture_in(read(file)).width(), 4000);
}

TEST_F(WebpTest, GreysAndPalettesBecomeColors) {
    const Carried like{.pixels = {FilePixels::Colors::grey, 8}};
    const ObjectRef grey = host.new_picture({.width = 3, .height = 3});
    webp(grey, {.carried = &like});
    EXPECT_EQ(in_words(report.pixels), "RGB, 8 bits a channel");
    Carried profiled{.pixels = like.pixels, .metadata = {.icc = profile("GRAY")}};
    webp(grey, {.carried = &profiled});
    EXPECT_EQ(report.losses.size(), 1u);
}

TEST_F(WebpTest, MetadataGoThrough) {
    const ObjectRef picture = random_picture(host, {.width = 32, .height = 16}, 7);
    Carried before;
    before.metadata.exif = exif_of_orientation(1);
    before.metadata.xmp = bytes_of("<x:xmpmeta/>");
    before.metadata.icc = profile("RGB ");
    for (const std::optional<int> quality : {std::optional<int>(), std::optional(80)}) {
        const FileBytes file = webp(picture, {.quality = quality, .carried = &before});
        EXPECT_TRUE(report.losses.empty());
        EXPECT_EQ(colors_of(read(file)).size(), 512u);
        EXPECT_EQ(carried.metadata.exif, before.metadata.exif);
        EXPECT_EQ(carried.metadata.xmp, before.metadata.xmp);
        EXPECT_EQ(carried.metadata.icc, before.metadata.icc);
    }
    before.metadata.iptc = resource(0x0404, bytes_of("records"));
    before.metadata.resolution = Resolution{300, 300, Resolution::Unit::inch};
    webp(picture, {.carried = &before});
    ASSERT_EQ(report.losses.size(), 1u);
    EXPECT_EQ(report.losses[0].words, "has no room for IPTC and the resolution: they are left out");
}

TEST_F(WebpTest, AResolutionThatExifHasIsNotMissed) {
    const Bytes exif = {'M',  'M', 0, 42, 0, 0, 0, 8, 0, 2, 1,  0x1A, 0, 5, 0, 0, 0, 1, 0,    0, 0, 38, 1,
                        0x1B, 0,   5, 0,  0, 0, 1, 0, 0, 0, 38, 0,    0, 0, 0, 0, 0, 1, 0x2C, 0, 0, 0,  2};
    Carried before;
    before.metadata.exif = exif;
    before.metadata.resolution = Resolution{150, 150, Resolution::Unit::inch};
    const ObjectRef picture = host.new_picture({.width = 2, .height = 2});
    const FileBytes file = webp(picture, {.carried = &before});
    EXPECT_TRUE(report.losses.empty());
    read(file);
    EXPECT_EQ(carried.metadata.resolution, before.metadata.resolution);
    before.metadata.resolution = Resolution{72, 72, Resolution::Unit::inch};
    webp(picture, {.carried = &before});
    EXPECT_EQ(report.losses.size(), 1u);
}

// A file with a chunk of its own.
FileBytes with_chunk(const FileBytes& file, const char* name, const FileBytes& bytes) {
    WebPMux* mux = WebPMuxNew();
    const WebPData image{file.data(), file.size()}, data{bytes.data(), bytes.size()};
    EXPECT_EQ(WebPMuxSetImage(mux, &image, 1), WEBP_MUX_OK);
    EXPECT_EQ(WebPMuxSetChunk(mux, name, &data, 1), WEBP_MUX_OK);
    WebPData whole = {};
    EXPECT_EQ(WebPMuxAssemble(mux, &whole), WEBP_MUX_OK);
    FileBytes made(whole.bytes, whole.bytes + whole.size);
    WebPDataClear(&whole);
    WebPMuxDelete(mux);
    return made;
}

TEST_F(WebpTest, OrientationsAreApplied) {
    const ObjectRef picture = random_picture(host, {.width = 3, .height = 2}, 9);
    const Colors stored = colors_of(picture);
    for (const bool marked : {false, true}) {
        const FileBytes mark = marked ? bytes_of({"Exif\0\0", 6}) : FileBytes();
        const ObjectRef turned = read(with_chunk(webp(picture), "EXIF", mark + exif_of_orientation(6)));
        EXPECT_EQ(picture_in(turned).width(), 2);
        EXPECT_EQ(colors_of(turned), (Colors{stored[3], stored[0], stored[4], stored[1], stored[5], stored[2]}));
        EXPECT_EQ(carried.metadata.exif, exif_of_orientation(1));
    }
}

TEST_F(WebpTest, OfAnAnimationTheFirstFrameIsRead) {
    const ObjectRef small = random_picture(host, {.width = 4, .height = 2}, 11);
    const FileBytes frame = webp(small);
    WebPMux* mux = WebPMuxNew();
    WebPMuxFrameInfo info = {};
    info.bitstream = {frame.data(), frame.size()};
    info.x_offset = 2;
    info.y_offset = 4;
    info.duration = 100;
    info.id = WEBP_CHUNK_ANMF;
    for (int i = 0; i < 3; ++i) EXPECT_EQ(WebPMuxPushFrame(mux, &info, 1), WEBP_MUX_OK);
    const WebPMuxAnimParams how{0xFFFFFFFF, 0};
    WebPMuxSetAnimationParams(mux, &how);
    EXPECT_EQ(WebPMuxSetCanvasSize(mux, 8, 7), WEBP_MUX_OK);
    WebPData whole = {};
    EXPECT_EQ(WebPMuxAssemble(mux, &whole), WEBP_MUX_OK);
    const ObjectRef read_back = read({whole.bytes, whole.bytes + whole.size});
    WebPDataClear(&whole);
    WebPMuxDelete(mux);
    EXPECT_EQ(picture_in(read_back).width(), 8);
    EXPECT_EQ(picture_in(read_back).height(), 7);
    ASSERT_TRUE(picture_in(read_back).mask());
    const Colors colors = colors_of(read_back), mask = colors_of(picture_in(read_back).mask()),
                 wanted = colors_of(small);
    for (std::size_t y = 0; y < 7; ++y)
        for (std::size_t x = 0; x < 8; ++x) {
            const bool inside = x >= 2 && x < 6 && y >= 4 && y < 6;
            EXPECT_EQ(mask[y * 8 + x], inside ? 0u : 0xFFFFFFu);
            if (inside) {
                EXPECT_EQ(colors[y * 8 + x], wanted[(y - 4) * 4 + x - 2]);
            }
        }
    ASSERT_EQ(carried.losses.size(), 1u);
    EXPECT_EQ(carried.losses[0].words, "has 3 frames: only the first is read");
}

TEST_F(WebpTest, SizesAreBounded) {
    EXPECT_EQ(file_error([&] { webp(host.new_picture({.width = 16384, .height = 1})); }),
              "the size is 16384 x 1 pixels, a side of WebP may have 16383");
    EXPECT_EQ(file_error([&] { webp(host.new_picture({.width = 16383, .height = 1})); }), "");
    const FileBytes file = webp(random_picture(host, {.width = 20, .height = 20}, 3));
    EXPECT_EQ(file_error([&] { decode_picture(host, file, {.max_pixels = 399}); }),
              "the size is 20 x 20 pixels, together 400, the limit is 399");
}

// Sizes and lengths that are only claimed cost nothing.
TEST_F(WebpTest, ClaimsAreRefused) {
    FileBytes file = webp(random_picture(host, {.width = 20, .height = 20}, 3));
    file[6] = file[7] = 0x7F;
    EXPECT_EQ(error_of(file), "cut short");
}

TEST_F(WebpTest, EffortTellsWithLossToo) {
    const ObjectRef picture = random_picture(host, {.width = 96, .height = 96}, 3);
    for (int y = 0; y < 96; ++y)
        for (int i = 0; i < 4 * 96; ++i) picture_in(picture).row(y)[i] = static_cast<std::uint8_t>(i * y / 40 & 0xF0);
    std::size_t sizes[3] = {};
    for (const Compression compression : {Compression::fast, Compression::normal, Compression::small}) {
        const FileBytes file = webp(picture, {.quality = 50, .compression = compression});
        EXPECT_EQ(colors_of(read(file)).size(), 96u * 96);
        sizes[static_cast<std::size_t>(compression)] = file.size();
    }
    EXPECT_NE(sizes[0], sizes[1]);
    EXPECT_NE(sizes[1], sizes[2]);
    EXPECT_EQ(file_error([&] { webp(host.new_picture({.width = 1, .height = 16384})); }),
              "the size is 1 x 16384 pixels, a side of WebP may have 16383");
}

TEST_F(WebpTest, EachKindOfMetadataGoesThroughAlone) {
    const ObjectRef picture = random_picture(host, {.width = 8, .height = 8}, 7);
    for (const Bytes Metadata::*kind : {&Metadata::exif, &Metadata::xmp, &Metadata::icc}) {
        Metadata all;
        all.exif = exif_of_orientation(1);
        all.xmp = bytes_of("<x:xmpmeta/>");
        all.icc = profile("RGB ");
        Carried before;
        before.metadata = without(all, kAllMetadata);
        const_cast<Bytes&>(before.metadata.*kind) = all.*kind;
        EXPECT_EQ(colors_of(read(webp(picture, {.carried = &before}))), colors_of(picture));
        EXPECT_EQ(carried.metadata.exif, before.metadata.exif);
        EXPECT_EQ(carried.metadata.xmp, before.metadata.xmp);
        EXPECT_EQ(carried.metadata.icc, before.metadata.icc);
    }
}

TEST_F(WebpTest, MetadataBeyondTheLimitAreLeftOutAndToldOnce) {
    const Bytes much(kMostMetadataBytes + 1, 'x');
    const ObjectRef picture = random_picture(host, {.width = 3, .height = 2}, 9);
    FileBytes file = with_chunk(webp(picture), "EXIF", much);
    file[20] |= 4;  // it says that there is XMP, too
    const Bytes chunk = bytes_of("XMP ") + Bytes{1, 0, 0x80, 0} + much + Bytes(1);
    file = file + chunk;
    const std::uint32_t behind_head = static_cast<std::uint32_t>(file.size()) - 8;
    for (int i = 0; i < 4; ++i) file[static_cast<std::size_t>(4 + i)] = static_cast<std::uint8_t>(behind_head >> 8 * i);
    EXPECT_EQ(colors_of(read(file)), colors_of(picture));
    EXPECT_TRUE(carried.metadata.exif.empty() && carried.metadata.xmp.empty());
    ASSERT_EQ(carried.losses.size(), 1u);
    EXPECT_EQ(carried.losses[0].words, too_much_metadata().words);
}

// How long it is nobody knows before.
TEST_F(WebpTest, PipesAreReadToTheirEnd) {
    const FileBytes file = webp(random_picture(host, {.width = 64, .height = 64}, 3));
    const Folder folder;
    const auto error = [&](std::size_t length) {
        const std::string path = folder.file("pipe" + std::to_string(length));
        EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
        std::thread writer([&] {
            write_bytes(path, {file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length)});
        });
        const std::string message = file_error([&] { read_picture_file(host, path); });
        writer.join();
        return message.substr(std::min(path.size(), message.size()));
    };
    EXPECT_EQ(error(file.size()), "");
    EXPECT_EQ(error(file.size() - 1), ": cut short");
    EXPECT_EQ(error(100), ": cut short");
}

TEST(WebpLimits, OfMemoryAreAllOfAFile) {
    FileBytes file;
    {
        Host host;
        file = encode_picture(picture_in(random_picture(host, {.width = 64, .height = 64}, 3)), "a.webp");
    }
    const std::uint64_t needed = 64 * 64 * (4 + 3 + 4) + file.size();
    for (const unsigned less : {0u, 1u}) {
        Host host({.limits = {.max_memory = needed - less}});
        if (less == 0)
            EXPECT_NO_THROW(decode_picture(host, file));
        else
            EXPECT_THROW(decode_picture(host, file), LimitedError);
    }
}

}  // namespace
}  // namespace tarvo::host
