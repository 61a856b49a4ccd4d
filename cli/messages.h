#pragma once

// Lines on the standard error stream that do not end a command.

#include <iostream>
#include <string>

#include "shown_text.h"

namespace tarvo::cli {

inline void warn(const std::string& line) { std::cerr << "warning: " << host::shown_lines(line) << '\n'; }

// Writes the line, unless it is empty.
inline void note(const std::string& line) {
    if (!line.empty()) std::cerr << "note: " << host::shown_lines(line) << '\n';
}

}  // namespace tarvo::cli
