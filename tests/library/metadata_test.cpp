// What pictures carry of their files, as programs ask for it.

#include <gtest/gtest.h>

#include <limits>
#include <numeric>
#include <utility>
#include <vector>

#include "samples.h"

namespace tarvo::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

std::string segment(char marker, const std::string& contents) {
    const std::size_t length = contents.size() + 2;
    return {'\xFF', marker, static_cast<char>(length >> 8), static_cast<char>(length)};
}

const std::string kExif("MM\0*\0\0\0\x08\0\1\x01\x12\0\3\0\0\0\1\0\6\0\0\0\0\0\0", 26);
const std::string kRecords("\x1C\x02Z\0\4Bonn", 9);
const std::string kPacket = "<x:xmpmeta/>";

std::string profile() {
    std::string made(148, '\0');
    made[3] = '\x94';
    made.replace(16, 4, "RGB ").replace(36, 4, "acsp").replace(131, 1, "\1").replace(132, 4, "desc");
    made[139] = '\x90';
    made[143] = 4;
    return made;
}

// A JPEG file of quality 61 that carries something of each kind.
Picture photograph() {
    WriteOptions options;
    options.jpeg_quality = 61;
    const auto plain = noisy_picture(16, 8).encode("jpg", options);
    std::string file(plain.begin(), plain.end());
    file[13] = 1;  // dots an inch
    file[15] = 96;
    file[17] = 48;
    std::string segments;
    const auto add = [&](char marker, const std::string& contents) {
        segments += segment(marker, contents) + contents;
    };
    add('\xE1', std::string("Exif\0\0", 6) + kExif);
    add('\xE1', std::string("http://ns.adobe.com/xap/1.0/\0", 29) + kPacket);
    add('\xE2', std::string("ICC_PROFILE\0\1\1", 14) + profile());
    add('\xED', std::string("Photoshop 3.0\0"
                            "8BIM\4\4\0\0\0\0\0\x09",
                            26) +
                    kRecords + '\0');
    file.insert(20, segments);
    return Picture::decode(file.data(), file.size());
}

std::string text_of(const Picture& picture, tarvo_metadata kind) {
    const Bytes bytes = picture.metadata(kind);
    return {bytes.begin(), bytes.end()};
}

std::string upright() {
    std::string exif = kExif;
    exif[19] = 1;
    return exif;
}

TEST(LibraryMetadata, BelongToThePictureAndGoOnToResults) {
    const Picture read = photograph();
    for (const Picture& picture : {read, apply("Stretch(4, 4)", read).picture()}) {
        EXPECT_EQ(text_of(picture, TARVO_METADATA_EXIF), upright());
        EXPECT_EQ(text_of(picture, TARVO_METADATA_XMP), kPacket);
        EXPECT_EQ(text_of(picture, TARVO_METADATA_IPTC), kRecords);
        EXPECT_EQ(text_of(picture, TARVO_METADATA_ICC), profile());
        double x = 0, y = 0;
        EXPECT_EQ(tarvo_picture_resolution(picture.get(), &x, &y), 1);
        EXPECT_EQ(x, 48);  // which turned with the picture
        EXPECT_EQ(y, 96);
    }
    EXPECT_EQ(read.width(), 8);
}

TEST(LibraryMetadata, OfNothingAreNone) {
    const Picture made = noisy_picture(4, 4);
    double x = 1, y = 1;
    std::size_t length = 1;
    for (const tarvo_picture* picture :
         {static_cast<const tarvo_picture*>(nullptr), static_cast<const tarvo_picture*>(made.get())})
        for (const int kind : {0, 1, 2, 3, 4, 8, 16, 31, 99, -1}) {
            EXPECT_EQ(tarvo_picture_metadata(picture, static_cast<tarvo_metadata>(kind), &length), nullptr);
            EXPECT_EQ(length, 0u);
            EXPECT_EQ(tarvo_picture_metadata(picture, static_cast<tarvo_metadata>(kind), nullptr), nullptr);
            EXPECT_EQ(tarvo_picture_resolution(picture, &x, &y), 0);
            EXPECT_EQ(x + y, 0);
            EXPECT_EQ(tarvo_picture_resolution(picture, nullptr, nullptr), 0);
        }
    const Picture full = photograph();
    for (const int kind : {0, 3, TARVO_METADATA_RESOLUTION + 0, TARVO_METADATA_ALL + 0, 99})
        EXPECT_EQ(tarvo_picture_metadata(full.get(), static_cast<tarvo_metadata>(kind), nullptr), nullptr) << kind;
}

TEST(LibraryMetadata, WhatIsStrippedIsNotThereAndNoLoss) {
    const Picture picture = photograph();
    const tarvo_metadata kinds[] = {TARVO_METADATA_EXIF, TARVO_METADATA_XMP, TARVO_METADATA_IPTC, TARVO_METADATA_ICC};
    for (const char* format : {"jpg", "png", "ppm"})
        for (std::uint32_t strip = 0; strip <= TARVO_METADATA_ALL; ++strip) {
            WriteOptions options;
            options.strip = strip;
            int losses = 0;
            options.note = [&](tarvo_note kind, const std::string&) { losses += TARVO_IS_LOSS(kind); };
            const Bytes file = picture.encode(format, options);
            const Picture again = Picture::decode(file.data(), file.size());
            const bool holds = std::string(format) != "ppm";
            for (const tarvo_metadata kind : kinds)
                EXPECT_EQ(again.metadata(kind).empty(), !holds || (strip & kind) != 0) << format << strip << kind;
            // Exif tells none here, so that nothing else does.
            EXPECT_EQ(tarvo_picture_resolution(again.get(), nullptr, nullptr),
                      holds && !(strip & TARVO_METADATA_RESOLUTION));
            const int wanted = (~strip & ~std::uint32_t{TARVO_METADATA_ICC} & TARVO_METADATA_ALL) != 0;
            EXPECT_EQ(losses, holds ? 0 : wanted + !(strip & TARVO_METADATA_ICC)) << format << strip;
        }
    WriteOptions wrong;
    wrong.strip = 32;
    EXPECT_THROW(picture.encode("png", wrong), Error);
}

TEST(LibraryMetadata, JpegOfJpegHasItsQuality) {
    const Picture picture = photograph();
    WriteOptions same, other;
    same.jpeg_quality = 61;
    other.jpeg_quality = 92;
    EXPECT_EQ(picture.encode("jpg"), picture.encode("jpg", same));
    EXPECT_NE(picture.encode("jpg"), picture.encode("jpg", other));
    const Picture made = noisy_picture(16, 8);
    EXPECT_EQ(made.encode("jpg"), made.encode("jpg", other));
}

TEST(LibraryMetadata, MayBeGivenToAnyPicture) {
    const Picture read = photograph(), plain = noisy_picture(8, 16);
    Picture made = plain;
    for (const tarvo_metadata kind :
         {TARVO_METADATA_EXIF, TARVO_METADATA_XMP, TARVO_METADATA_IPTC, TARVO_METADATA_ICC}) {
        made = made.with_metadata(kind, read.metadata(kind));
        EXPECT_EQ(made.metadata(kind), read.metadata(kind));
        EXPECT_TRUE(plain.metadata(kind).empty());
        EXPECT_TRUE(made.with_metadata(kind, {}).metadata(kind).empty());
    }
    made = made.with_resolution(48, 96);
    EXPECT_EQ(made.pixels(), plain.pixels());  // the same memory
    for (const char* format : {"jpg", "png"}) {
        const Bytes file = made.encode(format);
        const Picture again = Picture::decode(file.data(), file.size());
        for (const tarvo_metadata kind :
             {TARVO_METADATA_EXIF, TARVO_METADATA_XMP, TARVO_METADATA_IPTC, TARVO_METADATA_ICC})
            EXPECT_EQ(again.metadata(kind), read.metadata(kind)) << format << kind;
        double x = 0, y = 0;
        EXPECT_EQ(tarvo_picture_resolution(again.get(), &x, &y), 1);
        EXPECT_NEAR(x, 48, 0.02);
        EXPECT_NEAR(y, 96, 0.02);
    }
    EXPECT_EQ(tarvo_picture_resolution(made.with_resolution(0, 0).get(), nullptr, nullptr), 0);
}

TEST(LibraryMetadata, ThatCannotBeIsRefused) {
    const Picture plain = noisy_picture(4, 4);
    const auto status_of = [](const auto& work) {
        try {
            work();
        } catch (const Error& error) {
            return error.status();
        }
        return TARVO_OK;
    };
    for (const int kind : {0, 3, 16, 31, 99})
        EXPECT_EQ(status_of([&] { plain.with_metadata(static_cast<tarvo_metadata>(kind), {1}); }), TARVO_USE) << kind;
    const Bytes most(std::size_t{8} << 20), more(most.size() + 1);
    EXPECT_EQ(status_of([&] { plain.with_metadata(TARVO_METADATA_XMP, most); }), TARVO_OK);
    EXPECT_EQ(status_of([&] { plain.with_metadata(TARVO_METADATA_XMP, more); }), TARVO_LIMIT);
    const double huge = std::numeric_limits<double>::infinity(), none = std::numeric_limits<double>::quiet_NaN();
    const std::pair<double, double> wrong[] = {{1, 0}, {0, 1}, {-1, 1}, {1, huge}, {none, 1}, {none, none}};
    for (const auto& resolution : wrong)
        EXPECT_EQ(status_of([&] { plain.with_resolution(resolution.first, resolution.second); }), TARVO_USE)
            << resolution.first << " " << resolution.second;
    tarvo_picture* made = nullptr;
    EXPECT_EQ(tarvo_picture_with_metadata(nullptr, TARVO_METADATA_XMP, "", 0, &made, nullptr), TARVO_USE);
    EXPECT_EQ(tarvo_picture_with_metadata(plain.get(), TARVO_METADATA_XMP, nullptr, 1, &made, nullptr), TARVO_USE);
    EXPECT_EQ(tarvo_picture_with_metadata(plain.get(), TARVO_METADATA_XMP, "", 0, nullptr, nullptr), TARVO_USE);
    EXPECT_EQ(tarvo_picture_with_resolution(nullptr, 1, 1, &made, nullptr), TARVO_USE);
    EXPECT_EQ(tarvo_picture_with_resolution(plain.get(), 1, 1, nullptr, nullptr), TARVO_USE);
}

// Bytes that are no Exif, no packet and no profile do no harm; what cannot be in the file is left out.
TEST(LibraryMetadata, MayBeAnyBytes) {
    Bytes noise(300);
    std::iota(noise.begin(), noise.end(), std::uint8_t{7});
    for (const char* format : {"jpg", "png", "ppm"}) {
        Picture made = noisy_picture(5, 4);
        for (const tarvo_metadata kind :
             {TARVO_METADATA_EXIF, TARVO_METADATA_XMP, TARVO_METADATA_IPTC, TARVO_METADATA_ICC})
            made = made.with_metadata(kind, noise);
        const Bytes file = made.encode(format);
        EXPECT_EQ(Picture::decode(file.data(), file.size()).width(), 5);
    }
}

}  // namespace
}  // namespace tarvo::test
