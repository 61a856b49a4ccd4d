#pragma once

// Errors of the library in the tool's words, with the options that raise a limit.

#include <string>

#include "command_error.h"
#include "tarvo.hpp"

namespace tarvo::cli {

// What ends a command, of an error that is no operation's: of a file, or of what there is no room for.
CommandError command_error(const Error& error);

// "TRV_Stretch: error 102: ...": why an operation gave nothing, or what is wrong with what it gave. `label` is what the
// operation is called.
std::string operation_failure(const std::string& label, const Error& error);

}  // namespace tarvo::cli
