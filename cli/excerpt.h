#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarvo::cli {

// Two lines that show a place in a text: the text around it, as much as fits a line, and a mark below the place.
// `position` counts bytes from 0.
std::string excerpt(std::string_view text, std::size_t position);

}  // namespace tarvo::cli
