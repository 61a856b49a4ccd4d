#pragma once

// Ranges in words.

#include <string>

#include "tables.h"

namespace tarvo::reference {

// "-255 to 255", "above -360, below 360", "1 and above", "0 to below 2 * ant_size"; empty for an argument without a
// range.
std::string range_text(const describe::Argument& argument);
// "width is below 1", "hue_degrees is -360 or below, or 360 or above".
std::string beyond_text(const describe::Argument& argument);

}  // namespace tarvo::reference
