// Every declaration that programs can call stands on a page of docs/, letter by letter.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "session.h"

namespace tarvo::test {
namespace {

namespace fs = std::filesystem;

const fs::path kDocs = TARVO_DOCS_PATH;

std::string text_of(const fs::path& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::set<std::string> lines_of(const fs::path& path) {
    std::istringstream text(text_of(path));
    std::set<std::string> lines;
    for (std::string line; std::getline(text, line);) lines.insert(line);
    return lines;
}

std::vector<fs::path> pages_in(const fs::path& folder) {
    std::vector<fs::path> pages;
    for (const auto& entry : fs::directory_iterator(folder))
        if (entry.path().extension() == ".md") pages.push_back(entry.path());
    std::ranges::sort(pages);
    return pages;
}

TEST(Pages, EveryOperationHasItsDeclarationOnOne) {
    Session session;
    std::set<std::string> documented = lines_of(kDocs / "errors.md");
    for (const fs::path& page : pages_in(kDocs / "ops")) documented.merge(lines_of(page));
    for (const auto& method : session.host.registry().methods())
        EXPECT_TRUE(documented.contains(method.declaration)) << method.declaration;
    for (const auto& extension : session.host.registry().extensions())
        for (const auto& method : extension.methods)
            EXPECT_TRUE(documented.contains(method.declaration)) << method.declaration;
}

TEST(Pages, EveryClassHasOneWithItsMembers) {
    Session session;
    for (const auto& cls : session.host.registry().classes()) {
        const fs::path page = kDocs / "classes" / (cls.name + ".md");
        ASSERT_TRUE(fs::exists(page)) << page;
        const auto lines = lines_of(page);
        for (const auto& method : cls.methods) EXPECT_TRUE(lines.contains(method.declaration)) << method.declaration;
        const std::string text = text_of(page);
        for (const auto& property : cls.properties)
            EXPECT_NE(text.find("`" + property.name + "`"), std::string::npos) << cls.name << "." << property.name;
    }
}

TEST(Pages, NoPageDeclaresWhatIsNotThere) {
    Session session;
    std::set<std::string> registered;
    for (const auto& method : session.host.registry().methods()) registered.insert(method.declaration);
    for (const auto& extension : session.host.registry().extensions())
        for (const auto& method : extension.methods) registered.insert(method.declaration);
    int declarations = 0;
    for (const fs::path& page : pages_in(kDocs / "ops")) {
        for (const std::string& line : lines_of(page)) {
            if (!line.starts_with("TRV_")) continue;
            ++declarations;
            EXPECT_TRUE(registered.contains(line)) << page << ": " << line;
        }
    }
    EXPECT_GT(declarations, 0);
}

TEST(Pages, OperationPagesHaveTheSameHeadings) {
    const char* const headings[] = {"## Declarations", "## Arguments", "## Errors", "## Example", "## Good to know"};
    for (const fs::path& page : pages_in(kDocs / "ops")) {
        const auto lines = lines_of(page);
        for (const char* heading : headings) EXPECT_TRUE(lines.contains(heading)) << page << ": " << heading;
    }
}

TEST(Pages, PicturesThatPagesShowExist) {
    int shown = 0;
    for (const fs::path& page : pages_in(kDocs / "ops")) {
        const std::string text = text_of(page);
        for (std::size_t at = text.find("]("); at != std::string::npos; at = text.find("](", at + 1)) {
            const std::string target = text.substr(at + 2, text.find(')', at) - at - 2);
            ++shown;
            EXPECT_TRUE(fs::exists(page.parent_path() / target)) << page << " shows " << target;
        }
    }
    EXPECT_GT(shown, 0);
}

TEST(Pages, TheErrorPageHasEveryText) {
    Session session;
    const auto lines = lines_of(kDocs / "errors.md");
    for (int code = 0; code <= 60; ++code) {
        const std::string text = session.error_message(code);
        if (text == "Unknown Error") continue;
        EXPECT_TRUE(lines.contains("| " + std::to_string(code) + " | " + text + " |")) << code;
    }
}

}  // namespace
}  // namespace tarvo::test
