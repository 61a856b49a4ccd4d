#include <gtest/gtest.h>

#include "file_samples.h"
#include "format.h"

namespace tarvo::host {
namespace {

using PnmTest = FilesTest;

const FileBytes kFourPixels = {0, 10, 20, 30, 0, 40, 50, 60, 0, 70, 80, 90, 0, 255, 0, 1};
const FileBytes kFourPixelsPpm = bytes_of("P6\n2 2\n255\n") + FileBytes{10, 20, 30, 40, 50, 60, 70, 80, 90, 255, 0, 1};

TEST_F(PnmTest, ColorFileBecomesWordsOfZeroRedGreenBlue) {
    const ObjectRef picture = decode(kFourPixelsPpm);
    EXPECT_EQ(picture_in(picture).depth(), 32);
    EXPECT_EQ(picture_in(picture).backing(), Backing::graphics_world);
    EXPECT_EQ(stored_bytes(picture), kFourPixels);
    EXPECT_FALSE(picture_in(picture).mask());
}

TEST_F(PnmTest, PictureIsWrittenAsThatFile) {
    EXPECT_EQ(encode_picture(picture_in(decode(kFourPixelsPpm)), "a.ppm"), kFourPixelsPpm);
}

TEST_F(PnmTest, PlainFilesHaveCommentsAndAnyBlanks) {
    const ObjectRef picture =
        decode(bytes_of("P3 # colours\n2\t# wide\n 2 255 10 20 30  40 50\r\n60 70 80 # not 81\n 90 255 0 1"));
    EXPECT_EQ(stored_bytes(picture), kFourPixels);
    EXPECT_EQ(stored_bytes(decode(bytes_of("P3#a\r2 2#b\n255#c\r\n10 20 30 40 50 60 70 80 90 255 0 1#d"))),
              kFourPixels);
}

TEST_F(PnmTest, RawSamplesFollowOneBlank) {
    // The first sample is a line break: only the blank before it belongs to the header.
    EXPECT_EQ(colors_of(decode(bytes_of("P5 1 1 255\n\n"))), std::vector<std::uint32_t>{0x0A0A0A});
}

TEST_F(PnmTest, BitmapsAreBlackWhereBitsAreSet) {
    const FileBytes file = bytes_of("P4\n10 2\n") + FileBytes{0xA5, 0xC0, 0x00, 0x40};
    const ObjectRef picture = decode_keeping(file);
    EXPECT_EQ(picture_in(picture).depth(), 1);
    EXPECT_EQ(stored_bytes(picture), (FileBytes{0xA5, 0xC0, 0x00, 0x40}));
    EXPECT_EQ(encode_picture(picture_in(picture), "a.pbm"), file);

    const ObjectRef wide = decode(file);
    EXPECT_EQ(picture_in(wide).depth(), 32);
    EXPECT_EQ(colors_of(wide), colors_of(picture));
    EXPECT_EQ(encode_picture(picture_in(wide), "a.pbm"), file);
}

TEST_F(PnmTest, PaddingBitsOfABitmapDoNotMatter) {
    const ObjectRef picture = decode_keeping(bytes_of("P4 3 1\n") + FileBytes{0x5F});
    EXPECT_EQ(stored_bytes(picture), FileBytes{0x40});
}

TEST_F(PnmTest, PlainBitsNeedNoBlanks) {
    EXPECT_EQ(stored_bytes(decode_keeping(bytes_of("P1 4 2 0110\n1 0 0 1"))), (FileBytes{0x60, 0x90}));
}

TEST_F(PnmTest, GreysKeepTheirDepthOnRequest) {
    const FileBytes file = bytes_of("P5\n3 1\n255\n") + FileBytes{0, 128, 255};
    const ObjectRef picture = decode_keeping(file);
    EXPECT_EQ(picture_in(picture).depth(), 8);
    EXPECT_EQ(stored_bytes(picture), (FileBytes{0, 128, 255}));
    EXPECT_EQ(colors_of(picture), (std::vector<std::uint32_t>{0x000000, 0x808080, 0xFFFFFF}));
    EXPECT_EQ(encode_picture(picture_in(picture), "a.pgm"), file);
    EXPECT_EQ(colors_of(decode(file)), colors_of(picture));
}

TEST_F(PnmTest, SamplesAreScaledToTheNearestAndDeepOnesKeepTheirHighByte) {
    EXPECT_EQ(colors_of(decode(bytes_of("P2 4 1 15 0 1 7 15"))),
              (std::vector<std::uint32_t>{0, 0x111111, 0x777777, 0xFFFFFF}));
    EXPECT_EQ(colors_of(decode(bytes_of("P2 3 1 100 1 50 99"))),
              (std::vector<std::uint32_t>{0x030303, 0x808080, 0xFCFCFC}));
    EXPECT_EQ(colors_of(decode(bytes_of("P5 2 1 65535\n") + FileBytes{0x12, 0xFF, 0xFF, 0x00})),
              (std::vector<std::uint32_t>{0x121212, 0xFFFFFF}));
    EXPECT_EQ(colors_of(decode(bytes_of("P5 2 1 1000\n") + FileBytes{0x03, 0xE8, 0x01, 0xF4})),
              (std::vector<std::uint32_t>{0xFFFFFF, 0x808080}));
}

TEST_F(PnmTest, ColorsAreWrittenAsGreysByTheirLuma) {
    EXPECT_EQ(encode_picture(picture_in(decode(bytes_of("P3 3 1 255 255 0 0  0 255 0  0 0 255"))), "a.pgm"),
              bytes_of("P5\n3 1\n255\n") + FileBytes({77, 150, 28}));
    EXPECT_EQ(encode_picture(picture_in(decode(bytes_of("P2 4 1 255 127 128 0 255"))), "a.pbm"),
              bytes_of("P4\n4 1\n") + FileBytes{0xA0});
}

FileBytes pam(const std::string& fields, const FileBytes& samples) {
    return bytes_of("P7\n" + fields + "ENDHDR\n") + samples;
}

TEST_F(PnmTest, AlphaBecomesTheMask) {
    const FileBytes file =
        pam("WIDTH 2\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\n", {1, 2, 3, 255, 4, 5, 6, 100});
    const ObjectRef picture = decode(file);
    EXPECT_EQ(stored_bytes(picture), (FileBytes{0, 1, 2, 3, 0, 4, 5, 6}));
    ASSERT_TRUE(picture_in(picture).mask());
    EXPECT_EQ(picture_in(picture_in(picture).mask()).depth(), 32);
    EXPECT_EQ(stored_bytes(picture_in(picture).mask()), (FileBytes{0, 0, 0, 0, 0, 155, 155, 155}));
    EXPECT_EQ(encode_picture(picture_in(picture), "a.pam"), file);
    EXPECT_EQ(encode_picture(picture_in(picture), "a.ppm"), bytes_of("P6\n2 1\n255\n") + FileBytes({1, 2, 3, 4, 5, 6}));
}

TEST_F(PnmTest, EveryTupleTypeOfPamIsReadAndWrittenAgain) {
    const FileBytes bilevel = pam("WIDTH 3\nHEIGHT 1\nDEPTH 1\nMAXVAL 1\nTUPLTYPE BLACKANDWHITE\n", {1, 0, 1});
    EXPECT_EQ(stored_bytes(decode_keeping(bilevel)), FileBytes{0x40});
    EXPECT_EQ(encode_picture(picture_in(decode_keeping(bilevel)), "a.pam"), bilevel);

    const FileBytes grey = pam("WIDTH 2\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nTUPLTYPE GRAYSCALE\n", {7, 200});
    EXPECT_EQ(encode_picture(picture_in(decode_keeping(grey)), "a.pam"), grey);

    const FileBytes color = pam("WIDTH 1\nHEIGHT 2\nDEPTH 3\nMAXVAL 255\nTUPLTYPE RGB\n", {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(encode_picture(picture_in(decode_keeping(color)), "a.pam"), color);

    const ObjectRef clear_grey = decode(pam("DEPTH 2\nMAXVAL 1\nWIDTH 2\nHEIGHT 1\n", {1, 1, 0, 0}));
    EXPECT_EQ(colors_of(clear_grey), (std::vector<std::uint32_t>{0xFFFFFF, 0x000000}));
    EXPECT_EQ(colors_of(picture_in(clear_grey).mask()), (std::vector<std::uint32_t>{0x000000, 0xFFFFFF}));
}

TEST_F(PnmTest, ErrorsSayWhatIsWrong) {
    EXPECT_EQ(error_of({}), "empty");
    EXPECT_EQ(error_of(bytes_of("GIF89a")), "not a picture of a known format");
    EXPECT_EQ(error_of(bytes_of("P6\n2 2\n255\n") + FileBytes(11)), "cut short after 1 row");
    EXPECT_EQ(error_of(bytes_of("P6\n2 9\n255\n") + FileBytes(30)), "cut short after 5 rows");
    EXPECT_EQ(error_of(bytes_of("P6\n2 2\n")), "cut short");
    EXPECT_EQ(error_of(bytes_of("P2 1 3 255 1 200     ")), "cut short after 2 rows");
    EXPECT_EQ(error_of(bytes_of("P6 2 x")), "no number for the height");
    EXPECT_EQ(error_of(bytes_of("P6 0 2 255\n")), "the size is 0 x 2 pixels");
    EXPECT_EQ(error_of(bytes_of("P6 2 -2 255\n")), "no number for the height");
    EXPECT_EQ(error_of(bytes_of("P4 32768 1\n")), "the size is 32768 x 1 pixels, a side may have 32767");
    EXPECT_EQ(error_of(bytes_of("P4 99999999999999999999 1\n")),
              "the size is 4294967295 x 1 pixels, a side may have 32767");
    EXPECT_EQ(error_of(bytes_of("P4 32767 32767\n")),
              "the size is 32767 x 32767 pixels, together 1073676289, the limit is 268435456");
    EXPECT_EQ(error_of(bytes_of("P6 30000 4000 255\nabc")), "cut short");
    EXPECT_EQ(error_of(bytes_of("P5 1 1 0\n0")), "the largest sample is 0, allowed are 1 to 65535");
    EXPECT_EQ(error_of(bytes_of("P5 1 1 65536\n0")), "the largest sample is 65536, allowed are 1 to 65535");
    EXPECT_EQ(error_of(bytes_of("P5 1 1 9\n\x0A")), "a sample is 10, the largest is said to be 9");
    EXPECT_EQ(error_of(bytes_of("P1 2 1 12")), "a sample is 2, the largest is said to be 1");
    EXPECT_EQ(error_of(bytes_of("P5 1 1 255a")), "no blank after the header");
    EXPECT_EQ(error_of(pam("WIDTH 1\nHEIGHT 1\nDEPTH 5\nMAXVAL 255\n", FileBytes(5))),
              "the pixels have 5 channels, known are 1 to 4");
    EXPECT_EQ(error_of(pam("WIDTH 1\nHEIGHT 1\nMAXVAL 255\n", FileBytes(5))),
              "the pixels have 0 channels, known are 1 to 4");
    EXPECT_EQ(error_of(pam("WIDTH 1\nSIZE 1\n", FileBytes(5))), "an unknown word in the header");
}

// Fails when a decoder makes a picture.
class NoPicture final : public PixelTarget {
public:
    void begin(const ImageForm&, std::uint64_t) override { ADD_FAILURE() << "memory is taken for what is not there"; }
    void put(const PixelRun&) noexcept override {}
    void turn(int) override {}
};

TEST_F(PnmTest, RowsAreCountedBeforeMemoryIsTaken) {
    NoPicture target;
    for (const char* text : {"P1 3000 3000 0101", "P2 3000 3000 255 1 2 3", "P3 3000 3000 255 1 2 3", "P4 3000 3000 ab",
                             "P5 3000 3000 255 abc", "P6 3000 3000 65535 abc",
                             "P7\nWIDTH 3000\nHEIGHT 3000\nDEPTH 4\nMAXVAL 255\nENDHDR\nabc"}) {
        const FileBytes bytes = bytes_of(text);
        MemorySource file(bytes);
        const Format& format = format_of_bytes(file.ahead());
        EXPECT_EQ(file_error([&] { format.decode(file, 1 << 28, target); }), "cut short") << text;
    }
}

}  // namespace
}  // namespace tarvo::host
