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

TEST_F(ListTest, TakesTheHostsThatThePluginTakes) {
    EXPECT_EQ(tool({"list", "--host-version", "5.5"}).status, 0);
    EXPECT_EQ(tool({"list", "--host-version", "2005.99"}).status, 0);

    const Ending refused = tool({"list", "--host-version", "2011"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err.rfind("message box: rb_version: 2011.000000\nmessage box: This verion of ", 0), 0u)
        << refused.err;
    EXPECT_TRUE(holds(refused.err, "\ntarvo: the plugin refused the host\n")) << refused.err;
}

TEST_F(ListTest, LoadsThePluginThatIsNamed) {
    EXPECT_EQ(tool({"list", "--plugin", TARVO_SAMPLE_OPERATIONS, "halves"}).out,
              "Methods\n  Halves(count as integer) as double\n");
    EXPECT_EQ(tool({"list"}).out, tool({"list", "--plugin", TARVO_PLUGIN}).out);

    const Ending missing = tool({"list", "--plugin", file("none.so")});
    EXPECT_EQ(missing.status, 3);
    EXPECT_TRUE(holds(missing.err, "none.so")) << missing.err;
    EXPECT_EQ(tool({"list", "--plugin", text_file("text.so", "no library")}).status, 3);
}

TEST_F(ListTest, WrongUsageIsTold) {
    EXPECT_EQ(tool({}).status, 2);
    const Ending unknown = tool({"lst"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(unknown.err, "tarvo: there is no command \"lst\"; did you mean list?\n");
    EXPECT_EQ(tool({"in.png", "out.png"}).err, "tarvo: there is no command \"in.png\"\n");
    EXPECT_EQ(tool({"list", "--nonsense"}).status, 2);
    EXPECT_EQ(tool({"list", "--host-version", "new"}).status, 2);
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
