#pragma once

// One call of the command line, made on a picture.

#include <cstdint>
#include <string>
#include <vector>

#include "call_expression.h"
#include "plugin_session.h"

namespace tarvo::cli {

// A call with the text it was read from, which messages show.
struct Operation {
    std::string text;
    CallExpression call;
};

// Throws CommandError.
Operation parse_operation(const std::string& text);

// Throws CommandError when the plugin has no method of that name.
void check_known(PluginSession& session, const Operation& operation);

struct Outcome {
    struct Output {
        std::string name;
        host::Value value;
    };
    host::Value result;
    bool declares_result = false;
    std::vector<Output> outputs;  // what the call has left in ByRef arguments
    std::int32_t code = 0;        // the plugin's error code after the call
    double milliseconds = 0;      // the time of the call alone, without that of reading its arguments
};

// Makes the call on `self`, or as a plain function if only plain functions have that name. Files among the arguments
// are read. Throws CommandError, and FileError for such a file.
Outcome run_operation(PluginSession& session, const Operation& operation, const host::Value& self, bool keep_depth);

}  // namespace tarvo::cli
