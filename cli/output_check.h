#pragma once

#include <string>

namespace tarvo::cli {

// Finds, before any work, what would keep a picture from being written to a file: an ending that no format has, a
// folder that is missing or cannot be written in, or something in the file's place that is no regular file. Throws
// CommandError for wrong use.
void check_output(const std::string& path);

}  // namespace tarvo::cli
