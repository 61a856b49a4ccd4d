#pragma once

#include <string>

#include "declaration.h"

namespace tarvo::host {

// A parsed declaration on one line: built-in types in <>, ^ for extends, & for ByRef, [] for an array.
//     TRV_Add ^p:picture addend:picture yield:<integer> -> picture
std::string shape_of(const Declaration& declaration);

}  // namespace tarvo::host
