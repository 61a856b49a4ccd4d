#pragma once

#include <vector>

#include "good_arguments.h"

namespace tarvo::test {

// The variants of arguments that make a difference to the method.
std::vector<Variant> variants_of(const host::Callable& method);

}  // namespace tarvo::test
