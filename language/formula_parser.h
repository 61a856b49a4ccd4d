#pragma once

// Reads numbers as people write them for the tool.

#include <string_view>

#include "formula.h"
#include "scanner.h"

namespace tarvo::language {

// Takes a number, be it a literal or a formula. Throws host::ScanError; `expected` says what to tell of when no number
// begins here.
Number take_number(host::Scanner& scanner, const char* expected);

// Whether a word, in which there are no blanks, is a formula, as "width", "1/2" and "height-10" are. A single number is
// none.
bool reads_as_formula(std::string_view word);

}  // namespace tarvo::language
