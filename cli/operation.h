#pragma once

// One call of the command line, made on a picture.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "call_binding.h"
#include "call_expression.h"
#include "command_error.h"
#include "plugin_session.h"

namespace tarvo::cli {

// A call with the text it was read from, which messages show.
struct Operation {
    std::string text;
    language::CallExpression call;
    std::size_t number = 0;  // its place in a chain of calls, from 1; 0 for a single call

    // Returns what messages begin with: "call 2, TRV_Stretch" in a chain, else "TRV_Stretch". The name may be empty.
    std::string label(std::string_view name) const;
};

// `number` is the Operation's. Throws CommandError.
Operation parse_operation(const std::string& text, std::size_t number);

// Finds what the call means on a picture of a class, as bind_call does. Throws CommandError with the given status.
language::Binding bind_operation(PluginSession& session, const Operation& operation, std::string_view in_hand,
                                 ExitStatus if_wrong);

struct Outcome {
    struct Output {
        std::string name;
        host::Value value;
    };
    host::Value result;
    bool declares_result = false;
    std::vector<Output> outputs;     // what the call has left in ByRef arguments
    std::vector<std::string> notes;  // texts about arguments that may not mean what their writer thinks
    std::int32_t code = 0;           // the plugin's error code after the call
    std::string reason = {};         // why it failed, if it did and that is known; see failure_reason
    double milliseconds = 0;         // the time of the call alone, without that of reading its arguments
};

// Makes the call on `in_hand`, which is nil if there is no picture. Files among the arguments are read. Throws
// CommandError, and FileError for such a file.
Outcome run_operation(PluginSession& session, const Operation& operation, const language::Binding& binding,
                      const host::Value& in_hand);

}  // namespace tarvo::cli
