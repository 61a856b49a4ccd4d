#include "apply_words.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>

#include "command_error.h"
#include "scanner.h"
#include "shown_text.h"

namespace tarvo::cli {
namespace {

bool is_file(const std::string& word) {
    std::error_code error;
    return std::filesystem::exists(word, error);
}

// A file may have any name, so that a file that exists is one, and so is what goes on with a dot behind the last
// bracket.
bool reads_as_call(const std::string& word) {
    host::Scanner scanner(word);
    bool named = !scanner.take_name().empty();
    if (scanner.take('.')) named = !scanner.take_name().empty();
    const std::size_t end = word.rfind(')');
    const bool ends_as_file = end != std::string::npos && word.find('.', end) != std::string::npos;
    return named && scanner.take('(') && !ends_as_file && !is_file(word);
}

// A lone name behind a file is a call without its brackets, which is told; nothing else says so as well.
bool reads_as_name(const std::string& word) {
    host::Scanner scanner(word);
    return scanner.take_name() == word && !is_file(word);
}

std::ifstream opened(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw CommandError(ExitStatus::file_error, path + ": cannot be opened: " + std::strerror(errno));
    return file;
}

void add_recipe(const std::string& path, std::vector<std::string>& calls) {
    std::ifstream file = opened(path);
    const std::size_t before = calls.size();
    for (std::string line; std::getline(file, line);)
        if (line = without_blanks(line); !line.empty() && line.front() != '#') calls.push_back(line);
    if (file.bad() || !file.eof()) throw CommandError(ExitStatus::file_error, path + ": cannot be read");
    if (calls.size() == before) throw CommandError(ExitStatus::wrong_usage, path + ": there is no call in it");
}

// As the line of a recipe is.
std::string in_one_line(const std::string& call) {
    if (call.find('\n') != std::string::npos)
        throw CommandError(ExitStatus::wrong_usage, "a call of a recipe stands in one line: " + host::quoted(call));
    return without_blanks(call);
}

}  // namespace

ApplyWords sort_words(const std::vector<std::string>& words) {
    ApplyWords sorted;
    for (const std::string& word : words) {
        const bool recipe = word.starts_with('@');
        const bool behind = !sorted.calls.empty() || (!sorted.inputs.empty() && reads_as_name(word));
        if (recipe)
            add_recipe(word.substr(1), sorted.calls);
        else
            (behind || reads_as_call(word) ? sorted.calls : sorted.inputs).push_back(word);
    }
    return sorted;
}

std::vector<std::string> calls_of(const std::vector<std::string>& words) {
    std::vector<std::string> calls;
    for (const std::string& word : words)
        if (word.starts_with('@'))
            add_recipe(word.substr(1), calls);
        else if (reads_as_call(word))
            calls.push_back(in_one_line(word));
        else
            add_recipe(word, calls);
    return calls;
}

std::string without_blanks(const std::string& line) {
    constexpr const char* kBlanks = " \t\r";
    const std::size_t begin = line.find_first_not_of(kBlanks);
    return begin == std::string::npos ? "" : line.substr(begin, line.find_last_not_of(kBlanks) + 1 - begin);
}

std::vector<std::string> listed_files(const std::string& path, char end) {
    std::ifstream file;
    if (path != "-") file = opened(path);
    std::istream& names = path == "-" ? std::cin : file;
    std::vector<std::string> all;
    for (std::string name; std::getline(names, name, end);)
        if (!name.empty()) all.push_back(name);
    if (names.bad()) throw CommandError(ExitStatus::file_error, path + ": cannot be read");
    return all;
}

}  // namespace tarvo::cli
