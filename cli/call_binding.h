#pragma once

// What a written call means: which method, and what each of its parameters gets. Nothing is read, made or called here.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "call_expression.h"
#include "caller.h"

namespace tarvo::cli {

// What a parameter gets.
struct Filling {
    enum class Source {
        object,         // that the call is made on
        argument,       // the value of one
        fitted_width,   // of an argument fit(...)
        fitted_height,  // likewise
        default_value,  // see default_of
        variable,       // a new one, for what a ByRef parameter gives back
    };
    Source source;
    std::size_t argument = 0;  // which of the call's
};

struct Binding {
    const host::Callable* method;
    std::vector<Filling> fillings;  // one a parameter

    bool has_object() const { return !fillings.empty() && fillings[0].source == Filling::Source::object; }
};

// What a parameter gets when no argument is for it; none when there must be one.
std::optional<host::Literal> default_of(const host::Parameter& parameter);

// The methods of a name as people write it: with TRV_ in front or without.
std::vector<const host::Callable*> methods_named(const host::Caller& caller, std::string_view name);

// `text` is what the call was parsed from, `in_hand` the class of the picture that the call can be made on; empty for
// none. If all methods of the name are plain functions the call needs no picture. Numbers that can be computed without
// a picture are. Throws PlacedError, also when several methods take the call equally well.
Binding bind_call(const host::Caller& caller, const CallExpression& call, std::string_view text,
                  std::string_view in_hand);

}  // namespace tarvo::cli
