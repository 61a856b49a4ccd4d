#pragma once

// Calls in hosts of their own, and all that comes of them.

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "good_arguments.h"

namespace tarvo::test {

// The plugin whose objects are linked in.
const SharedPlugin& linked_plugin();
// A name for each of its callables, fit for parameterised tests.
const std::vector<std::string>& linked_method_names();

// Everything that a program can see of a call that has ended.
struct Seen {
    int code = 0;
    std::string text;                 // of what sort the result is, and ByRef variables
    std::vector<std::uint8_t> bytes;  // of the result

    friend bool operator==(const Seen&, const Seen&) = default;
};
void PrintTo(const Seen& seen, std::ostream* out);

// Calls the method with the arguments as they are.
Seen see(Session& session, const host::Callable& method, std::vector<Value>& arguments);
// The same of a result that is there already.
Seen see_result(Session& session, const Value& result, const std::vector<Value>& arguments);

// The place of a parameter.
std::optional<std::size_t> parameter_named(const host::Callable& method, std::string_view name);

// That nothing is left of a call, once its arguments and result are gone.
void expect_nothing_left(Session& session);

}  // namespace tarvo::test
