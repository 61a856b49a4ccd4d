#pragma once

// How people find an operation: by its name, with or without TRV_ and however spelled, and by the words that they use.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "reference.h"

namespace tarvo::reference {

// Of operations, and of classes' methods written as TRV_Rectangle.Area. Null when there is none.
const Operation* find_operation(const Reference& reference, std::string_view name);
const Class* find_class(const Reference& reference, std::string_view name);

// What is told of a method; null for nothing.
const describe::Operation* description_of(const host::Callable& method);

// Returns how many letters are to be put in, left out, changed or exchanged with their neighbour to make one text of
// the other; none when that is more than a third of the letters asked for, or those are too many for a name. Both texts
// are folded.
std::optional<std::size_t> spelling_distance(std::string_view asked, std::string_view name);

// True when one of the words, or a part of it, begins with the text.
bool have_word(std::span<const describe::Text> words, std::string_view text);

// Names for somebody who asked for one that is none: those spelled nearly so, and those that go by this word. At most
// four, best first.
std::vector<std::string> near_names(const Reference& reference, std::string_view name);

}  // namespace tarvo::reference
