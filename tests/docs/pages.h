#pragma once

// The pages of the documentation, as the tests read them.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tarvo::docs {

// The project's folder. Pages, links and pictures are named from there.
extern const std::filesystem::path kProject;

// A command that stands on a page for people to type, and the answers that the page shows below it.
struct Example {
    std::string command, answers;

    // The file that it writes; empty when it writes none.
    std::filesystem::path output() const;
    // A screen is not to be had everywhere: the tests of capture make their own.
    bool needs_a_screen() const { return command.starts_with("tarvo capture "); }
};

// A Markdown file.
class Page {
public:
    explicit Page(const std::filesystem::path& name);

    const std::string& name() const { return name_; }
    const std::vector<std::string>& lines() const { return lines_; }
    // "## Errors" and what else begins with marks, in order.
    std::vector<std::string> headings() const;
    // What stands between a heading and the next one.
    std::vector<std::string> under(std::string_view heading) const;
    // Of that, what stands between fences (```).
    std::vector<std::string> code_under(std::string_view heading) const;
    std::vector<Example> examples() const;
    // Files of this project that the page links to, pictures included.
    std::vector<std::filesystem::path> links() const { return targets("]("); }
    std::vector<std::filesystem::path> pictures() const { return targets("!["); }

private:
    std::vector<std::filesystem::path> targets(std::string_view opening) const;

    std::string name_;
    std::vector<std::string> lines_;
};

// All pages in a folder, by name.
std::vector<Page> pages_in(const std::filesystem::path& folder);

// Those of docs/ops, without their index.
std::vector<Page> operation_pages();

// What stands between backticks.
std::vector<std::string> code_in(std::string_view line);

}  // namespace tarvo::docs
