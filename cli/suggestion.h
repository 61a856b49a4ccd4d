#pragma once

#include <span>
#include <string>
#include <string_view>

namespace tarvo::cli {

// Of the names, the one that `written` was probably meant to be: a letter in three may be wrong, missing, too many or
// change places with its neighbour. Empty when none is so near. Names are compared without regard to case.
std::string_view closest_name(std::string_view written, std::span<const std::string_view> names);

// "; did you mean NAME?", or nothing.
std::string did_you_mean(std::string_view name);

}  // namespace tarvo::cli
