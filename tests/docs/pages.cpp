#include "pages.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace tarvo::docs {

namespace fs = std::filesystem;

const fs::path kProject = TARVO_SOURCE_PATH;

namespace {

constexpr std::string_view kFence = "```";
constexpr std::string_view kIndent = "    ";

// Marks and a space; "#include" is none.
bool is_heading(const std::string& line) {
    const std::size_t marks = line.find_first_not_of('#');
    return marks != 0 && marks != line.npos && line[marks] == ' ';
}

}  // namespace

fs::path Example::output() const {
    constexpr std::string_view kOption = " -o ";
    const std::size_t at = command.find(kOption);
    return at == std::string::npos ? "" : command.substr(at + kOption.size());
}

Page::Page(const fs::path& name) : name_(name) {
    std::ifstream file(kProject / name);
    if (!file) throw std::runtime_error(name_ + " cannot be read");
    for (std::string line; std::getline(file, line);) lines_.push_back(line);
}

std::vector<std::string> Page::headings() const {
    std::vector<std::string> found;
    std::ranges::copy_if(lines_, std::back_inserter(found), is_heading);
    return found;
}

std::vector<std::string> Page::under(std::string_view heading) const {
    const auto above = std::ranges::find(lines_, heading);
    if (above == lines_.end()) return {};
    const auto end = std::find_if(above + 1, lines_.end(), is_heading);
    return {above + 1, end};
}

std::vector<std::string> Page::code_under(std::string_view heading) const {
    std::vector<std::string> code;
    bool fenced = false;
    for (const std::string& line : under(heading)) {
        if (line.starts_with(kFence))
            fenced = !fenced;
        else if (fenced)
            code.push_back(line);
    }
    return code;
}

std::vector<Example> Page::examples() const {
    std::vector<Example> examples;
    bool below_a_command = false;
    for (const std::string& line : lines_) {
        const bool command = line.starts_with("    tarvo ");
        below_a_command = command || (below_a_command && line.starts_with(kIndent));
        if (command)
            examples.push_back({line.substr(kIndent.size()), ""});
        else if (below_a_command)
            examples.back().answers += line.substr(kIndent.size()) + '\n';
    }
    return examples;
}

std::vector<fs::path> Page::targets(std::string_view opening) const {
    std::vector<fs::path> found;
    for (const std::string_view line : lines_) {
        for (std::size_t at = line.find(opening); at != line.npos; at = line.find(opening, at + 1)) {
            const std::size_t begin = line.find("](", at) + 2;
            const std::string_view target = line.substr(begin, line.find_first_of("#)", begin) - begin);
            if (!target.empty() && target.find("://") == target.npos)
                found.push_back((fs::path(name_).parent_path() / target).lexically_normal());
        }
    }
    return found;
}

std::vector<Page> pages_in(const fs::path& folder) {
    std::vector<fs::path> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(kProject / folder))
        if (entry.path().extension() == ".md") names.push_back(folder / entry.path().filename());
    std::ranges::sort(names);
    return {names.begin(), names.end()};
}

std::vector<Page> operation_pages() {
    std::vector<Page> pages = pages_in("docs/ops");
    std::erase_if(pages, [](const Page& page) { return page.name() == "docs/ops/README.md"; });
    return pages;
}

std::vector<std::string> code_in(std::string_view line) {
    std::vector<std::string> found;
    for (std::size_t at = line.find('`'); at != line.npos; at = line.find('`', at + 1)) {
        const std::size_t begin = at + 1;
        at = line.find('`', begin);
        if (at == line.npos) break;
        found.emplace_back(line.substr(begin, at - begin));
    }
    return found;
}

}  // namespace tarvo::docs
