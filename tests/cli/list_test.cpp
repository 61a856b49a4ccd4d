#include <gtest/gtest.h>

#include "tool.h"

namespace tarvo::cli {
namespace {

using ListTest = ToolTest;

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

TEST_F(ListTest, ShowsMethodsClassesAndExtensions) {
    const Ending run = tool({"list"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(holds(run.out, "Methods\n  TRV_GetLastError() as integer\n")) << run.out;
    EXPECT_TRUE(holds(run.out, "\n\nClass TRV_Rectangle\n  left as integer\n")) << run.out;
    EXPECT_TRUE(holds(run.out, "\n  hasMask as boolean  (read-only)\n")) << run.out;
    EXPECT_TRUE(holds(run.out, "\n\nMethods of TRV_ClientPicture\n")) << run.out;
    const std::size_t pictures = run.out.find("\nMethods of picture\n");
    const std::size_t add = run.out.find("  TRV_Add(extends p as picture, ");
    ASSERT_NE(add, std::string::npos);
    EXPECT_LT(pictures, add);
}

TEST_F(ListTest, ShowsWhatHasTheNameOnly) {
    EXPECT_EQ(
        tool({"list", "lasterr"}).out,
        "Methods\n  TRV_GetLastError() as integer\n      The code of the most recent operation; 0 when it went well\n");
    EXPECT_EQ(tool({"list", "OFFSET"}).out,
              "Class TRV_Rectangle\n  OffsetBy(h as integer, v as integer)\n      Moves by so much; the size stays\n");
    // A class's name shows all of the class.
    EXPECT_TRUE(holds(tool({"list", "trv_rectangle"}).out, "  MessageBox()\n"));

    const Ending nothing = tool({"list", "xyz"});
    EXPECT_EQ(nothing.status, 2);
    EXPECT_EQ(nothing.err, "tarvo: nothing has \"xyz\" in its name or goes by it\n");
    EXPECT_EQ(nothing.out, "");
}

TEST_F(ListTest, ShowsWhatIsRegisteredAndNotDescribed) {
    EXPECT_EQ(sample_tool({"list", "halves"}).out, "Methods\n  Halves(count as integer) as double\n");
}

// The operations are in the tool: there is nothing to choose.
TEST_F(ListTest, NoOptionNamesAPlugin) {
    for (const char* option : {"--plugin", "--host-version"})
        for (const char* command : {"list", "help", "apply", "convert"})
            EXPECT_EQ(tool({command, option, "2010"}).status, 2) << command << option;
}

TEST_F(ListTest, WrongUsageIsTold) {
    EXPECT_EQ(tool({}).status, 2);
    const Ending unknown = tool({"lst"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(unknown.err, "tarvo: there is no command \"lst\"; did you mean list?\n");
    EXPECT_EQ(tool({"in.png", "out.png"}).err, "tarvo: there is no command \"in.png\"\n");
    EXPECT_EQ(tool({"list", "--nonsense"}).status, 2);
    EXPECT_EQ(tool({"list", "--nonsense"}).err,
              "tarvo: The following argument was not expected: --nonsense\nRun with --help for more information.\n");

    const Ending help = tool({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(holds(help.out, "Exit status:\n  0    done\n  1    an operation failed")) << help.out;
    for (const char* status : {"\n  2    wrong use", "\n  3    a file that",
                               "\n  130  interrupted: what shells say of an end by the signal INT\n"})
        EXPECT_TRUE(holds(help.out, status)) << help.out;
    EXPECT_TRUE(holds(help.out, "apply")) << help.out;
}

TEST_F(ListTest, TheVersionIsTold) {
    const Ending run = tool({"--version"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, "tarvo " TARVO_VERSION "\n");
}

}  // namespace
}  // namespace tarvo::cli
