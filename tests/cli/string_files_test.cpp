// Picture strings in files, through the tool.

#include <gtest/gtest.h>

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
    EXPECT_EQ(nowhere.status, 3);
    EXPECT_EQ(nowhere.err.rfind("tarvo: " + file("no/folder.trv") + ": ", 0), 0u) << nowhere.err;
    EXPECT_EQ(tool({"convert", picture(), "-o", file("out.txt")}).status, 3);
    EXPECT_EQ(tool({"convert", picture()}).status, 2);
}

}  // namespace
}  // namespace tarvo::cli
