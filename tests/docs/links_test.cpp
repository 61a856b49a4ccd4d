// Links lead somewhere, and the pictures of the pages are those that the pages' own examples make.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "pages.h"

namespace tarvo::docs {
namespace {

namespace fs = std::filesystem;

const fs::path kPictures = "docs/pictures";
// What the playground looks like, which no example makes.
const fs::path kPlayground = "web/playground.jpg";

std::vector<Page> all_pages() {
    std::vector<Page> pages = pages_in("");
    for (const char* folder : {"docs", "examples"})
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kProject / folder))
            if (entry.is_directory())
                std::ranges::copy(pages_in(fs::relative(entry.path(), kProject)), std::back_inserter(pages));
    std::ranges::copy(pages_in("docs"), std::back_inserter(pages));
    return pages;
}

bool contains(const std::vector<fs::path>& paths, const fs::path& path) {
    return std::ranges::find(paths, path) != paths.end();
}

TEST(Links, LeadToWhatIsThere) {
    int links = 0;
    for (const Page& page : all_pages()) {
        for (const fs::path& target : page.links()) {
            ++links;
            EXPECT_TRUE(fs::exists(kProject / target)) << page.name() << " links to " << target;
        }
    }
    EXPECT_GT(links, 0);
}

TEST(Pictures, AreMadeByTheExamplesOfThePagesThatShowThem) {
    constexpr std::uintmax_t kLargest = 100'000;  // bytes: a page shows several
    std::map<fs::path, std::string> makers;
    for (const Page& page : operation_pages()) {
        for (const Example& example : page.examples()) {
            const fs::path picture = example.output();
            if (picture.extension() != ".png" || example.needs_a_screen()) continue;
            EXPECT_EQ(picture.parent_path(), kPictures) << page.name() << ": " << example.command;
            EXPECT_TRUE(contains(page.pictures(), picture)) << page.name() << " makes and does not show " << picture;
            const auto [maker, is_new] = makers.emplace(picture, page.name());
            EXPECT_TRUE(is_new) << picture << " is made on " << maker->second << " and on " << page.name();
        }
    }
    EXPECT_FALSE(makers.empty());
    for (const fs::directory_entry& entry : fs::directory_iterator(kProject / kPictures)) {
        const fs::path picture = fs::relative(entry.path(), kProject);
        EXPECT_TRUE(makers.contains(picture)) << "no example makes " << picture;
        EXPECT_LE(entry.file_size(), kLargest) << picture;
    }
}

TEST(Pictures, ThatPagesShowAreMadeByExamplesOrArePhotographs) {
    for (const Page& page : all_pages()) {
        for (const fs::path& picture : page.pictures()) {
            const fs::path folder = picture.parent_path();
            EXPECT_TRUE(folder == kPictures || folder == "examples/photos" || picture == kPlayground)
                << page.name() << " shows " << picture;
        }
    }
}

// The front page shows pictures below the calls that make them, and what the playground looks like.
TEST(Pictures, OnTheFrontPageAreMadeByTheCallsAboveThem) {
    const Page front("README.md");
    std::vector<fs::path> shown = front.pictures();
    EXPECT_EQ(std::erase(shown, kPlayground), 1u);
    std::vector<std::string> calls;
    for (const std::string& line : front.lines())
        if (line.starts_with("| a photograph |")) calls = code_in(line);
    ASSERT_EQ(shown.size(), calls.size() + 1);
    std::set<std::string> commands;
    for (const Page& page : operation_pages())
        for (const Example& example : page.examples()) commands.insert(example.command);
    for (std::size_t i = 0; i < calls.size(); ++i) {
        const std::string command =
            "tarvo apply " + shown[0].string() + " '" + calls[i] + "' -o " + shown[i + 1].string();
        EXPECT_TRUE(commands.contains(command)) << "no page has: " << command;
    }
}

}  // namespace
}  // namespace tarvo::docs
