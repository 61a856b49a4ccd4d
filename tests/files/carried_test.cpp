// What files carry besides pixels, from file to file.

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>

#include "exif.h"
#include "file_samples.h"
#include "jpeg_samples.h"
#include "metadata_samples.h"
#include "png_chunks.h"
#include "png_samples.h"

namespace tarvo::host {
namespace {

class CarriedTest : public FilesTest {
protected:
    // The picture's file, of that ending, with what another has carried.
    Carried written(const ObjectRef& made, const char* name, const Carried& with, WriteOptions options = {}) {
        options.carried = &with;
        Carried again;
        decode_picture(host, encode_picture(picture_in(made), name, options, &report), {}, &again);
        return again;
    }
    ObjectRef read(const FileBytes& file) { return decode_picture(host, file, {}, &carried); }

    WriteReport report;
    Carried carried;
    const ObjectRef picture = random_picture(host, {.width = 32, .height = 16, .depth = 32}, 7);
};

Metadata everything() {
    Metadata metadata;
    metadata.exif = exif_of_orientation(1);
    metadata.xmp = bytes_of("<x:xmpmeta/>");
    metadata.iptc = resource(0x0404, bytes_of("records"));
    metadata.icc = profile("RGB ");
    metadata.resolution = Resolution{300, 150, Resolution::Unit::inch};
    return metadata;
}

TEST_F(CarriedTest, EverythingGoesThroughJpegAndPng) {
    carried.metadata = everything();
    for (const char* name : {"a.jpg", "a.png"}) {
        const Metadata again = written(picture, name, carried).metadata;
        EXPECT_EQ(again.exif, carried.metadata.exif) << name;
        EXPECT_EQ(again.xmp, carried.metadata.xmp) << name;
        EXPECT_EQ(again.iptc, carried.metadata.iptc) << name;
        EXPECT_EQ(again.icc, carried.metadata.icc) << name;
        ASSERT_TRUE(again.resolution) << name;
        EXPECT_NEAR(again.resolution->in(Resolution::Unit::inch).x, 300, 0.02) << name;
        EXPECT_NEAR(again.resolution->in(Resolution::Unit::inch).y, 150, 0.02) << name;
        EXPECT_TRUE(report.losses.empty()) << name;
    }
}

TEST_F(CarriedTest, FormatsWithoutRoomTellIt) {
    carried.metadata = everything();
    for (const char* name : {"a.pbm", "a.pgm", "a.ppm", "a.pam"}) {
        static_cast<void>(written(picture, name, carried));
        EXPECT_EQ(report.losses.size(), 2u) << name;
    }
}

TEST_F(CarriedTest, ResolutionsKeepTheirUnitWhereTheFormatHasIt) {
    for (const auto unit : {Resolution::Unit::none, Resolution::Unit::inch, Resolution::Unit::centimetre}) {
        carried.metadata.resolution = Resolution{118, 59, unit};
        EXPECT_EQ(written(picture, "a.jpg", carried).metadata.resolution, carried.metadata.resolution);
    }
    carried.metadata.resolution = Resolution{2835, 2835, Resolution::Unit::metre};
    EXPECT_EQ(written(picture, "a.png", carried).metadata.resolution, carried.metadata.resolution);
    EXPECT_EQ(written(picture, "a.jpg", carried).metadata.resolution, (Resolution{72, 72, Resolution::Unit::inch}));
}

TEST_F(CarriedTest, WithoutAResolutionOfItsOwnAFileHasThatOfItsExif) {
    Bytes exif = {'M',  'M', 0, 42, 0, 0, 0, 8, 0, 2, 1,  0x1A, 0, 5, 0, 0, 0, 1, 0,    0, 0, 38, 1,
                  0x1B, 0,   5, 0,  0, 0, 1, 0, 0, 0, 38, 0,    0, 0, 0, 0, 0, 1, 0x2C, 0, 0, 0,  2};
    read(jpeg_file({8, 8, JpegColors::grey, FileBytes(64), exif}));
    EXPECT_EQ(carried.metadata.resolution, (Resolution{150, 150, Resolution::Unit::inch}));
    exif.back() = 0;
    read(jpeg_file({8, 8, JpegColors::grey, FileBytes(64), exif}));
    EXPECT_FALSE(carried.metadata.resolution);
}

TEST_F(CarriedTest, ExifIsTrueOfThePictureThatIsRead) {
    for (int orientation = 1; orientation <= 8; ++orientation) {
        read(jpeg_file({8, 4, JpegColors::grey, FileBytes(32), exif_of_orientation(orientation)}));
        EXPECT_EQ(carried.metadata.exif, exif_of_orientation(1)) << orientation;
    }
}

TEST_F(CarriedTest, ExifIsTrueOfThePictureThatIsWritten) {
    Bytes exif = exif_of_orientation(1);
    exif[11] = 0x00;  // the tag of the width instead
    carried.metadata.exif = exif;
    const Carried again = written(picture, "a.png", carried);
    EXPECT_EQ(read_exif(again.metadata.exif).width->value, 32u);
}

TEST_F(CarriedTest, ProfilesOfGreysGoWithGreysAlone) {
    const PictureOptions options{.width = 8, .height = 8, .depth = 8};
    const ObjectRef grey = host.new_picture(options);  // without colours of its own: greys
    for (const char* name : {"a.jpg", "a.png"}) {
        carried.metadata.icc = profile("GRAY");
        EXPECT_TRUE(written(picture, name, carried).metadata.icc.empty());
        EXPECT_EQ(report.losses.size(), 1u);
        EXPECT_EQ(written(grey, name, carried).metadata.icc, carried.metadata.icc) << name;
        EXPECT_TRUE(report.losses.empty());
        carried.metadata.icc = profile("RGB ");
        EXPECT_TRUE(written(grey, name, carried).metadata.icc.empty());
        EXPECT_EQ(report.losses.size(), 1u);
        EXPECT_EQ(written(picture, name, carried).metadata.icc, carried.metadata.icc) << name;
    }
}

TEST_F(CarriedTest, JpegOfJpegHasItsQualityAndSampling) {
    for (const int quality : {1, 2, 25, 50, 74, 75, 76, 90, 99, 100})
        for (const JpegMaking& made : {JpegMaking{quality, 1, 1}, JpegMaking{quality, 2, 1}, JpegMaking{quality, 2, 2},
                                       JpegMaking{quality, 1, 2}, JpegMaking{quality, 4, 1}}) {
            carried.jpeg = made;
            EXPECT_EQ(written(picture, "a.jpg", carried).jpeg, made);
        }
    EXPECT_EQ(written(picture, "a.jpg", carried, {.quality = 33}).jpeg, (JpegMaking{33, 4, 1}));
    carried.jpeg.reset();
    EXPECT_EQ(written(picture, "a.jpg", carried).jpeg, (JpegMaking{92, 1, 1}));
    EXPECT_FALSE(written(picture, "a.png", carried).jpeg);
}

TEST_F(CarriedTest, SamplingsThatAreNeverWrittenAreNotKept) {
    using Sampling = std::vector<std::pair<int, int>>;
    const FileBytes samples(32 * 32 * 3, 100);
    for (const Sampling& sampling :
         {Sampling{{3, 1}, {1, 1}, {1, 1}}, Sampling{{1, 3}, {1, 1}, {1, 1}}, Sampling{{2, 2}, {2, 1}, {1, 1}},
          Sampling{{2, 2}, {1, 2}, {1, 1}}, Sampling{{4, 4}, {1, 1}, {1, 1}}, Sampling{{4, 2}, {1, 1}, {1, 1}}}) {
        read(jpeg_file({32, 32, JpegColors::ycc, samples, {}, false, true, sampling}));
        const bool is_written = sampling[0] == std::pair(4, 2);
        EXPECT_EQ(carried.jpeg, (is_written ? JpegMaking{100, 4, 2} : JpegMaking{100, 1, 1}))
            << sampling[0].first << " x " << sampling[0].second;
    }
}

// A JFIF segment with that unit, and so many dots.
TEST_F(CarriedTest, ResolutionsOfJpegThatTellNothingAreNone) {
    FileBytes file = jpeg_file({8, 8, JpegColors::grey, FileBytes(64)});
    const auto resolution = [&](std::uint8_t unit, std::uint8_t x, std::uint8_t y) {
        file[13] = unit;
        file[15] = x;
        file[17] = y;
        read(file);
        return carried.metadata.resolution;
    };
    EXPECT_EQ(resolution(1, 150, 75), (Resolution{150, 75, Resolution::Unit::inch}));
    EXPECT_EQ(resolution(0, 2, 1), (Resolution{2, 1, Resolution::Unit::none}));
    EXPECT_FALSE(resolution(0, 1, 1));
    EXPECT_FALSE(resolution(1, 0, 75));
    EXPECT_FALSE(resolution(1, 150, 0));
    EXPECT_FALSE(resolution(3, 150, 75));
}

TEST_F(CarriedTest, WhatTurnsWithThePictureIsTurned) {
    carried.jpeg = JpegMaking{90, 2, 1};
    carried.metadata.resolution = Resolution{300, 150, Resolution::Unit::inch};
    FileBytes file = encode_picture(picture_in(picture), "a.jpg", {.carried = &carried});
    FileBytes segment = bytes_of(std::string_view("\xFF\xE1\0\0Exif\0\0", 10)) + exif_of_orientation(6);
    segment[3] = static_cast<std::uint8_t>(segment.size() - 2);
    file.insert(file.begin() + 20, segment.begin(), segment.end());  // behind JFIF's
    read(file);
    EXPECT_EQ(carried.jpeg, (JpegMaking{90, 1, 2}));
    EXPECT_EQ(carried.metadata.resolution, (Resolution{150, 300, Resolution::Unit::inch}));
}

// The chunks of PNG's three ways.
class PngWays : public CarriedTest {
protected:
    static Bytes packed(const Bytes& bytes) {
        Bytes stream(compressBound(bytes.size()));
        uLongf size = stream.size();
        compress(stream.data(), &size, bytes.data(), bytes.size());
        stream.resize(size);
        return stream;
    }
    static Bytes digits(const std::string& type, const Bytes& bytes) {
        std::string text = "\n" + type + "\n      " + std::to_string(bytes.size()) + "\n";
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            constexpr char kDigits[] = "0123456789ABCDEF";
            text += kDigits[bytes[i] >> 4];
            text += kDigits[bytes[i] & 15];
            if (i % 36 == 35) text += '\n';
        }
        return bytes_of(text);
    }
    void add_raw(const std::string& type, const Bytes& bytes, bool compressed = false) {
        const Bytes keyword = bytes_of("Raw profile type " + type) + Bytes(compressed ? 2 : 1);
        const Bytes text = digits(type, bytes);
        chunks.add(compressed ? "zTXt" : "tEXt", keyword + (compressed ? packed(text) : text));
    }

    PngChunks chunks;
    Losses losses;
};

TEST_F(PngWays, RawProfilesAreRead) {
    const Metadata wanted = everything();
    for (const bool compressed : {false, true}) {
        chunks = {};
        add_raw("exif", bytes_of({"Exif\0\0", 6}) + wanted.exif, compressed);
        add_raw("xmp", wanted.xmp, compressed);
        add_raw("iptc", wanted.iptc, compressed);
        add_raw("icc", wanted.icc, compressed);
        const Metadata found = chunks.finish(losses);
        EXPECT_EQ(found.exif, wanted.exif);
        EXPECT_EQ(found.xmp, wanted.xmp);
        EXPECT_EQ(found.iptc, wanted.iptc);
        EXPECT_EQ(found.icc, wanted.icc);
    }
    chunks = {};
    add_raw("exif", wanted.exif);
    add_raw("iptc", bytes_of("\x1C\x02Z"));
    add_raw("APP1", bytes_of({"http://ns.adobe.com/xap/1.0/\0", 29}) + wanted.xmp);
    const Metadata found = chunks.finish(losses);
    EXPECT_EQ(found.exif, wanted.exif);
    EXPECT_EQ(found.xmp, wanted.xmp);
    EXPECT_EQ(found.iptc, resource(0x0404, bytes_of("\x1C\x02Z")));
    chunks = {};
    add_raw("APP1", bytes_of({"Exif\0\0", 6}) + wanted.exif);
    add_raw("8bim", wanted.iptc);
    EXPECT_EQ(chunks.finish(losses).exif, wanted.exif);
    EXPECT_TRUE(losses.empty());
}

TEST_F(PngWays, ChunksOfTheirOwnComeBeforeRawProfiles) {
    add_raw("exif", exif_of_orientation(6));
    add_raw("xmp", bytes_of("other"));
    chunks.add("eXIf", exif_of_orientation(3));
    chunks.add("eXIf", exif_of_orientation(2));
    chunks.add("iTXt", bytes_of({"XML:com.adobe.xmp\0\1\0en\0\0", 24}) + packed(bytes_of("mine")));
    EXPECT_EQ(read_exif(chunks.exif()).shown_orientation(), 3);
    const Metadata found = chunks.finish(losses);
    EXPECT_EQ(found.exif, exif_of_orientation(3));
    EXPECT_EQ(found.xmp, bytes_of("mine"));
}

TEST_F(PngWays, OfRawProfilesTheOrientationIsApplied) {
    const Bytes rows(9 * 4);  // 8 x 4 greys, each row with its filter byte
    FileBytes file = png_file({.width = 8, .height = 4, .bit_depth = 8, .color_type = 0, .rows = rows});
    const Bytes contents = bytes_of("tEXtRaw profile type exif") + Bytes(1) + digits("exif", exif_of_orientation(6));
    Bytes chunk;
    append_big_endian(chunk, static_cast<std::uint32_t>(contents.size() - 4), 4);
    chunk = chunk + contents;
    append_big_endian(chunk, static_cast<std::uint32_t>(crc32(0, contents.data(), static_cast<uInt>(contents.size()))),
                      4);
    file.insert(file.begin() + 33, chunk.begin(), chunk.end());  // behind the header
    const ObjectRef turned = read(file);
    EXPECT_EQ(picture_in(turned).width(), 4);
    EXPECT_EQ(carried.metadata.exif, exif_of_orientation(1));
}

TEST_F(PngWays, WhatIsDamagedIsLeftOutAndTold) {
    add_raw("exif", {});
    chunks.add("iCCP", bytes_of({"name\0\0not a stream", 18}));
    chunks.add("tEXt", bytes_of({"Raw profile type xmp\0\nxmp\n   99\n3c", 35}));
    const Metadata found = chunks.finish(losses);
    EXPECT_TRUE(found.exif.empty() && found.icc.empty() && found.xmp.empty());
    ASSERT_EQ(losses.size(), 1u);
    EXPECT_EQ(losses[0].words, "has metadata that are damaged: they are left out");
}

TEST_F(PngWays, BombsAreLeftOutAndTold) {
    const Bytes bomb = packed(Bytes(kMostMetadataBytes + 1));
    ASSERT_LT(bomb.size(), 10000u);
    chunks.add("iCCP", bytes_of({"icc\0\0", 5}) + bomb);
    chunks.add("iTXt", bytes_of({"XML:com.adobe.xmp\0\1\0\0\0", 22}) + bomb);
    const Metadata found = chunks.finish(losses);
    EXPECT_TRUE(found.icc.empty() && found.xmp.empty());
    ASSERT_EQ(losses.size(), 1u);
    EXPECT_EQ(losses[0].words, "has more than 8388608 bytes of one kind of metadata: some is left out");
}

TEST_F(PngWays, OnlySoManyStreamsAreUnpacked) {
    const Bytes head = bytes_of({"Raw profile type icc\0\0", 22}), good = profile("RGB ");
    for (int i = 0; i < kMostPngStreams; ++i) chunks.add("zTXt", head + packed(bytes_of("no profile")));
    chunks.add("zTXt", head + packed(digits("icc", good)));
    EXPECT_TRUE(chunks.finish(losses).icc.empty());
    chunks = {};
    for (int i = 1; i < kMostPngStreams; ++i) chunks.add("zTXt", head + packed(bytes_of("no profile")));
    chunks.add("zTXt", head + packed(digits("icc", good)));
    EXPECT_EQ(chunks.finish(losses).icc, good);
}

TEST_F(PngWays, OfSeveralOfAKindTheFirstCounts) {
    const auto resolution = [](std::uint8_t x, std::uint8_t y, std::uint8_t unit) {
        return Bytes{0, 0, 0, x, 0, 0, 0, y, unit};
    };
    for (const char* text : {"one", "two"}) {
        chunks.add("iCCP", bytes_of({"n\0\0", 3}) + packed(bytes_of(text)));
        chunks.add("iTXt", bytes_of({"XML:com.adobe.xmp\0\0\0\0\0", 22}) + bytes_of(text));
        chunks.add("eXIf", bytes_of(text));
    }
    for (const Bytes& useless : {resolution(0, 9, 1), resolution(9, 0, 1), Bytes(8)}) chunks.add("pHYs", useless);
    chunks.add("pHYs", resolution(7, 8, 0));
    chunks.add("pHYs", resolution(9, 9, 1));
    const Metadata found = chunks.finish(losses);
    EXPECT_EQ(found.icc, bytes_of("one"));
    EXPECT_EQ(found.xmp, bytes_of("one"));
    EXPECT_EQ(found.exif, bytes_of("one"));
    EXPECT_EQ(found.resolution, (Resolution{7, 8, Resolution::Unit::none}));
    EXPECT_TRUE(losses.empty());
}

TEST_F(PngWays, ChunksThatAreNotAsTheyShouldBeAreIgnored) {
    const Bytes stream = packed(bytes_of("\n\n4\n00112233"));
    chunks.add("iCCP", bytes_of("no end of its name"));
    chunks.add("iCCP", bytes_of({"n\0", 2}));
    chunks.add("iCCP", bytes_of({"n\0\1", 3}) + stream);  // another way to compress
    chunks.add("zTXt", bytes_of({"Raw profile type xmp\0", 21}));
    chunks.add("zTXt", bytes_of({"Raw profile type xmp\0\1", 22}) + stream);
    chunks.add("tEXt", bytes_of({"Comment\0text", 12}));
    chunks.add("iTXt", bytes_of({"Title\0\0\0\0\0text", 14}));
    chunks.add("iTXt", bytes_of({"XML:com.adobe.xmp\0\0", 19}));
    chunks.add("gAMA", Bytes(4));
    add_raw("something", bytes_of("unknown"));
    add_raw("APP1", bytes_of("neither of the two"));
    const Metadata found = chunks.finish(losses);
    EXPECT_TRUE(found.icc.empty() && found.xmp.empty() && found.exif.empty() && found.iptc.empty());
    EXPECT_TRUE(losses.empty());
}

TEST_F(PngWays, DigitsHaveManyNames) {
    const Bytes list = resource(0x0404, bytes_of("records"));
    for (const char* type : {"iptc", "8bim", "APP13"}) {
        chunks = {};
        add_raw(type, list);
        EXPECT_EQ(chunks.finish(losses).iptc, list) << type;
    }
    for (const char* type : {"icc", "icm"}) {
        chunks = {};
        add_raw(type, bytes_of("profile"), true);
        EXPECT_EQ(chunks.finish(losses).icc, bytes_of("profile")) << type;
    }
    const Bytes marked = bytes_of({"http://ns.adobe.com/xap/1.0/\0", 29}) + bytes_of("<x/>");
    for (const char* type : {"xmp", "APP1"}) {
        chunks = {};
        add_raw(type, marked);
        EXPECT_EQ(chunks.finish(losses).xmp, bytes_of("<x/>")) << type;
    }
    chunks = {};
    add_raw("xmp", bytes_of("<x/>"));
    EXPECT_EQ(chunks.finish(losses).xmp, bytes_of("<x/>"));
    EXPECT_TRUE(losses.empty());
}

TEST_F(PngWays, DigitsThatAreNotWhatTheySayAreToldAsDamaged) {
    for (const char* text :
         {"\nexif", "\nexif\nmany\n00", "\nexif\n9\n00", "\nexif\n4\n00zgZG11*22", "\nexif\n100\n0"}) {
        chunks = {};
        losses.clear();
        chunks.add("tEXt", bytes_of({"Raw profile type exif\0", 22}) + bytes_of(text));
        EXPECT_TRUE(chunks.finish(losses).exif.empty()) << text;
        ASSERT_EQ(losses.size(), 1u) << text;
        EXPECT_EQ(losses[0].words, "has metadata that are damaged: they are left out");
    }
    // Upper and lower case, and whatever stands between.
    chunks = {};
    chunks.add("tEXt", bytes_of({"Raw profile type exif\0", 22}) + bytes_of("\nexif\n    3\na B\ncDz9G0\n"));
    EXPECT_EQ(chunks.finish(losses).exif, (Bytes{0xAB, 0xCD, 0x90}));
}

TEST_F(PngWays, StreamsThatAreDamagedOrTooLongAreTold) {
    const auto loss = [&](const Bytes& stream) {
        chunks = {};
        losses.clear();
        for (int i = 0; i < 2; ++i) chunks.add("iCCP", bytes_of({"n\0\0", 3}) + stream);
        EXPECT_TRUE(chunks.finish(losses).icc.empty());
        return losses.size() == 1 ? losses[0].words : "";
    };
    EXPECT_EQ(loss(bytes_of("no stream")), "has metadata that are damaged: they are left out");
    EXPECT_EQ(loss(packed(Bytes(kMostMetadataBytes + 70000))), too_much_metadata().words);
    chunks = {};
    losses.clear();
    for (int i = 0; i < 2; ++i)
        chunks.add("iTXt", bytes_of({"XML:com.adobe.xmp\0\0\0\0\0", 22}) + Bytes(kMostMetadataBytes + 1, 'x'));
    EXPECT_TRUE(chunks.finish(losses).xmp.empty());
    EXPECT_EQ(losses.at(0).words, too_much_metadata().words);
}

}  // namespace
}  // namespace tarvo::host
