#pragma once

// How people find an operation: by its name, with or without TRV_ and however spelled, and by the words that they use.

#include <string>
#include <string_view>
#include <vector>

#include "reference.h"

namespace tarvo::reference {

// Of operations, and of classes' methods written as TRV_Rectangle.Area. Null when there is none.
const Operation* find_operation(const Reference& reference, std::string_view name);
const Class* find_class(const Reference& reference, std::string_view name);

// True when one of the words, or a part of it, begins with the text.
bool have_word(std::span<const describe::Text> words, std::string_view text);

// Names for somebody who asked for one that is none: those spelled nearly so, and those that go by this word. At most
// four, best first.
std::vector<std::string> near_names(const Reference& reference, std::string_view name);

}  // namespace tarvo::reference
