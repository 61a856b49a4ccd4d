// `tarvo capture`, as people run it.

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "canvas.h"
#include "picture_file.h"
#include "plain_image.h"
#include "session.h"
#include "test_server.h"

namespace tarvo::test {
namespace {

class CaptureCommand : public ::testing::Test {
protected:
    CaptureCommand() {
        std::string name = (std::filesystem::temp_directory_path() / "tarvo-capture-XXXXXX").string();
        if (!::mkdtemp(name.data())) throw std::runtime_error("no folder for the test");
        folder_ = name;
    }
    ~CaptureCommand() override {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    std::string file() const { return (folder_ / "screen.pam").string(); }
    // `tarvo capture` with these words behind it, the display named by the environment; its exit status.
    int capture(std::vector<std::string> arguments, const std::string& display) {
        arguments.insert(arguments.begin(), {TARVO_TOOL, "capture"});
        std::vector<char*> words;
        for (std::string& argument : arguments) words.push_back(argument.data());
        words.push_back(nullptr);
        ::setenv("DISPLAY", display.c_str(), 1);
        pid_t process = 0;
        if (posix_spawn(&process, TARVO_TOOL, nullptr, nullptr, words.data(), environ) != 0) return -1;
        int status = 0;
        ::waitpid(process, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    std::filesystem::path folder_;
};

TEST_F(CaptureCommand, WritesTheScreenToAFile) {
    const TestServer server(60, 40, 24);
    Painter painter(server);
    Canvas canvas(painter, 60, 40);
    paint_pattern(canvas);
    host::Host host;
    for (const bool named : {false, true}) {
        std::vector<std::string> arguments = {"-o", file()};
        if (named) arguments.insert(arguments.end(), {"--display", server.display()});
        ASSERT_EQ(capture(arguments, named ? ":61234" : server.display()), 0);
        const ObjectRef picture = host::read_picture_file(host, file());
        EXPECT_EQ(difference(pixels(picture), canvas.image(), 32), "");
        std::filesystem::remove(file());
    }
}

TEST_F(CaptureCommand, FailsWithoutADisplay) {
    EXPECT_EQ(capture({"-o", file()}, ":61234"), 1);
    EXPECT_FALSE(std::filesystem::exists(file()));
}

}  // namespace
}  // namespace tarvo::test
