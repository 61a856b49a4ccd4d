#pragma once

// Tells what arguments are for the parameters that they might be for.

#include <optional>
#include <string>
#include <string_view>

#include "call_expression.h"
#include "caller.h"

namespace tarvo::language {

// Returns how well an expression fits the type of a parameter that is not ByRef; none when it does not. A form
// fit(...), which stands for two values, fits nothing.
std::optional<host::Fit> fit_to_type(const host::Caller& caller, const Expression& expression, const host::Type& type);

// Returns what a parameter of a type wants, in words: "a color (&cRRGGBB)".
std::string wanted_for(const host::Type& type);

// Returns what an argument is, in words: `the file name "white"`. `text` is the call's.
std::string found_in(const ArgumentExpression& argument, std::string_view text);

}  // namespace tarvo::language
