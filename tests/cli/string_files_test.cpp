// Picture strings in files, through the tool.

#include <gtest/gtest.h>

#include "../host/watched_memory.h"
#include "tool.h"

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
    EXPECT_EQ(run.out.substr(0, run.out.find('\n')), source + ": 2 x 1, 24 bits, mask");
    EXPECT_EQ(bytes_of(file("out.trv")), string);
    const Ending without = tool({"convert", source, "-o", file("out.ppm")});
    EXPECT_EQ(without.status, 0);
    EXPECT_EQ(without.err, "note: " + file("out.ppm") + " has no transparency: the mask is left out\n");
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
    EXPECT_EQ(run.err, "tarvo: " + file("noext") +
                           ": the name ends in none of .png, .jpg, .jpeg, .pbm, .pgm, .ppm, .pam, .trv\n");
}

TEST_F(StringFiles, AreToldInOneLineWhateverTheirName) {
    const Ending run = tool({"convert", text_file("two\nlines.trv", "x"), "-o", file("out.ppm")});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.err, "tarvo: " + file("two?lines.trv") + ": this is no string that a picture can be made of\n");
}

TEST_F(StringFiles, LongerThanAStringAreRefused) {
    std::filesystem::resize_file(text_file("long.trv", ""), std::uintmax_t{1} << 31);
    const Ending run = tool({"convert", file("long.trv"), "-o", file("out.ppm")});
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.err, "tarvo: " + file("long.trv") + ": larger than 2147483647 bytes\n");
}

TEST_F(StringFiles, ThatMemoryCannotHoldAreTold) {
#ifdef WATCHED_MEMORY
    GTEST_SKIP() << "AddressSanitizer needs all addresses";
#endif
    // As long as a string can be: memory is what they lack.
    for (const std::uintmax_t size : {std::uintmax_t{300} << 20, (std::uintmax_t{1} << 31) - 1}) {
        std::filesystem::resize_file(text_file("large.trv", ""), size);
        const Ending run = shell("ulimit -v 200000 && tarvo convert large.trv -o out.ppm");
        EXPECT_EQ(run.status, 3);
        EXPECT_EQ(run.err, "tarvo: large.trv: not enough memory\n") << size;
    }
}

TEST_F(StringFiles, ThatCannotBeReadAgainAreNoted) {
    const std::string bits = text_file("bits.pbm", "P4\n2 1\n\x40");
    const Ending run = tool({"convert", bits, "--keep-depth", "-o", file("bits.trv")});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "note: " + file("bits.trv") + " holds a string that TRV_ConvertToPicture makes no picture of\n");
    EXPECT_EQ(tool({"convert", file("bits.trv"), "-o", file("out.ppm")}).status, 3);
    EXPECT_EQ(tool({"convert", bits, "-o", file("bits.trv")}).err, "");
    const std::string nothing = "TRV_AdjustRGB_InPlace(nil, 0, 0, 0)";
    EXPECT_EQ(tool({"apply", "--keep-depth", bits, nothing, "-o", file("bits.trv")}).err, run.err);
    EXPECT_EQ(tool({"apply", "-q", "--keep-depth", bits, nothing, "-o", file("bits.trv")}).err, "");
}

TEST_F(StringFiles, MisuseByThePluginIsShown) {
    const Ending run =
        tool({"convert", "--plugin", TARVO_SAMPLE_OPERATIONS, text_file("string.trv", kString), "-o", file("out.ppm")});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err.rfind("warning: TRV_ConvertToPicture: REALLockObject: ", 0), 0u) << run.err;
}

}  // namespace
}  // namespace tarvo::cli
