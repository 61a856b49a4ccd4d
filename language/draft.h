#pragma once

// What a call needs of a picture that it only makes smaller.

#include <string_view>

#include "caller.h"
#include "formula.h"

namespace tarvo::language {

// True when a call makes the same size of a smaller picture as of the whole one, and no pixel larger: when all that it
// makes is the whole picture at another size, which its text tells in numbers that need no picture, or by fit(...).
// False also for what is no call.
bool suits_smaller(const host::Caller& caller, std::string_view call, const Size& whole, const Size& smaller);

}  // namespace tarvo::language
