#pragma once

// The picture files of a folder and of those in it.

#include <set>
#include <string>

namespace tarvo::cli {

// Whether a file's name ends as those of pictures do.
bool is_picture_name(const std::string& name);

// Paths from the folder, with slashes; nothing that is hidden. Throws CommandError.
std::set<std::string> picture_names(const std::string& folder);

}  // namespace tarvo::cli
