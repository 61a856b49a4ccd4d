#include <gtest/gtest.h>

#include <fnmatch.h>
#include <unistd.h>

#include <cstdlib>

#include "png_samples.h"
#include "tool.h"

namespace tarvo::cli {
namespace {

using Colors = std::vector<std::uint32_t>;

// `*` stands for any text.
bool looks_like(const std::string& text, const std::string& pattern) {
    return ::fnmatch(pattern.c_str(), text.c_str(), FNM_NOESCAPE) == 0;
}

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

class ApplyTest : public ToolTest {
protected:
    // Two by two pixels.
    const Colors kColors = {0x102030, 0x405060, 0x708090, 0xA0B0C0};
    std::string small() const { return ppm("small.ppm", 2, 2, kColors); }
};

// --- with the plugin itself -----------------------------------------------------------------------------------------

TEST_F(ApplyTest, AddsAPictureFile) {
    const std::string addend = ppm("addend.ppm", 2, 2, {0x010203, 0x010101, 0, 0x0F0F0F});
    for (const std::string& argument : {addend, '"' + addend + '"'}) {
        const Ending run = tool({"apply", small(), "TRV_Add(" + argument + ", 0)", "-o", file("out.ppm")});
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(colors_of(file("out.ppm")), (Colors{0x112233, 0x415161, 0x708090, 0xAFBFCF}));
    }
    EXPECT_EQ(entries(), (std::vector<std::string>{"addend.ppm", "out.ppm", "small.ppm"}));
}

TEST_F(ApplyTest, SaysWhatItDid) {
    const Ending run = tool({"apply", small(), "TRV_Add(" + small() + ", 0)", "-o", file("out.ppm")});
    EXPECT_TRUE(looks_like(run.out, small() + ": 2 x 2, RGB, 8 bits a channel\nTRV_Add: 2 x 2, 32 bits, *.[0-9] ms\n" +
                                        file("out.ppm") + ": 2 x 2, RGB, 8 bits a channel\n"))
        << run.out;
    EXPECT_EQ(tool({"apply", "-q", small(), "TRV_Add(" + small() + ", 0)", "-o", file("out.ppm")}).out, "");
}

TEST_F(ApplyTest, MakesCallsOneAfterTheOther) {
    const std::string one = ppm("one.ppm", 2, 2, Colors(4, 0x010101));
    const std::string add = "TRV_Add(" + one + ", 0)", subtract = "trv_subtract(" + one + ", 0)";
    EXPECT_EQ(tool({"apply", small(), add, add, subtract, add, "-o", file("out.ppm")}).status, 0);
    EXPECT_EQ(colors_of(file("out.ppm")), (Colors{0x122232, 0x425262, 0x728292, 0xA2B2C2}));
}

TEST_F(ApplyTest, RectanglesSelectARegion) {
    const Ending run =
        tool({"apply", small(), "TRV_AdjustContrast(rect(1, 0, 1, 1), &c000000, 2, 2, 2, 0)", "-o", file("out.ppm")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(colors_of(file("out.ppm")), (Colors{0x102030, 0x80A0C0, 0x708090, 0xA0B0C0}));
    EXPECT_EQ(tool({"apply", small(), "TRV_AdjustContrast(nil, &c000000, 2, 2, 2, 0)", "-o", file("out.ppm")}).status,
              0);
    EXPECT_EQ(colors_of(file("out.ppm"))[0], 0x204060u);
}

TEST_F(ApplyTest, FailedOperationIsToldAndNothingIsWritten) {
    const std::string other = ppm("other.ppm", 2, 1, {0, 0});
    const Ending run = tool({"apply", small(), "TRV_Add(" + other + ", 0)", "-o", file("out.ppm")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
              "tarvo: TRV_Add: error 20: General Error: \"addend\" is wrong size\n"
              "    the addend has another size than the source; the picture is 2 x 2, addend is 2 x 1\n");
    EXPECT_FALSE(exists("out.ppm"));
}

TEST_F(ApplyTest, LaterFailureLeavesTheOldFile) {
    text_file("out.ppm", "old");
    EXPECT_EQ(tool({"apply", small(), "TRV_Add(" + small() + ", 0)", "TRV_Add(nil, 0)", "-o", file("out.ppm")}).status,
              1);
    EXPECT_EQ(bytes_of(file("out.ppm")), "old");
}

TEST_F(ApplyTest, WorksOnClientPictures) {
    const std::string one = ppm("one.ppm", 2, 2, Colors(4, 0x010101));
    for (const std::string as_picture : {"true", "false"}) {
        const Ending run =
            tool({"apply", "--client", small(), "TRV_Add(" + one + ", 0, " + as_picture + ")", "-o", file("out.ppm")});
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_TRUE(holds(run.out, "TRV_Add: client picture 2 x 2, 32 bits, ")) << run.out;
        EXPECT_EQ(colors_of(file("out.ppm")), (Colors{0x112131, 0x415161, 0x718191, 0xA1B1C1}));
    }
    // The last operation has no form for client pictures: the client picture becomes a picture.
    const Ending run = tool(
        {"apply", "--client", small(), "TRV_Add(" + one + ", 0, false)", "TRV_Downsample(8)", "-o", file("out.ppm")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(holds(run.out, "\nTRV_Downsample: 2 x 2, 32 bits, ")) << run.out;
    EXPECT_EQ(colors_of(file("out.ppm")), (Colors{0x112131, 0x415161, 0x718191, 0xA1B1C1}));
}

// --- what files are, and come back as -------------------------------------------------------------------------------

class Kinds : public ApplyTest {
protected:
    // What the lines say of the file that is read and of the one that is written, in the format of that ending.
    std::vector<std::string> told(const std::string& source, const std::string& call, const std::string& ending) const {
        const std::string path = file("out" + ending);
        const Ending run = tool({"apply", source, call, "-o", path});
        EXPECT_EQ(run.status, 0) << run.err;
        std::vector<std::string> kinds;
        for (const std::string& name : {source, path}) {
            const std::size_t begin = run.out.find(", ", run.out.find(name + ": ")) + 2;
            kinds.push_back(run.out.substr(begin, run.out.find('\n', begin) - begin));
        }
        const bool cut = holds(kinds.front(), "16 bits a channel");
        EXPECT_EQ(run.err, cut ? "note: " + path + " has no more than 8 of 16 bits a channel\n" : "");
        return kinds;
    }

    using Texts = std::vector<std::string>;
    const std::string kNothing = "AdjustRGB(nil, 0, 0, 0)";
};

TEST_F(Kinds, OfGreysComeBackWhereAllAreGrey) {
    const std::string grey = "grey, 8 bits a channel";
    const std::string source = text_file("grey.pgm", "P5\n2 1\n255\n\x07\xFF");
    for (const char* ending : {".png", ".jpg", ".pam", ".pgm"})
        EXPECT_EQ(told(source, kNothing, ending), (Texts{grey, grey})) << ending;
    EXPECT_EQ(told(source, "AdjustRGB(nil, 1, 0, 0)", ".png"), (Texts{grey, "RGB, 8 bits a channel"}));
    EXPECT_EQ(told(source, kNothing, ".ppm"), (Texts{grey, "RGB, 8 bits a channel"}));
    const std::string deep = text_file("deep.pgm", std::string("P5\n2 1\n65535\n\x07\x70\xFF\x00", 18));
    EXPECT_EQ(told(deep, kNothing, ".png"), (Texts{"grey, 16 bits a channel", grey}));
    const std::string bits = text_file("bits.pbm", "P4\n2 1\n\x40");
    EXPECT_EQ(told(bits, kNothing, ".png"), (Texts{"black and white", "black and white"}));
    EXPECT_EQ(told(bits, "AdjustContrast(nil, &c808080, 0.5, 0.5, 0.5)", ".png"), (Texts{"black and white", grey}));
    EXPECT_EQ(told(small(), "AdjustHSV(nil, 0, 0, 1, false)", ".png"),
              (Texts{"RGB, 8 bits a channel", "RGB, 8 bits a channel"}));
}

TEST_F(Kinds, OfPalettesComeBackWhereTheColorsAreFew) {
    const std::vector<std::uint8_t> bytes = host::png_file({.width = 2,
                                                            .height = 1,
                                                            .bit_depth = 2,
                                                            .color_type = 3,
                                                            .rows = {0, 0x10},
                                                            .palette = {255, 128, 0, 0, 64, 128, 1, 2, 3}});
    const std::string source = text_file("palette.png", {bytes.begin(), bytes.end()});
    const std::string kept = "palette, 2 bits a pixel";
    EXPECT_EQ(told(source, kNothing, ".png"), (Texts{kept, "palette, 1 bit a pixel"}));
    EXPECT_EQ(colors_of(file("out.png")), (Colors{0xFF8000, 0x004080}));
    EXPECT_EQ(told(source, "MakeDoubleGradient(2, 1000, &c000000, &cFF0080, &cFFFFFF)", ".png"),
              (Texts{kept, "RGB, 8 bits a channel"}));
    const Ending convert = tool({"convert", source, "-o", file("converted.png")});
    EXPECT_EQ(convert.status, 0);
    EXPECT_TRUE(holds(tool({"apply", file("converted.png"), "Info()"}).out, ": 2 x 1, palette, 1 bit a pixel\n"));
}

TEST_F(Kinds, AreNoLongerAskedFor) { EXPECT_EQ(tool({"apply", "--keep-depth", small(), "Info()"}).status, 2); }

// --- answers --------------------------------------------------------------------------------------------------------

TEST_F(ApplyTest, PrintsWhatComesBackInArguments) {
    const Ending run =
        tool({"apply", "-q", small(), "TRV_GetAverageContrast(nil, &c000000, 0, 0, 0, 0)", "-o", file("out.ppm")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(looks_like(run.out, "red_contrast = [0-9]*\ngreen_contrast = [0-9]*\nblue_contrast = [0-9]*\n"))
        << run.out;
    EXPECT_EQ(colors_of(file("out.ppm")), kColors);  // the picture in hand stays
}

TEST_F(ApplyTest, AnythingCanStandWhereAnAnswerComesBack) {
    for (const std::string written : {"1.5, 0, 0", "nil, true, &cFFFFFF", "red, \"green\", rect(1, 2, 3, 4)"}) {
        const Ending run = tool({"apply", "-q", small(), "TRV_GetAverageRGB(nil, " + written + ")"});
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out, "red = 88\ngreen = 104\nblue = 120\n") << written;
    }
    EXPECT_EQ(tool({"apply", "-q", small(), "TRV_MakeMemoryBlock(nil, false, nil)"}).out,
              "TRV_MakeMemoryBlock = a MemoryBlock of 16 bytes\nrow_bytes = 8\n");
    EXPECT_EQ(apply_sample({"-q", small(), "Measure(nil, x, y)", "Measure(1, 1.5, 0)", "Measure(0.25, 0, true)"}).out,
              "share = 0.5\ncount = -7\nfound = true\nshare = 1.5\ncount = -7\nfound = true\n"
              "share = 0.75\ncount = -7\nfound = true\n");
}

// --- ways in which a call can end -----------------------------------------------------------------------------------

TEST_F(ApplyTest, CodeWithAResultIsAWarning) {
    const Ending run = apply_sample({small(), "SamePicture(9)", "-o", file("out.ppm")});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "warning: SamePicture: error 9: General Error: can't lock \"mask\" picture\n");
    EXPECT_EQ(colors_of(file("out.ppm")), kColors);
}

TEST_F(ApplyTest, NoResultIsAFailure) {
    const Ending with_code = apply_sample({small(), "NoPicture(4)", "-o", file("out.ppm")});
    EXPECT_EQ(with_code.status, 1);
    EXPECT_EQ(with_code.err, "tarvo: NoPicture: error 4: General Error: can't lock \"source\" picture\n");
    const Ending without = apply_sample({small(), "NoPicture(0)", "-o", file("out.ppm")});
    EXPECT_EQ(without.status, 1);
    EXPECT_EQ(without.err, "tarvo: NoPicture gave no result and no error code\n");
    EXPECT_EQ(apply_sample({small(), "InPlace(4)", "-o", file("out.ppm")}).status, 1);
    EXPECT_EQ(apply_sample({small(), "Truth(49)", "-o", file("out.ppm")}).status, 1);
    EXPECT_FALSE(exists("out.ppm"));
}

TEST_F(ApplyTest, CallsWithoutAPictureLeaveTheOneInHand) {
    const Ending run =
        apply_sample({"-q", small(), "InPlace(0)", "Truth(0)", "Measure(0, 0, false)", "-o", file("out.ppm")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "Truth = true\nshare = 0.5\ncount = -7\nfound = true\n");
    EXPECT_EQ(colors_of(file("out.ppm")), kColors);
}

TEST_F(ApplyTest, EveryKindOfAnswerIsPrinted) {
    EXPECT_EQ(
        apply_sample({"-q", small(), "Echo(\"two words\")", "SomeBytes()", "Block(12)", "ColorNumber(&c0000FF)",
                      "Halves(5)", "Measure(0.25, 0, false)"})
            .out,
        "Echo = two words\nSomeBytes = a string of 3 bytes\nBlock = a MemoryBlock of 12 bytes\nColorNumber = 255\n"
        "Halves = 2.5\nshare = 0.75\ncount = -7\nfound = true\n");
}

TEST_F(ApplyTest, MatricesAndConvolutionsHoldTheirNumbers) {
    const std::string matrix = "matrix(1, 2, 3, 4, 5, 6, 7, 8, 9.5)";
    EXPECT_EQ(apply_sample({"-q", small(), "MatrixElement(" + matrix + ", 0, 1)", "MatrixElement(" + matrix + ", 1, 0)",
                            "MatrixElement(" + matrix + ", 2, 2)"})
                  .out,
              "MatrixElement = 2\nMatrixElement = 4\nMatrixElement = 9.5\n");
    EXPECT_EQ(apply_sample({"-q", small(), "CoefficientCount(convolution(1, -2, 7))",
                            "LastCoefficient(convolution(1, -2, 7))", "CoefficientCount(convolution())"})
                  .out,
              "CoefficientCount = 3\nLastCoefficient = 7\nCoefficientCount = 0\n");
}

TEST_F(ApplyTest, QuotedTextIsAFileOnlyWhereAPictureIsWanted) {
    EXPECT_EQ(apply_sample({"-q", small(), "Echo(\"" + small() + "\")"}).out, "Echo = " + small() + "\n");
    const std::string other = ppm("other one.ppm", 1, 1, {0x123456});
    EXPECT_EQ(apply_sample({small(), "Second(\"" + other + "\")", "-o", file("out.ppm")}).status, 0);
    EXPECT_EQ(colors_of(file("out.ppm")), Colors{0x123456});
}

TEST_F(ApplyTest, MessageBoxesAndMisuseAreShown) {
    EXPECT_EQ(apply_sample({small(), "Show()"}).err, "message box: look here\n");
    const Ending misuse = apply_sample({small(), "Misuse()"});
    EXPECT_EQ(misuse.status, 0);
    EXPECT_EQ(misuse.err.rfind("warning: Misuse: ", 0), 0u) << misuse.err;
}

// --- wrong calls ----------------------------------------------------------------------------------------------------

TEST_F(ApplyTest, ErrorsInACallAreShownInItsText) {
    const Ending run = apply_sample({small(), "SamePicture(&c12)", "-o", file("out.ppm")});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");  // nothing was read before
    EXPECT_TRUE(looks_like(run.err, "tarvo: column 13: *\n  SamePicture(&c12)\n" + std::string(14, ' ') + "^\n"))
        << run.err;
    EXPECT_FALSE(exists("out.ppm"));

    const Ending wide = apply_sample({small(), "Echo(\"\u00e4\u00f6\", ?)"});
    EXPECT_TRUE(holds(wide.err, "\n" + std::string(13, ' ') + "^\n")) << wide.err;
}

TEST_F(ApplyTest, ObjectsThatAreNoPicturesAreAnswers) {
    const std::string call = "SameMatrix(matrix(1, 0, 0, 0, 1, 0, 0, 0, 1))";
    const Ending run = apply_sample({"-q", small(), call, "SamePicture()", "-o", file("out.ppm")});
    EXPECT_EQ(run.out, "SameMatrix = a TRV_ColorMatrix\n");
    EXPECT_EQ(colors_of(file("out.ppm")), colors_of(small()));
}

TEST_F(ApplyTest, ClientPicturesWithoutRoomForTheirPixelsAreNotWritten) {
    const std::string in = ppm("in.ppm", 10, 10, std::vector<std::uint32_t>(100, 7));
    const Ending run =
        tool({"apply", "-q", "--client", "--max-memory", "400", in, "Stretch(10, 10)", "-o", file("out.ppm")});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(holds(run.err, "400 are taken already, the limit is 400 (--max-memory)\n")) << run.err;
    EXPECT_TRUE(run.err.ends_with("\ntarvo: no picture can be made\n")) << run.err;
    EXPECT_FALSE(exists("out.ppm"));
}

TEST_F(ApplyTest, ClassesThatThePluginLacksAreTold) {
    const Ending run = apply_sample({small(), "Area(rect(1, 2, 3, 4))"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "tarvo: Area: the plugin has no class TRV_Rectangle\n  Area(rect(1, 2, 3, 4))\n       ^\n");
    const Ending none = apply_sample({"--client", small(), "Client()"});
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.err, "tarvo: there is no class \"TRV_ClientPicture\"\n");
    const Ending client = apply_sample({"--client", small(), "SamePicture()"});
    EXPECT_EQ(client.status, 2);
    EXPECT_TRUE(holds(client.err, "it works on a picture, not on a TRV_ClientPicture")) << client.err;
}

// --- files ----------------------------------------------------------------------------------------------------------

TEST_F(ApplyTest, FilesThatCannotBeReadOrWrittenAreTold) {
    const std::string cut = text_file("cut.ppm", "P6\n2 2\n255\n123456789");
    const Ending bad_input = apply_sample({cut, "SamePicture()", "-o", file("out.ppm")});
    EXPECT_EQ(bad_input.status, 3);
    EXPECT_EQ(bad_input.err, "tarvo: " + cut + ": cut short after 1 row\n");
    EXPECT_EQ(apply_sample({file("none.ppm"), "SamePicture()", "-o", file("out.ppm")}).status, 3);

    const Ending bad_argument = apply_sample({small(), "Second(none.ppm)", "-o", file("out.ppm")});
    EXPECT_EQ(bad_argument.status, 3);
    EXPECT_EQ(bad_argument.err, "tarvo: none.ppm: cannot be opened: No such file or directory\n");
    EXPECT_FALSE(exists("out.ppm"));

    const Ending bad_name = apply_sample({small(), "SamePicture()", "-o", file("out.gif")});
    EXPECT_EQ(bad_name.status, 2);
    EXPECT_EQ(bad_name.out, "");  // found before any work
    EXPECT_EQ(entries(), (std::vector<std::string>{"cut.ppm", "small.ppm"}));
}

TEST_F(ApplyTest, OutputsThatCannotBeWrittenAreToldBeforeAnyWork) {
    const std::string folder = file("folder.ppm");
    std::filesystem::create_directory(folder);
    const std::pair<std::string, std::string> rows[] = {
        {file("none/out.ppm"), ": there is no folder \"" + file("none") + "\"\n"},
        {small() + "/out.ppm", ": there is no folder \"" + small() + "\"\n"},
        {folder, ": not a regular file\n"},
    };
    for (const auto& [path, message] : rows) {
        for (const std::vector<std::string>& line :
             {std::vector<std::string>{"apply", file("none.ppm"), "TRV_Info()", "-o", path},
              std::vector<std::string>{"convert", file("none.ppm"), "-o", path}}) {
            const Ending run = tool(line);
            EXPECT_EQ(run.status, 2);
            EXPECT_EQ(run.out, "");
            EXPECT_EQ(run.err, "tarvo: " + path + message);
        }
    }
}

TEST_F(ApplyTest, FoldersThatCannotBeWrittenInAreToldBeforeAnyWork) {
    if (::geteuid() == 0) GTEST_SKIP() << "root can write in every folder";
    const std::filesystem::path folder = file("closed");
    std::filesystem::create_directory(folder);
    std::filesystem::permissions(folder, std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    const Ending run = tool({"apply", file("none.ppm"), "TRV_Info()", "-o", folder / "out.ppm"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err,
              "tarvo: " + (folder / "out.ppm").string() + ": its folder cannot be written in: Permission denied\n");
}

TEST_F(ApplyTest, MaskThatTheFormatCannotKeepIsTold) {
    const std::string clear =
        text_file("clear.pam", "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\nabc@");
    const Ending kept = apply_sample({clear, "SamePicture()", "-o", file("out.pam")});
    EXPECT_EQ(kept.err, "");
    EXPECT_TRUE(holds(kept.out, "clear.pam: 1 x 1, RGB, 8 bits a channel, mask\n")) << kept.out;
    EXPECT_EQ(bytes_of(file("out.pam")), bytes_of(clear));

    const Ending lost = apply_sample({clear, "SamePicture()", "-o", file("out.ppm")});
    EXPECT_EQ(lost.status, 0);
    EXPECT_EQ(lost.err, "note: " + file("out.ppm") + " has no transparency: the mask is left out\n");
    EXPECT_EQ(colors_of(file("out.ppm")), Colors{0x616263});
    EXPECT_EQ(apply_sample({"-q", clear, "SamePicture()", "-o", file("out.ppm")}).err, lost.err);
}

TEST_F(ApplyTest, ResultCanReplaceItsSource) {
    const std::string path = small();
    EXPECT_EQ(tool({"apply", path, "TRV_Add(" + path + ", 0)", "-o", path}).status, 0);
    EXPECT_EQ(colors_of(path)[0], 0x204060u);
}

TEST_F(ApplyTest, WrongUsageIsTold) {
    EXPECT_EQ(tool({"apply"}).status, 2);
    EXPECT_EQ(tool({"apply", small()}).status, 2);
    EXPECT_EQ(tool({"apply", small(), "SamePicture()", "--no-such"}).status, 2);
    EXPECT_TRUE(holds(tool({"apply", "--help"}).out, "rect(left, top, width, height)"));
}

TEST_F(ApplyTest, OutputThatCannotBeWrittenIsAnError) {
    const std::string line = std::string(TARVO_TOOL) + " list > /dev/full 2> " + file("err");
    EXPECT_EQ(WEXITSTATUS(std::system(line.c_str())), 3);
    EXPECT_EQ(bytes_of(file("err")), "tarvo: the output cannot be written\n");
}

}  // namespace
}  // namespace tarvo::cli
