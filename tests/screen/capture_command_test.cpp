// `tarvo capture`, as people run it.

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "canvas.h"
#include "picture_file.h"
#include "plain_image.h"
#include "session.h"
#include "test_server.h"
#include "tool.h"

namespace tarvo::test {
namespace {

class CaptureCommand : public cli::ToolTest {
protected:
    std::string output() const { return file("screen.pam"); }
    // `tarvo capture` into that file with these words behind it, the display named by the environment.
    cli::Ending capture(std::vector<std::string> arguments, const std::string& display) const {
        ::setenv("DISPLAY", display.c_str(), 1);
        arguments.insert(arguments.begin(), {"capture", "-o", output()});
        return tool(std::move(arguments));
    }
    // The same with the sample operations.
    cli::Ending sample_capture(const std::string& display) const {
        return sample_tool({"capture", "-o", output(), "--display", display});
    }
};

TEST_F(CaptureCommand, WritesTheScreenToAFile) {
    const TestServer server(60, 40, 24);
    Painter painter(server);
    Canvas canvas(painter, 60, 40);
    paint_pattern(canvas);
    host::Host host;
    for (const bool named : {false, true}) {
        std::vector<std::string> arguments;
        if (named) arguments = {"--display", server.display()};
        const cli::Ending run = capture(arguments, named ? ":61234" : server.display());
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.err, "");
        const ObjectRef picture = host::read_picture_file(host, output());
        EXPECT_EQ(difference(pixels(picture), canvas.image(), 32), "");
        std::filesystem::remove(output());
    }
}

TEST_F(CaptureCommand, IsHeldToItsLimits) {
    const TestServer server(60, 40, 24);
    const cli::Ending run = capture({"--max-memory", "1000"}, server.display());
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find("the limit is 1000 (--max-memory)"), std::string::npos) << run.err;
    EXPECT_FALSE(exists("screen.pam"));
}

TEST_F(CaptureCommand, FailsWithoutADisplay) {
    EXPECT_EQ(capture({}, ":61234").status, 1);
    EXPECT_FALSE(exists("screen.pam"));
}

TEST_F(CaptureCommand, ShowsMisuseByThePlugin) {
    const TestServer server(60, 40, 24);
    const cli::Ending run = sample_capture(server.display());
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err.rfind("warning: TRV_ScreenCapture: REALLockObject: ", 0), 0u) << run.err;
}

TEST_F(CaptureCommand, FailsWhereThePluginGivesNothing) {
    const TestServer server(60, 1, 24);
    const cli::Ending run = sample_capture(server.display());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "tarvo: the display does not give its pixels\n");
    EXPECT_FALSE(exists("screen.pam"));
}

}  // namespace
}  // namespace tarvo::test
