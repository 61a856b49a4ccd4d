#pragma once

// Finds what a written call means: which method, and what each of its parameters gets. Nothing is read, made or called.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "call_expression.h"
#include "caller.h"

namespace tarvo::language {

// What a parameter gets.
struct Filling {
    enum class Source {
        object,         // the object that the call is made on
        argument,       // the value of an argument
        fitted_width,   // the width that an argument fit(...) stands for
        fitted_height,  // its height
        default_value,  // what default_of returns
        variable,       // a new variable, in which a ByRef parameter returns something
    };
    Source source;
    std::size_t argument = 0;  // the index of the call's argument, for those three
};

struct Binding {
    const host::Callable* method;
    std::vector<Filling> fillings;  // one for each parameter

    bool has_object() const { return !fillings.empty() && fillings[0].source == Filling::Source::object; }
};

// Returns what a parameter, not a ByRef one, gets that no argument is for, by its declaration or by what is told of the
// operation; none when there must be an argument.
std::optional<host::Literal> default_of(const host::Callable& method, const host::Parameter& parameter);

// Returns the methods of a name as people write it: with TRV_ in front or without. Members of classes are none.
std::vector<const host::Callable*> methods_named(const host::Caller& caller, std::string_view name);

// `text` is what the call was parsed from, and `in_hand` the class of the picture that the call can be made on; it is
// empty if there is no picture, which only methods without an object allow. Numbers that need no picture are computed,
// for their errors. Throws PlacedError, also when several methods take the call equally well.
Binding bind_call(const host::Caller& caller, const CallExpression& call, std::string_view text,
                  std::string_view in_hand);
// The same for one of these methods, whatever the call's name.
Binding bind_to(const host::Caller& caller, const std::vector<const host::Callable*>& methods,
                const CallExpression& call, std::string_view text, std::string_view in_hand);

}  // namespace tarvo::language
