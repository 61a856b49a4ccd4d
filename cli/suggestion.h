#pragma once

#include <span>
#include <string>
#include <string_view>

namespace tarvo::cli {

// Returns the name that was probably meant: one letter in three may be wrong, missing, too many or in its neighbour's
// place. Returns an empty text when no name is so near. Names are compared without regard to case.
std::string_view closest_name(std::string_view written, std::span<const std::string_view> names);

// Returns "; did you mean NAME?", or nothing for no name.
std::string did_you_mean(std::string_view name);

}  // namespace tarvo::cli
