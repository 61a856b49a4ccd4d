// The examples on the pages of the operations, typed into a shell as they stand there.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tool.h"

namespace tarvo::cli {
namespace {

namespace fs = std::filesystem;

const fs::path kSource = TARVO_SOURCE_PATH;

std::vector<fs::path> pages() {
    std::vector<fs::path> found;
    for (const auto& entry : fs::directory_iterator(kSource / "docs" / "ops"))
        if (entry.path().extension() == ".md") found.push_back(entry.path());
    std::ranges::sort(found);
    return found;
}

// A command and the answers that the page shows below it.
struct Example {
    std::string command, answers;
};

std::vector<Example> examples_on(const fs::path& page) {
    constexpr std::string_view kIndent = "    ";
    std::ifstream file(page);
    std::vector<Example> examples;
    bool below_a_command = false;
    for (std::string line; std::getline(file, line);) {
        const bool command = line.starts_with("    tarvo ");
        below_a_command = command || (below_a_command && line.starts_with(kIndent));
        if (command)
            examples.push_back({line.substr(kIndent.size()), ""});
        else if (below_a_command)
            examples.back().answers += line.substr(kIndent.size()) + '\n';
    }
    return examples;
}

// Without the lines that tell what was read, done and written.
std::string answers_in(const std::string& output) {
    std::istringstream lines(output);
    std::string answers;
    for (std::string line; std::getline(lines, line);)
        if (line.find(" = ") != std::string::npos) answers += line + '\n';
    return answers;
}

// A screen is not to be had everywhere: the tests of capture make their own.
bool needs_a_screen(const Example& example) { return example.command.starts_with("tarvo capture "); }

class Examples : public ToolTest, public testing::WithParamInterface<fs::path> {
protected:
    // The folder looks as the source folder does to who reads the page.
    Examples() {
        for (const char* name : {"docs", "examples"}) fs::create_directory_symlink(kSource / name, file(name));
    }
};

TEST_P(Examples, DoWhatThePageSays) {
    const std::vector<Example> examples = examples_on(GetParam());
    ASSERT_FALSE(examples.empty());
    for (const Example& example : examples) {
        if (needs_a_screen(example)) {
            EXPECT_EQ(GetParam().stem(), "TRV_ScreenCapture");
            continue;
        }
        const Ending run = shell(example.command);
        EXPECT_EQ(run.status, 0) << example.command;
        EXPECT_EQ(run.err, "") << example.command;
        EXPECT_EQ(answers_in(run.out), example.answers) << example.command;
    }
}

INSTANTIATE_TEST_SUITE_P(Pages, Examples, testing::ValuesIn(pages()),
                         [](const auto& page) { return page.param.stem().string(); });

}  // namespace
}  // namespace tarvo::cli
