#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "call_binding.h"
#include "caller.h"

namespace tarvo::language {

// Returns why a call failed, as far as that is known: which argument has a value beyond its range, or else the sizes of
// the pictures and rectangles that did not go together, with what the code means for this operation. `values` are those
// of the method's parameters. The text is empty when there is nothing to tell.
std::string failure_reason(host::Caller& caller, const host::Callable& method, std::span<const host::Value> values,
                           std::int32_t code);

// Returns the name of the argument that has a value beyond its range; empty when it is none, or not known.
std::string failed_argument(host::Caller& caller, const host::Callable& method, std::span<const host::Value> values,
                            std::int32_t code);

}  // namespace tarvo::language
