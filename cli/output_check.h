#pragma once

#include <string>

namespace tarvo::cli {

// Finds before any work what would keep a picture from being written to that file: an ending that no format has, a
// folder that is missing or not to be written in, something in its place that is no file. Throws CommandError for wrong
// use.
void check_output(const std::string& path);

}  // namespace tarvo::cli
