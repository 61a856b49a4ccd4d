#pragma once

// The results that are kept: one of each operation that makes a picture, more where it has modes.

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "stage.h"

namespace tarvo::test {

struct GoldenCase {
    std::string_view name;         // of its file
    std::string_view declaration;  // begins so, a member's class before it
    std::vector<Value> (*arguments)(Stage&);
};

std::span<const GoldenCase> golden_cases();
// What the case's operation makes; the picture that it works on, where it makes none.
ObjectRef result_of(const GoldenCase& shown, Stage& stage);

// Operations that make pictures which cannot be kept, and why.
struct NotKept {
    std::string_view declaration;
    std::string_view reason;
};
std::span<const NotKept> not_kept();

// Whether the method's declaration, a member's class before it, begins so.
bool is_declared(const host::Callable& method, std::string_view beginning);

}  // namespace tarvo::test
