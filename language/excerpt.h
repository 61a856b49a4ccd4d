#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarvo::language {

// Returns two lines that show a place in a text: as much of the text around it as fits a line, and a mark below the
// place. `position` counts bytes from 0.
std::string excerpt(std::string_view text, std::size_t position);

}  // namespace tarvo::language
