// The examples on the pages of the operations and of the tool, typed into a shell as they stand there. What they write
// is what the pages show.

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "pages.h"
#include "tool.h"

namespace tarvo::docs {

// GoogleTest's name of a parameter.
void PrintTo(const Page& page, std::ostream* out) { *out << page.name(); }

}  // namespace tarvo::docs

namespace tarvo::cli {
namespace {

namespace fs = std::filesystem;

using docs::Example;
using docs::kProject;
using docs::Page;

// Without the lines that tell what was read, done and written.
std::string answers_in(const std::string& output) {
    std::istringstream lines(output);
    std::string answers;
    for (std::string line; std::getline(lines, line);)
        if (line.find(" = ") != std::string::npos) answers += line + '\n';
    return answers;
}

std::vector<Page> pages_with_commands() {
    std::vector<Page> pages = docs::operation_pages();
    pages.emplace_back("docs/tool.md");
    return pages;
}

class DocsTest : public ToolTest {
protected:
    // Kind, pixels and mask of a picture file: the bytes of a PNG file may be others with another library.
    std::string picture_in(const std::string& path) const {
        const Ending run = tool({"convert", path, "-o", file("seen.pam")});
        EXPECT_EQ(run.status, 0) << run.err;
        return bytes_of(file("seen.pam"));
    }
};

class Examples : public DocsTest, public testing::WithParamInterface<Page> {
protected:
    // The folder looks as the project's does to who reads the page; its pictures are copies, to be written anew.
    Examples() {
        fs::create_directory_symlink(kProject / "examples", file("examples"));
        fs::create_directory(file("docs"));
        fs::copy(kProject / "docs" / "pictures", file("docs/pictures"));
    }

    void try_out(const Example& example) const {
        const std::string written = example.output();
        if (!written.empty()) fs::remove(file(written));
        const Ending run = shell(example.command);
        EXPECT_EQ(run.status, 0);
        // The photographs have a resolution, for which some formats have no room.
        const std::string note = "note: " + written + " has no room for the resolution: it is left out\n";
        EXPECT_TRUE(run.err.empty() || run.err == note) << run.err;
        EXPECT_EQ(answers_in(run.out), example.answers);
        if (!written.ends_with(".png")) return;
        EXPECT_TRUE(picture_in(file(written)) == picture_in(kProject / written))
            << written << " is another picture than this; scripts/pages renews it";
    }
};

TEST_P(Examples, DoWhatThePageSays) {
    const std::vector<Example> examples = GetParam().examples();
    EXPECT_FALSE(examples.empty());
    for (const Example& example : examples) {
        SCOPED_TRACE(example.command);
        if (example.needs_a_screen())
            EXPECT_EQ(GetParam().name(), "docs/ops/TRV_ScreenCapture.md");
        else
            try_out(example);
    }
}

INSTANTIATE_TEST_SUITE_P(Pages, Examples, testing::ValuesIn(pages_with_commands()),
                         [](const auto& page) { return fs::path(page.param.name()).stem().string(); });

TEST_F(DocsTest, TheProgramWithAHostMakesThePictureOfThePage) {
    const fs::path pictures = kProject / "docs" / "pictures";
    const Ending run = shell(std::string("'" TARVO_HOST_PROGRAM "' '" TARVO_PLUGIN "' '") +
                             (pictures / "coffee.png").string() + "' contrast.png");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(picture_in(file("contrast.png")) == picture_in(pictures / "adjust-contrast.png"));
}

}  // namespace
}  // namespace tarvo::cli
