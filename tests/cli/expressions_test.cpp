// Calls as people write them, through the tool.

#include <gtest/gtest.h>

#include "tool.h"

namespace tarvo::cli {
namespace {

using Colors = std::vector<std::uint32_t>;

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

class ExpressionsTest : public ToolTest {
protected:
    const Colors kColors = {0x102030, 0x405060, 0x708090, 0xA0B0C0};
    std::string small() const { return ppm("small.ppm", 2, 2, kColors); }
    // A plain picture of that size.
    std::string sheet(int width, int height) const {
        return ppm("sheet.ppm", width, height, Colors(static_cast<std::size_t>(width * height), 0x808080));
    }

    // The colours that a call makes of the small picture.
    Colors made(const std::string& call) const {
        const Ending run = tool({"apply", small(), call, "-o", file("out.pam")});
        EXPECT_EQ(run.status, 0) << call << '\n' << run.err;
        EXPECT_EQ(run.err, "") << call;
        return run.status == 0 ? colors_of(file("out.pam")) : Colors{};
    }

    // "WIDTH x HEIGHT" of what a call makes of a plain picture.
    std::string size_made(int width, int height, const std::string& call) const {
        const Ending run = tool({"apply", sheet(width, height), call, "-o", file("out.pam")});
        EXPECT_EQ(run.status, 0) << call << '\n' << run.err;
        EXPECT_EQ(run.err, "") << call;
        const std::string line = run.out.substr(run.out.find("out.pam: ") + 9);
        return line.substr(0, line.find(','));
    }

    // What a call on the small picture is refused with: the message, and the mark's column in the call from 0.
    void expect_refused(const std::string& call, const std::string& message, const std::string& marked) const {
        const Ending run = tool({"apply", small(), call});
        EXPECT_EQ(run.status, 2) << call;
        EXPECT_EQ(run.out, "") << call;  // nothing was read
        EXPECT_EQ(run.err, "tarvo: " + message + "\n  " + call + "\n  " + std::string(call.find(marked), ' ') + "^\n");
    }

    Ending sample(const std::string& call) const { return apply_sample({"-q", small(), call}); }
};

// --- names and arguments that may be left out -----------------------------------------------------------------------

TEST_F(ExpressionsTest, NamesAreTakenWithoutTheirPrefixAndBehindAVariable) {
    const Colors all = made("TRV_AdjustRGB(nil, 1, 2, 3)");
    EXPECT_EQ(all[0], 0x112233u);
    for (const char* call : {"AdjustRGB(nil, 1, 2, 3)", "adjustrgb(nil, 1, 2, 3)", "p.TRV_AdjustRGB(nil, 1, 2, 3)",
                             "photo.AdjustRGB(nil, 1, 2, 3)"})
        EXPECT_EQ(made(call), all) << call;
    // A name that is declared as written goes first.
    EXPECT_EQ(sample("Halves(3)").out, "Halves = 1.5\n");
    EXPECT_EQ(sample("RowBytes()").status, 2);
}

TEST_F(ExpressionsTest, ArgumentsWithDefaultsMayBeLeftOut) {
    const Colors all = made("TRV_AdjustContrast(nil, &c000000, 2, 2, 2, 0)");
    EXPECT_EQ(all[0], 0x204060u);
    EXPECT_EQ(made("AdjustContrast(nil, &c000000, 2, 2, 2)"), all);
    EXPECT_EQ(made("AdjustContrast(center = &c000000, red_factor = 2, green_factor = 2, blue_factor = 2)"), all);
    EXPECT_EQ(sample("SamePicture()").status, 0);
    // The declaration's own default.
    const Ending client = tool({"apply", "--client", small(), "Composite(" + small() + ", 0.5, 0, 0)"});
    EXPECT_EQ(client.status, 0) << client.err;
    EXPECT_TRUE(holds(client.out, "TRV_Composite: client picture 2 x 2")) << client.out;
}

TEST_F(ExpressionsTest, WhatIsOnlyGivenBackNeedNotBeWritten) {
    EXPECT_EQ(tool({"apply", "-q", small(), "GetAverageRGB()"}).out, "red = 88\ngreen = 104\nblue = 120\n");
    EXPECT_EQ(sample("Measure(count = 4)").out, "share = 0.5\ncount = -7\nfound = true\n");
    EXPECT_EQ(sample("Measure(share = 2.5)").out, "share = 3\ncount = -7\nfound = true\n");
}

TEST_F(ExpressionsTest, ArgumentsAreGivenByName) {
    const Colors all = made("TRV_AdjustRGB(nil, 1, 2, 3)");
    EXPECT_EQ(made("AdjustRGB(red_delta = 1, green_delta = 2, blue_delta = 3)"), all);
    EXPECT_EQ(made("AdjustRGB(blue_delta=3, GREEN_DELTA=2, red_delta=1, rect=nil)"), all);
    EXPECT_EQ(made("AdjustRGB(nil, 1, blue_delta = 3, green_delta = 2)"), all);
}

// --- which form is meant --------------------------------------------------------------------------------------------

TEST_F(ExpressionsTest, NamesAndTypesChooseTheForm) {
    // Without and with the colour of the corners.
    for (const char* call : {"ShearHorizontal(3, 2, 0.5)", "ShearHorizontal(3, 2, 0.5, 0)",
                             "ShearHorizontal(3, 2, shear = 0.5, yield = 0)"})
        EXPECT_EQ(made(call), made("TRV_ShearHorizontal(3, 2, 0.5, 0)")) << call;
    const Colors framed = made("TRV_ShearHorizontal(3, 2, 0.5, &cFF0000, 0)");
    EXPECT_NE(framed, made("TRV_ShearHorizontal(3, 2, 0.5, 0)"));
    EXPECT_EQ(made("ShearHorizontal(3, 2, 0.5, &cFF0000)"), framed);
    EXPECT_EQ(made("ShearHorizontal(3, 2, frame_color = &cFF0000, shear = 0.5)"), framed);

    // A picture or a colour over it.
    EXPECT_EQ(made("Composite(" + small() + ", 0.5, 0, 0)"), kColors);
    const Colors tinted = made("TRV_Composite(nil, &cFFFFFF, 0.5, 0)");
    EXPECT_EQ(made("Composite(overlay_color = &cFFFFFF, overlay_fraction = 0.5)"), tinted);
    EXPECT_EQ(made("Composite(nil, &cFFFFFF, 0.5)"), tinted);

    // Numbers or a matrix.
    const std::string matrix = "matrix(0, 0, 1, 0, 1, 0, 1, 0, 0)";
    EXPECT_EQ(made("AdjustRGB(cm = " + matrix + ")"), made("TRV_AdjustRGB(nil, " + matrix + ")"));
}

TEST_F(ExpressionsTest, CallsThatTwoFormsTakeAreRefusedWithBoth) {
    expect_refused("Composite()",
                   "TRV_Composite: none of these takes the call:\n"
                   "    TRV_Composite(overlay, overlay_fraction, left, top, [yield]): missing: overlay, "
                   "overlay_fraction, left, top\n"
                   "    TRV_Composite([rect], overlay_color, overlay_fraction, [yield]): missing: overlay_color, "
                   "overlay_fraction",
                   "Composite");
    const Ending both = sample("Twice(second = 1)");
    EXPECT_EQ(both.status, 2);
    EXPECT_EQ(both.err,
              "tarvo: Twice: several methods take the call equally well:\n    Twice([first], second)\n"
              "    Twice(second, [third])\n  Twice(second = 1)\n  ^\n");
    EXPECT_EQ(sample("Twice(second = 1, first = 2)").out, "Twice = 1\nfirst = 2\n");
    EXPECT_EQ(sample("Twice(second = 1, third = 2)").out, "Twice = 2\n");
}

// --- numbers --------------------------------------------------------------------------------------------------------

TEST_F(ExpressionsTest, NumbersAreComputedFromThePictureInHand) {
    EXPECT_EQ(size_made(30, 20, "Stretch(20, height * 20 / width)"), "20 x 13");
    EXPECT_EQ(size_made(30, 20, "Stretch(width/2, height/8)"), "15 x 3");  // 2.5
    EXPECT_EQ(size_made(30, 20, "Stretch((width - 10) * 2, -(2 - height))"), "40 x 18");
    EXPECT_EQ(size_made(30, 20, "Trim(rect(0, 0, width - 5, height / 3), &c000000)"), "25 x 7");
    const Ending chain = tool(
        {"apply", sheet(30, 20), "Stretch(width * 2, height)", "Stretch(width / 3, height)", "-o", file("out.ppm")});
    EXPECT_TRUE(holds(chain.out, "TRV_Stretch: 60 x 20, 32 bits, ")) << chain.out;
    EXPECT_TRUE(holds(chain.out, "TRV_Stretch: 20 x 20, 32 bits, ")) << chain.out;
    EXPECT_EQ(sample("Halves(width * 3 / 4)").out, "Halves = 1\n");  // 1.5 is 2
    EXPECT_EQ(sample("MatrixElement(matrix(0, width / 4, 0, 0, 0, 0, 0, 0, 0), 0, 1)").out, "MatrixElement = 0.5\n");
    EXPECT_EQ(sample("LastCoefficient(convolution(1, 1, height * 10))").out, "LastCoefficient = 20\n");
}

TEST_F(ExpressionsTest, ClientPicturesAreMeasuredToo) {
    const Ending run = tool({"apply", "--client", sheet(30, 20), "Stretch(width / 2, height / 2, as_picture = false)",
                             "Stretch(fit(30), as_picture = true)", "-o", file("out.ppm")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(holds(run.out, "TRV_Stretch: client picture 15 x 10, ")) << run.out;
    EXPECT_TRUE(holds(run.out, "out.ppm: 30 x 20, ")) << run.out;
}

TEST_F(ExpressionsTest, WordsThatAreNumbersAndFilesAreWhatIsWanted) {
    std::filesystem::create_directory(file("1"));
    ppm("1/2", 2, 2, Colors(4, 0x010101));
    const Ending run = shell("tarvo apply " + small() + " 'Add(1/2)' -o out.ppm");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(colors_of(file("out.ppm"))[0], 0x112131u);
    EXPECT_EQ(sample("Halves(4/2)").out, "Halves = 1\n");
}

TEST_F(ExpressionsTest, WhatHasNoValueIsFoundBeforeAnyWorkWhereItCan) {
    expect_refused("Stretch(5 / 0, 2)", "TRV_Stretch: division by zero", "/");
    expect_refused("Stretch(65536 * 65536, 2)", "TRV_Stretch: the result is too large for an integer of 32 bits",
                   "65536");
    expect_refused("Trim(rect(0, 0, 1/0, 2), &c000000)", "TRV_Trim: division by zero", "/");
    expect_refused("Stretch(fit(0))", "TRV_Stretch: a side of 0 pixels fits nothing", "0");
    const std::string call = "Stretch(5 / (width - 2), 2)";
    const Ending run = tool({"apply", small(), call, "-o", file("out.ppm")});
    EXPECT_EQ(run.status, 1);  // the picture was read before
    EXPECT_EQ(run.err, "tarvo: TRV_Stretch: division by zero\n  " + call + "\n            ^\n");
    EXPECT_FALSE(exists("out.ppm"));
}

// --- fit and border -------------------------------------------------------------------------------------------------

TEST_F(ExpressionsTest, FitStandsForAWidthAndAHeight) {
    EXPECT_EQ(size_made(30, 20, "Stretch(fit(15))"), "15 x 10");
    EXPECT_EQ(size_made(20, 30, "Stretch(fit(15), 0)"), "10 x 15");
    EXPECT_EQ(size_made(30, 20, "Stretch(fit(60, 20), yield = 0)"), "30 x 20");
    EXPECT_EQ(size_made(30, 20, "Stretch(fit(width * 2))"), "60 x 40");
    EXPECT_EQ(size_made(30, 20, "ShearHorizontal(fit(15), 0.0)"), "15 x 10");
    expect_refused("Downsample(fit(2))",
                   "TRV_Downsample: fit(...) stands for a width and a height, in their place\n"
                   "    TRV_Downsample(bits_per_channel)",
                   "fit");
    expect_refused("Stretch(width = fit(2))",
                   "TRV_Stretch: fit(...) stands for a width and a height, in their place\n"
                   "    TRV_Stretch(width, height, [yield])",
                   "width");
    expect_refused("Stretch(fit(2), 0, 0)",
                   "TRV_Stretch: there is no parameter for it behind fit(...)\n    TRV_Stretch(width, height, [yield])",
                   "0)");
    expect_refused("Stretch(fit(2), height = 3)",
                   "TRV_Stretch: height is given twice\n    TRV_Stretch(width, height, [yield])", "height");
}

TEST_F(ExpressionsTest, BorderIsWhatIsLeftWithoutIt) {
    // Four columns, three rows; the border is of two colours that are near.
    const std::string framed = ppm("framed.ppm", 4, 3,
                                   {0xFFFFFF, 0xFFFFFF, 0xF8FFFF, 0xFFFFFF,  //
                                    0xFFFFFF, 0xFFFFFF, 0x123456, 0xFFFFFF,  //
                                    0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF});
    const auto trimmed = [&](const std::string& border, const std::string& option) {
        const Ending run = tool({"apply", option, framed, "Trim(" + border + ", &c000000)", "-o", file("out.ppm")});
        EXPECT_EQ(run.status, 0) << run.err;
        return colors_of(file("out.ppm"));
    };
    for (const char* option : {"--quiet", "--client"}) {
        EXPECT_EQ(trimmed("border()", option), (Colors{0xF8FFFF, 0x123456}));
        EXPECT_EQ(trimmed("border(6)", option), (Colors{0xF8FFFF, 0x123456}));
        EXPECT_EQ(trimmed("border(7)", option), Colors{0x123456});
        EXPECT_EQ(trimmed("border(width * 2)", option), Colors{0x123456});
    }
    const Ending nothing = tool({"apply", sheet(3, 2), "Trim(border(), &c000000)", "-o", file("none.ppm")});
    EXPECT_EQ(nothing.status, 1);
    EXPECT_EQ(nothing.err,
              "tarvo: TRV_Trim: nothing is left without the border: the whole picture has the corner's color\n"
              "  Trim(border(), &c000000)\n       ^\n");
    EXPECT_TRUE(holds(tool({"apply", framed, "Trim(border(0 - 1), &c000000)"}).err,
                      "tarvo: TRV_Trim: a border cannot be within less than 0 levels\n"));
    EXPECT_EQ(made("Trim(border(), &c000000)"), kColors);  // a picture without a border stays
}

// --- operations that need no picture --------------------------------------------------------------------------------

TEST_F(ExpressionsTest, OperationsThatNeedNoPictureTakeNone) {
    const Ending run =
        tool({"apply", "MakeGradient(300, 200, &c102040, &cFFD080)", "Stretch(fit(3))", "-o", file("out.ppm")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(holds(run.out, "TRV_MakeGradient: 300 x 200, 32 bits, ")) << run.out;
    EXPECT_EQ(colors_of(file("out.ppm")).size(), 6u);
    EXPECT_EQ(made("MakeGradient(width, height, &c000000, &cFFFFFF)").size(), 4u);  // with one in hand as well
    EXPECT_EQ(tool({"apply", "-q", "GetErrorMessage(18)"}).out,
              "TRV_GetErrorMessage = General Error: \"addend\" is nil\n");
}

TEST_F(ExpressionsTest, WhatNeedsAPictureSaysSo) {
    const Ending none = tool({"apply", "Stretch(2, 2)"});
    EXPECT_EQ(none.status, 2);
    EXPECT_EQ(none.err, "tarvo: TRV_Stretch: it needs a picture: name a file before the calls\n  Stretch(2, 2)\n  ^\n");
    for (const std::string side : {"width", "(height)", "1 + width"}) {
        const std::string call = "MakeGradient(" + side + ", 200, &c102040, &cFFD080)";
        const Ending run = tool({"apply", call});
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.err, "tarvo: TRV_MakeGradient: width: there is no picture in hand to measure\n  " + call +
                               "\n  " + std::string(13, ' ') + "^\n");
    }
    EXPECT_EQ(tool({"apply", "MakeGradient(fit(200), &c102040, &cFFD080)"}).status, 2);
    EXPECT_EQ(tool({"apply", "--client", "MakeGradient(3, 2, &c102040, &cFFD080)"}).status, 2);
    const Ending nothing = tool({"apply", "GetErrorMessage(18)", "-o", file("out.ppm")});
    EXPECT_EQ(nothing.status, 2);
    EXPECT_EQ(nothing.err, "tarvo: -o: none of the calls makes a picture\n");
}

TEST_F(ExpressionsTest, AFileMayHaveTheNameOfACall) {
    const std::string odd = ppm("Stretch(2)", 2, 2, kColors);
    EXPECT_EQ(shell("tarvo apply 'Stretch(2)' 'Info()'").status, 0);
    const Ending no_call = shell("tarvo apply 'Stretch(2)'");
    EXPECT_EQ(no_call.status, 2);
    EXPECT_EQ(no_call.err, "tarvo: there is no call behind the file \"Stretch(2)\"\n");
    EXPECT_EQ(shell("tarvo apply 'photo (1).png' 'Info()'").status, 3);  // no such file
}

// --- messages -------------------------------------------------------------------------------------------------------

TEST_F(ExpressionsTest, MessagesNameTheArgumentTheValueAndWhatIsWanted) {
    expect_refused("AdjustHSV(nil, 1, 1, 1, flase, 0)",
                   "TRV_AdjustHSV: negative: expected true or false, found the file name \"flase\"", "flase");
    expect_refused("AdjustContrast(nil, c808080, 1, 1, 1)",
                   "TRV_AdjustContrast: center: expected a color (&cRRGGBB), found the file name \"c808080\"",
                   "c808080");
    expect_refused("AdjustContrast(7, &c808080, 1, 1, 1)",
                   "TRV_AdjustContrast: rect: expected rect(...), border(...) or nil, found 7", "7");
    expect_refused("Downsample(bits_per_channel = four)",
                   "TRV_Downsample: bits_per_channel: expected an integer, found the file name \"four\"", "four");
    expect_refused("AdjustRGB(cm = 5)", "TRV_AdjustRGB: cm: expected matrix(...) or nil, found 5", "5");
    expect_refused("Convolute(nil, 5)", "TRV_Convolute: horiz_convolution: expected convolution(...) or nil, found 5",
                   "5");
    expect_refused("FreeRotateByShear(right, 0)",
                   "TRV_FreeRotateByShear: rotation: expected a number, found the file name \"right\"", "right");
    expect_refused("ShearHorizontal(3, 3, 0.5, white)",
                   "TRV_ShearHorizontal: yield or frame_color: expected an integer or a color (&cRRGGBB), found the "
                   "file name \"white\"",
                   "white");
    expect_refused("Add(rect(1, 2, 3, 4 ) , 0)",
                   "TRV_Add: addend: expected a picture file or nil, found rect(1, 2, 3, 4 )", "rect");
    expect_refused("AdjustRGB(nil, 1, \"two\", 3)",
                   "TRV_AdjustRGB: green_delta: expected an integer, found the text \"two\"", "\"two\"");
    expect_refused("AdjustRGB(nil, true, 2, 3)", "TRV_AdjustRGB: red_delta: expected an integer, found true", "true");
    EXPECT_EQ(sample("Store(7)").err,
              "tarvo: Store: block: expected nil (a MemoryBlock cannot be written), found 7\n  Store(7)\n        ^\n");
    EXPECT_EQ(sample("Total(7)").err, "tarvo: Total: values: expected nil, found 7\n  Total(7)\n        ^\n");
    EXPECT_EQ(sample("Echo(word)").err,
              "tarvo: Echo: text: expected a text in quotes, found the file name \"word\"\n  Echo(word)\n       ^\n");
}

TEST_F(ExpressionsTest, CountsAndNamesOfArgumentsAreToldBeforeAnyWork) {
    expect_refused("Add(a.png, 0, 1)", "TRV_Add: it takes at most 2 arguments, found 3\n    TRV_Add(addend, [yield])",
                   "1)");
    expect_refused("Info(1)", "TRV_Info: it takes at most 0 arguments, found 1\n    TRV_Info()", "1");
    expect_refused("Stretch(2)", "TRV_Stretch: missing: height\n    TRV_Stretch(width, height, [yield])", "Stretch");
    expect_refused("AdjustContrast(centre = &c808080)",
                   "TRV_AdjustContrast: it has no argument \"centre\"; did you mean center?\n"
                   "    TRV_AdjustContrast([rect], center, red_factor, green_factor, blue_factor, [yield])",
                   "centre");
    expect_refused("Stretch(2, 2, width = 3)",
                   "TRV_Stretch: width is given twice\n    TRV_Stretch(width, height, [yield])", "width");
}

TEST_F(ExpressionsTest, UnknownNamesAreToldWithWhatWasMeant) {
    expect_refused("Strech(2, 2)", "there is no operation \"Strech\"; did you mean TRV_Stretch?", "Strech");
    expect_refused("trv_adjustgama()", "there is no operation \"trv_adjustgama\"; did you mean TRV_AdjustGamma?",
                   "trv");
    // A word that people use for it.
    expect_refused("Resize(fit(200))", "there is no operation \"Resize\"; did you mean TRV_Stretch?", "Resize");
    expect_refused("p.Steam()", "there is no operation \"Steam\"", "Steam");
    const Ending file_unread = tool({"apply", file("none.ppm"), "TRV_Ad(none.png, 0)"});
    EXPECT_EQ(file_unread.status, 2);
    EXPECT_EQ(
        file_unread.err,
        "tarvo: there is no operation \"TRV_Ad\"; did you mean TRV_Add or TRV_Trim?\n  TRV_Ad(none.png, 0)\n  ^\n");
    expect_refused("ConvertToPicture()",
                   "TRV_ConvertToPicture: it works on a string, not on a picture\n"
                   "    TRV_ConvertToPicture()",
                   "Convert");
}

TEST_F(ExpressionsTest, CallsOfAChainAreNumbered) {
    const Ending column = tool({"apply", small(), "Info()", "Stretch(2"});
    EXPECT_EQ(column.status, 2);
    EXPECT_EQ(column.err,
              "tarvo: call 2: column 10: expected \",\" or \")\", found the end\n  Stretch(2\n           ^\n");
    EXPECT_TRUE(holds(tool({"apply", small(), "Info()", "Nothing()"}).err, "tarvo: call 2: there is no operation"));
    EXPECT_TRUE(holds(tool({"apply", small(), "Info()", "Stretch(x, 2)"}).err, "tarvo: call 2, TRV_Stretch: width: "));
    EXPECT_EQ(tool({"apply", small(), "Info()", "Add(nil)"}).err,
              "tarvo: call 2, TRV_Add: error 18: General Error: \"addend\" is nil\n");
    EXPECT_EQ(tool({"apply", "MakeGradient(3, 2, &c000000, &cFFFFFF)", "Stretch(2, x)"}).status, 2);
}

TEST_F(ExpressionsTest, FailuresTellTheArgumentItsValueAndItsRange) {
    const struct {
        const char *call, *code, *reason;
        int status = 1;
    } rows[] = {
        {"Stretch(0, 2)", "error 34", "width is 0 pixels, allowed is 1 and above"},
        {"Stretch(2, 3 - height * 2)", "error 35", "height is -1 pixels, allowed is 1 and above"},
        {"FreeRotateByShear(-30.5)", "error 31", "rotation is -30.5 degrees, allowed is 0 to below 360: write 329.5"},
        {"FreeRotateByShear(390)", "error 31", "rotation is 390 degrees, allowed is 0 to below 360: write 30"},
        {"FreeRotateByShear(-400)", "error 31", "rotation is -400 degrees, allowed is 0 to below 360"},
        {"ShearVertical(2, 2, 1.5)", "error 33", "shear is 1.5 pixels, allowed is -1 to 1"},
        {"AdjustContrast(nil, &c808080, 1, 255.5, 1)", "error 41", "green_factor is 255.5, allowed is 0 to 255"},
        {"Downsample(9)", "error 48", "bits_per_channel is 9 bits, allowed is 1 to 8"},
        // It draws all the same.
        {"CrawlingAnts(nil, &cFFFFFF, &c000000, 4, 8)", "error 47",
         "ant_state is 8 pixels, allowed is 0 to below 2 * ant_size", 0},
        {"ShearHorizontal(0, 2, 0.5)", "gave no result and no error code", "width is 0 pixels, allowed is 1 and above"},
    };
    for (const auto& [call, code, reason, status] : rows) {
        const Ending run = tool({"apply", small(), call});
        EXPECT_EQ(run.status, status) << call;
        EXPECT_TRUE(holds(run.err, code)) << run.err;
        EXPECT_TRUE(holds(run.err, std::string("\n    ") + reason + "\n")) << run.err;
    }
}

TEST_F(ExpressionsTest, FailuresTellWhatLiesOutsideWhat) {
    const std::string other = ppm("other.ppm", 3, 1, {1, 2, 3});
    const std::pair<std::string, std::string> rows[] = {
        {"Subtract(" + other + ")", "; the picture is 2 x 2, subtractend is 3 x 1\n"},
        {"Pixelate(rect(5, 6, 7, 8), 2)", "; the picture is 2 x 2, rect is rect(5, 6, 7, 8)\n"},
    };
    for (const auto& [call, message] : rows) {
        const Ending run = tool({"apply", small(), call});
        EXPECT_EQ(run.status, 1) << call;
        EXPECT_TRUE(run.err.ends_with(message)) << run.err;
    }
    const Ending client = tool({"apply", "--client", small(), "Add(" + other + ")"});
    EXPECT_TRUE(holds(client.err, "the picture is 2 x 2, addend is 3 x 1\n")) << client.err;
}

TEST_F(ExpressionsTest, WhatMayBeTakenForABugIsNoted) {
    const auto notes = [&](const std::string& call) { return apply_sample({small(), call}).err; };
    EXPECT_EQ(notes("ColorNumber(5)"), "note: ColorNumber: c: 5 is taken for &c000005\n");
    EXPECT_EQ(notes("Halves(1.7)"), "note: Halves: count: 1.7 is cut to 1\n");
    EXPECT_EQ(notes("Halves(-1.7)"), "note: Halves: count: -1.7 is cut to -1\n");
    EXPECT_EQ(notes("Halves(&c000010)"), "note: Halves: count: &c000010 is taken for 16\n");
    const std::string kernel = "note: CoefficientCount: c: ", odd = "write an odd number of them, 1 to 21\n";
    EXPECT_EQ(notes("CoefficientCount(convolution(1, 2))"),
              kernel + "an even number of coefficients is ignored: " + odd);
    std::string many = "1";
    for (int i = 0; i < 22; ++i) many += ", 1";
    EXPECT_EQ(notes("CoefficientCount(convolution(" + many + "))"),
              kernel + "more than 21 coefficients are ignored: " + odd);
    EXPECT_EQ(notes("CoefficientCount(convolution(-1, 2, -1))"),
              kernel + "the coefficients add up to 0: such a kernel changes nothing\n");
    for (const char* fine : {"Halves(2.0)", "Halves(width * 0.3)", "ColorNumber(&c000005)", "Echo(nil)",
                             "CoefficientCount(convolution(1, 2, 1))", "Measure(0, 1.5, 0)"})
        EXPECT_EQ(notes(fine), "") << fine;
    EXPECT_EQ(sample("Halves(1.7)").err, "");  // -q
}

TEST_F(ExpressionsTest, WhatIsDescribedAsACautionIsNoted) {
    const auto notes = [&](const std::string& call) {
        return tool({"apply", small(), call, "-o", file("out.ppm")}).err;
    };
    const std::string wraps =
        "_factor: its product with the centre does not fit in 32 bits and wraps: values above the centre come out "
        "wrong\n";
    EXPECT_EQ(notes("AdjustGamma(nil, &c2880FF, 2.5, 2.5, 2.5)"), "note: TRV_AdjustGamma: green" + wraps);
    EXPECT_EQ(notes("AdjustGamma(nil, &c808080, 2.5, 1, width * 2)"),
              "note: TRV_AdjustGamma: red" + wraps + "note: TRV_AdjustGamma: blue" + wraps);
    EXPECT_EQ(notes("AdjustGamma(nil, &c808080, 2, 2, 2)"), "");
    EXPECT_EQ(notes("Convolute(nil, convolution(1, 2), convolution(1, -1, 0))"),
              "note: TRV_Convolute: horiz_convolution: an even number of coefficients is ignored: write an odd number "
              "of them, 1 to 21\nnote: TRV_Convolute: vert_convolution: the coefficients add up to 0: such a kernel "
              "changes nothing\n");
    const Ending failed = tool({"apply", small(), "AdjustGamma(nil, &c808080, 2, 2, 300)"});
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.err.find("note: "), std::string::npos) << failed.err;
}

TEST_F(ExpressionsTest, APictureThatIsNotWrittenIsNoted) {
    EXPECT_EQ(tool({"apply", small(), "Stretch(1, 1)"}).err, "note: no -o: nothing was written\n");
    EXPECT_EQ(tool({"apply", "-q", small(), "Stretch(1, 1)"}).err, "");
    EXPECT_EQ(tool({"apply", small(), "Info()"}).err, "");
}

TEST_F(ExpressionsTest, CallsThatTheHostCannotMakeAreTold) {
    const Ending run = sample("Many(1, 2, 3, 4, 5, 6, 7, 8)");
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(holds(run.err, "tarvo: Many: Many(extends p as picture, ")) << run.err;
    EXPECT_TRUE(holds(run.err, "\n  Many(1, 2, 3, 4, 5, 6, 7, 8)\n  ^\n")) << run.err;
}

TEST_F(ExpressionsTest, LongCallsGiveShortMessages) {
    const std::string many(100000, '-');
    const auto expect_short = [&](const Ending& run, int status) {
        EXPECT_EQ(run.status, status);
        EXPECT_LT(run.err.size(), 600u) << run.err.substr(0, 1000);
    };
    expect_short(tool({"apply", small(), "Add(" + many + ")"}), 2);
    expect_short(tool({"apply", small(), "Add(\"" + many + "\", true)"}), 2);
    expect_short(tool({"apply", small(), many + "(1)"}), 2);
    expect_short(tool({"apply", small(), "A" + std::string(100000, 'a') + "(1)"}), 2);
    expect_short(tool({"apply", small(), "Add(" + std::string(100000, 'a') + " = 1)"}), 2);
    const Ending middle =
        tool({"apply", small(), "Add(" + std::string(50000, ' ') + "?" + std::string(50000, ' ') + ")"});
    expect_short(middle, 2);
    EXPECT_TRUE(holds(middle.err, "  ..." + std::string(40, ' ') + "?" + std::string(49, ' ') + "...\n  " +
                                      std::string(43, ' ') + "^\n"))
        << middle.err;
    EXPECT_LT(tool({many}).err.size(), 600u);
    EXPECT_LT(tool({"apply", std::string(100000, 'x'), "Info()"}).err.size(), 5000u);
    EXPECT_LT(tool({"list", "--" + std::string(100000, 'x')}).err.size(), 5000u);
}

TEST_F(ExpressionsTest, ControlCharactersNeverReachTheTerminal) {
    // Clears the screen; its C1 twin; turns the text around; no UTF-8.
    const std::string bad = "\x1B[2J\u009B2J\u202E\xFF\x07";
    const std::vector<std::string> lines[] = {
        {"apply", small(), "F" + bad + "(1)"},
        {"apply", small(), "Add(\"" + bad + "\")"},
        {"apply", small(), "Add(\"" + bad + ".png\", 0)"},
        {"apply", small(), "Downsample(\"" + bad + "\")"},
        {"apply", small(), "Add(\"a\" " + bad + ")"},
        {"apply", bad, "Info()"},
        {"apply", small(), "Info()", "-o", bad},
        {"apply", small(), "Info()", "-o", file(bad + "/x.png")},
        {"apply", small(), "Info()", "--" + bad},
        {"apply", small(), "Info()", "--max-memory", bad},
        {"convert", bad, "-o", file("out.ppm")},
        {"list", bad},
        {bad},
    };
    for (const std::vector<std::string>& line : lines) {
        const Ending run = tool(line);
        EXPECT_NE(run.status, 0);
        EXPECT_NE(run.err, "");
        for (const char* part : {"\x1B", "\x07", "\u009B", "\u202E", "\xFF"}) {
            EXPECT_FALSE(holds(run.err, part)) << run.err;
            EXPECT_FALSE(holds(run.out, part)) << run.out;
        }
    }
    EXPECT_EQ(sample("Echo(\"" + bad + "\")").out, "Echo = a string of 13 bytes\n");
    ppm(bad + ".ppm", 2, 2, kColors);
    const Ending fine = shell("tarvo apply *J*.ppm 'Info()'");
    EXPECT_EQ(fine.status, 0) << fine.err;
    EXPECT_TRUE(holds(fine.out, "\\x1B[2J\\xC2\\x9B2J\\xE2\\x80\\xAE\\xFF\\x07.ppm: 2 x 2")) << fine.out;
}

// --- exit statuses --------------------------------------------------------------------------------------------------

TEST_F(ExpressionsTest, TheStatusSaysHowItEnded) {
    EXPECT_EQ(tool({"apply", small(), "Info()"}).status, 0);
    EXPECT_EQ(tool({"apply", small(), "Add(nil)"}).status, 1);
    EXPECT_EQ(tool({"apply", small(), "Add(1.5)"}).status, 2);
    EXPECT_EQ(tool({"apply", small(), "Add(none.png)"}).status, 3);
    EXPECT_EQ(tool({"apply", file("none.ppm"), "Info()"}).status, 3);
    EXPECT_EQ(tool({"aply", small(), "Info()"}).status, 2);
}

}  // namespace
}  // namespace tarvo::cli
