#pragma once

// Words of a command line that are files and calls.

#include <string>
#include <vector>

namespace tarvo::cli {

// Of `tarvo apply`, what is no option: files first, then calls.
struct ApplyWords {
    std::vector<std::string> inputs, calls;
};

// A word is a call when it reads as one and no file has that name, or begins with "@": the calls of a recipe, a line
// each, where "#" begins a comment. Behind the first call there are only calls. Throws CommandError.
ApplyWords sort_words(const std::vector<std::string>& words);

// The calls of words that are calls and recipes alone; a recipe's "@" may be left out. Throws CommandError.
std::vector<std::string> calls_of(const std::vector<std::string>& words);

// A line without the blanks at its ends.
std::string without_blanks(const std::string& line);

// Names from a file, or from standard input ("-"): a line each, or each with a zero byte behind it. Throws
// CommandError.
std::vector<std::string> listed_files(const std::string& path, char end);

}  // namespace tarvo::cli
