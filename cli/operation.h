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
    CallExpression call;
    std::size_t number = 0;  // in its chain, from 1; 0 when it is the only one

    // "call 2, TRV_Stretch" of a chain, "TRV_Stretch" of a single call: what messages begin with. The name may be
    // empty.
    std::string label(std::string_view name) const;
};

// `number` is as in Operation. Throws CommandError.
Operation parse_operation(const std::string& text, std::size_t number);

// What the operation means on a picture of a class; see bind_call. Throws CommandError with that status.
Binding bind_operation(PluginSession& session, const Operation& operation, std::string_view in_hand,
                       ExitStatus if_wrong);

// Of a picture or a client picture; nothing of nil.
Size size_of(PluginSession& session, const host::Value& picture);

struct Outcome {
    struct Output {
        std::string name;
        host::Value value;
    };
    host::Value result;
    bool declares_result = false;
    std::vector<Output> outputs;     // what ByRef arguments came back with
    std::vector<std::string> notes;  // of arguments that may not mean what their writer thinks
    std::int32_t code = 0;           // the plugin's, after the call
    double milliseconds = 0;         // of the call alone, without reading its arguments
};

// Makes the call on `in_hand`, which is nil if there is no picture. Files among the arguments are read. Throws
// CommandError, and FileError for such a file.
Outcome run_operation(PluginSession& session, const Operation& operation, const Binding& binding,
                      const host::Value& in_hand, bool keep_depth);

}  // namespace tarvo::cli
