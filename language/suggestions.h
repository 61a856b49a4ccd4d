#pragma once

// Messages for who asked for something that there is not.

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "search.h"

namespace tarvo::language {

// Returns the name that was probably meant: one letter in three may be wrong, missing, too many or in its neighbour's
// place. Returns an empty text when no name is so near. Names are compared without regard to case.
std::string_view closest_name(std::string_view written, std::span<const std::string_view> names);

// Returns "; did you mean TRV_Stretch or TRV_Trim?". Empty names do not count; without any the text is empty.
std::string did_you_mean(const std::vector<std::string>& names);

// Returns the same for the operations and classes that are near to a name.
std::string suggestions(const reference::Reference& all, std::string_view name);

}  // namespace tarvo::language
