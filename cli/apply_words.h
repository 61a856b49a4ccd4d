#pragma once

// The words of `tarvo apply` that are no options: files first, then calls.

#include <string>
#include <vector>

namespace tarvo::cli {

struct ApplyWords {
    std::vector<std::string> inputs, calls;
};

// A word is a call when it reads as one and no file has that name, or begins with "@": the calls of a recipe, a line
// each, where "#" begins a comment. Behind the first call there are only calls. Throws CommandError.
ApplyWords sort_words(const std::vector<std::string>& words);

// Names from a file, or from standard input ("-"): a line each, or each with a zero byte behind it. Throws
// CommandError.
std::vector<std::string> listed_files(const std::string& path, char end);

}  // namespace tarvo::cli
