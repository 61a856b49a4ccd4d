// Pages that show sessions: each command in a block, behind "$ ", prints what stands below it.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "pages.h"
#include "tool.h"

namespace tarvo::cli {
namespace {

namespace fs = std::filesystem;

class Sessions : public ToolTest, public testing::WithParamInterface<const char*> {
protected:
    // `$?` of a command is the status of the one before.
    void try_out(const std::string& command, const std::string& expected) {
        SCOPED_TRACE(command);
        const Ending run = shell("(exit " + std::to_string(status_) + "); " + command);
        EXPECT_EQ(run.out + run.err, expected);
        status_ = run.status;
    }

private:
    int status_ = 0;
};

TEST_P(Sessions, PrintWhatThePageSays) {
    fs::create_directory_symlink(docs::kProject / "examples", file("examples"));
    std::ifstream page(docs::kProject / GetParam());
    std::string command, expected;
    bool in_block = false;
    int commands = 0;
    for (std::string line; std::getline(page, line);) {
        const bool fence = line == "```";
        const bool prompt = in_block && line.rfind("$ ", 0) == 0;
        if ((fence || prompt) && !command.empty()) {
            try_out(command, expected);
            command.clear();
        }
        if (fence) {
            in_block = !in_block;
        } else if (prompt) {
            command = line.substr(2);
            expected.clear();
            ++commands;
        } else if (in_block) {
            expected += line + '\n';
        }
    }
    EXPECT_GT(commands, 0);
}

INSTANTIATE_TEST_SUITE_P(Pages, Sessions, testing::Values("docs/golden-tests.md"));

}  // namespace
}  // namespace tarvo::cli
