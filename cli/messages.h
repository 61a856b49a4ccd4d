#pragma once

// Lines on the standard error stream that do not end a command.

#include <iostream>
#include <string>
#include <vector>

#include "shown_text.h"

namespace tarvo::cli {

inline void warn(const std::string& line) { std::cerr << "warning: " << host::shown_lines(line) << '\n'; }

inline void note(const std::string& line) { std::cerr << "note: " << host::shown_lines(line) << '\n'; }

inline void notes(const std::vector<std::string>& lines) {
    for (const std::string& line : lines) note(line);
}

}  // namespace tarvo::cli
