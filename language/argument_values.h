#pragma once

// Makes the values that the parameters of a call get.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "call_binding.h"
#include "call_expression.h"
#include "caller.h"

namespace tarvo::language {

// Returns the picture in a file that an argument names.
using PictureReader = std::function<host::Value(const std::string& path)>;

struct ArgumentValues {
    std::vector<host::Value> values;  // one for each parameter of the method
    std::vector<std::string> notes;   // texts about arguments that may not mean what their writer thinks
};

// Throws PlacedError, host::CallError and what `read` throws.
ArgumentValues make_values(host::Caller& caller, const CallExpression& call, const Binding& binding,
                           const host::Value& in_hand, const PictureReader& read);

// Returns the size of a picture or a client picture, and 0 x 0 for anything else.
Size size_of(host::Caller& caller, const host::Value& picture);
// Whether objects of the class are pictures, of the host or of the plugin.
bool is_picture_class(std::string_view name);

}  // namespace tarvo::language
