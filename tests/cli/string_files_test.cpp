// Picture strings in files, through the tool.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tool.h"
#include "watched_memory.h"

namespace tarvo::cli {
namespace {

using Colors = std::vector<std::uint32_t>;

class StringFiles : public ToolTest {
protected:
    const Colors kColors = {0x102030, 0x405060};
    // The string of these colours side by side at 32 bits.
    const std::string kString{"\0\0\0\2\0\0\0\1\0\x20\0\x10\x20\x30\x40\x50\x60", 17};
    const std::string kCall = "TRV_AdjustContrast(nil, &c000000, 1, 1, 1, 0)";

    std::string picture() const { return ppm("picture.ppm", 2, 1, kColors); }
};

TEST_F(StringFiles, HoldWhatTheOperationMakes) {
    const Ending run = tool({"apply", picture(), "TRV_ConvertToString()", "-o", file("picture.trv")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("TRV_ConvertToString = a string of 17 bytes\n"), std::string::npos) << run.out;
    EXPECT_EQ(bytes_of(file("picture.trv")), kString);
}

TEST_F(StringFiles, AreTakenWhereverPicturesAre) {
    const std::string string = text_file("string.TRV", kString);
    EXPECT_EQ(tool({"apply", string, "TRV_Add(" + string + ", 0)", "-o", file("out.ppm")}).status, 0);
    EXPECT_EQ(colors_of(file("out.ppm")), (Colors{0x204060, 0x80A0C0}));
}

TEST_F(StringFiles, AreConverted) {
    EXPECT_EQ(tool({"convert", picture(), "-o", file("out.trv")}).status, 0);
    EXPECT_EQ(bytes_of(file("out.trv")), kString);
    EXPECT_EQ(tool({"convert", file("out.trv"), "-o", file("back.ppm")}).status, 0);
    EXPECT_EQ(colors_of(file("back.ppm")), kColors);
}

TEST_F(StringFiles, KeepDepthAndMask) {
    std::string string = kString + "\x7F\xFF";
    string[9] = 24;
    string[10] = 1;
    const std::string source = text_file("masked.trv", string);
    const Ending run = tool({"apply", source, kCall, "-o", file("out.trv")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out.substr(0, run.out.find('\n')), source + ": 2 x 1, string, 24 bits, mask");
    EXPECT_TRUE(run.out.ends_with(file("out.trv") + ": 2 x 1, string, 24 bits, mask\n")) << run.out;
    EXPECT_EQ(bytes_of(file("out.trv")), string);
    const Ending without = tool({"convert", source, "-o", file("out.ppm")});
    EXPECT_EQ(without.status, 0);
    EXPECT_EQ(without.err, "note: " + file("out.ppm") + " has no transparency: the mask is left out\n");
}

// They are made and read a few rows at a time.
TEST_F(StringFiles, OfLargePicturesAreWhole) {
    constexpr int kWidth = 1500, kHeight = 1300;
    std::mt19937 random(1);
    const auto noise = [&](std::size_t count) {
        std::string bytes(count, 0);
        for (char& each : bytes) each = static_cast<char>(random() & 255);
        return bytes;
    };
    const std::string colors = noise(std::size_t{kWidth} * kHeight * 3), levels = noise(std::size_t{kWidth} * kHeight);
    for (const char depth : {'\x18', '\x20'})
        for (const bool masked : {false, true}) {
            std::string string("\0\0\x05\xDC\0\0\x05\x14\0", 9);
            string += depth;
            string += static_cast<char>(masked);
            string += colors + (masked ? levels : "");
            const std::string source = text_file("large.trv", string);
            ASSERT_EQ(tool({"convert", source, "-o", file("out.trv")}).status, 0);
            EXPECT_TRUE(bytes_of(file("out.trv")) == string);
            // The operation itself, which compares them whole.
            const Ending made =
                tool({"apply", "-q", source, "ConvertToString()", "Compare(" + file("out.trv") + ", nil)"});
            EXPECT_EQ(made.out, "TRV_ConvertToString = a string of " + std::to_string(string.size()) +
                                    " bytes\nTRV_Compare = true\n");
            ASSERT_EQ(tool({"convert", source, "-o", file("out.pam")}).status, 0);
            const std::string pam = bytes_of(file("out.pam"));
            const std::size_t planes = masked ? 4 : 3, begin = pam.find("ENDHDR\n") + 7;
            ASSERT_EQ(pam.size() - begin, planes * kWidth * kHeight);
            bool same = true;
            for (std::size_t i = 0; i < levels.size(); ++i) {
                const char* const pixel = pam.data() + begin + i * planes;
                same = same && std::equal(pixel, pixel + 3, colors.data() + 3 * i);
                same = same && (!masked || pixel[3] == static_cast<char>(255 - static_cast<unsigned char>(levels[i])));
            }
            EXPECT_TRUE(same);
            for (const std::string& bytes : {string.substr(0, string.size() - 1), string + "x"}) {
                text_file("pipe.bin", bytes);
                const Ending bad = shell("mkfifo in.trv; cat pipe.bin >in.trv & tarvo convert in.trv -o none.ppm");
                EXPECT_EQ(bad.status, 3);
                // The pipe may have been waited for.
                EXPECT_EQ(bad.err.substr(std::min(bad.err.find("tarvo: "), bad.err.size())),
                          "tarvo: in.trv: this is no string that a picture can be made of\n");
                EXPECT_FALSE(exists("none.ppm"));
                std::filesystem::remove(file("in.trv"));
            }
        }
}

TEST_F(StringFiles, OfOtherBytesAreToldAndNothingIsWritten) {
    for (const std::string& bytes : {std::string(), kString.substr(1), kString + "x"}) {
        const std::string source = text_file("bad.trv", bytes);
        const Ending run = tool({"convert", source, "-o", file("out.ppm")});
        EXPECT_EQ(run.status, 3);
        EXPECT_EQ(run.err, "tarvo: " + source + ": this is no string that a picture can be made of\n");
        EXPECT_FALSE(exists("out.ppm"));
    }
}

TEST_F(StringFiles, ThatCannotBeReadOrWrittenAreTold) {
    const Ending missing = tool({"convert", file("missing.trv"), "-o", file("out.ppm")});
    EXPECT_EQ(missing.status, 3);
    EXPECT_EQ(missing.err.rfind("tarvo: " + file("missing.trv") + ": ", 0), 0u) << missing.err;
    const Ending nowhere = tool({"convert", picture(), "-o", file("no/folder.trv")});
    EXPECT_EQ(nowhere.status, 2);
    EXPECT_EQ(nowhere.err.rfind("tarvo: " + file("no/folder.trv") + ": ", 0), 0u) << nowhere.err;
    EXPECT_EQ(tool({"convert", picture()}).status, 2);
}

TEST_F(StringFiles, AreAmongTheEndingsThatAMessageNames) {
    const Ending run = tool({"convert", picture(), "-o", file("noext")});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err,
              "tarvo: " + file("noext") +
                  ": the name ends in none of .png, .jpg, .jpeg, .tif, .tiff, .webp, .pbm, .pgm, .ppm, .pam, .trv\n");
}

TEST_F(StringFiles, AreToldInOneLineWhateverTheirName) {
    const Ending run = tool({"convert", text_file("two\nlines.trv", "x"), "-o", file("out.ppm")});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.err, "tarvo: " + file("two?lines.trv") + ": this is no string that a picture can be made of\n");
}

// Their first bytes say how long they must be: what is not is not read, nor held in memory.
TEST_F(StringFiles, OfOtherLengthsAreRefusedUnread) {
    const struct {
        std::string header;
        std::uintmax_t size;
    } rows[] = {
        {std::string(11, '\0'), (std::uintmax_t{1} << 31) - 1},                      // a sparse file of nothing
        {std::string("\0\0\0\2\0\0\0\1\0\x20\0", 11), std::uintmax_t{1} << 31},      // two pixels and a rest
        {std::string("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\0\x20\0", 11), 300000000},    // sizes that wrap
        {std::string("\0\0\x80\0\0\0\x80\0\0\x20\1", 11), std::uintmax_t{1} << 32},  // a length that no string has
    };
    for (const auto& row : rows) {
        std::filesystem::resize_file(text_file("bad.trv", row.header), row.size);
        const Ending run = tool({"convert", "--max-memory", "1M", file("bad.trv"), "-o", file("out.ppm")});
        EXPECT_EQ(run.status, 3);
        EXPECT_EQ(run.err, "tarvo: " + file("bad.trv") + ": this is no string that a picture can be made of\n");
    }
    const Ending endless = shell("ln -s /dev/zero zero.trv; tarvo convert zero.trv -o out.ppm");
    EXPECT_EQ(endless.status, 3);
    EXPECT_EQ(endless.err, "tarvo: zero.trv: this is no string that a picture can be made of\n");
}

TEST_F(StringFiles, ThatMemoryCannotHoldAreTold) {
    // 1000 x 1000 pixels.
    const std::string large = text_file("large.trv", std::string("\0\0\3\xE8\0\0\3\xE8\0\x20\0", 11));
    std::filesystem::resize_file(large, 3000011);
    const auto error = [&](const char* option, const char* limit) {
        const Ending run = tool({"convert", option, limit, large, "-o", file("out.ppm")});
        EXPECT_EQ(run.status, 3);
        return run.err;
    };
    const std::string name = "tarvo: " + large + ": ";
    EXPECT_EQ(error("--max-memory", "2M"), name +
                                               "a string of 3000011 bytes: 3000011 bytes, 0 are taken already, the "
                                               "limit is 2097152 (--max-memory)\n");
    EXPECT_EQ(error("--max-memory", "6M"), name +
                                               "a picture of 1000 x 1000 pixels, 32 bits: 4000000 bytes, 3000011 are "
                                               "taken already, the limit is 6291456 (--max-memory)\n");
    EXPECT_EQ(error("--max-pixels", "999999"),
              name + "the size is 1000 x 1000 pixels, together 1000000, the limit is 999999 (--max-pixels)\n");
}

TEST_F(StringFiles, ThatTheSystemHasNoMemoryForAreTold) {
#ifdef WATCHED_MEMORY
    GTEST_SKIP() << "AddressSanitizer needs all addresses";
#endif
    // 10,000 x 10,000 pixels.
    text_file("large.trv", std::string("\0\0\x27\x10\0\0\x27\x10\0\x20\0", 11));
    std::filesystem::resize_file(file("large.trv"), 300000011);
    const Ending run = shell("ulimit -v 200000 && tarvo convert large.trv -o out.ppm");
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.err,
              "tarvo: large.trv: not enough memory for a picture of 10000 x 10000 pixels, 32 bits (--max-memory)\n");
}

TEST_F(StringFiles, ThatCannotBeReadAgainAreNoted) {
    const std::string bits = text_file("bits.pbm", "P4\n2 1\n\x40");
    const Ending run = tool({"convert", bits, "--keep-depth", "-o", file("bits.trv")});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "note: " + file("bits.trv") + " holds a string that TRV_ConvertToPicture makes no picture of\n");
    EXPECT_EQ(tool({"convert", file("bits.trv"), "-o", file("out.ppm")}).status, 3);
    EXPECT_EQ(tool({"convert", bits, "-o", file("bits.trv")}).err, "");
}

TEST_F(StringFiles, MisuseByThePluginIsShown) {
    const Ending run = sample_tool({"convert", text_file("string.trv", kString), "-o", file("out.ppm")});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err.rfind("warning: TRV_ConvertToPicture: REALLockObject: ", 0), 0u) << run.err;
}

}  // namespace
}  // namespace tarvo::cli
