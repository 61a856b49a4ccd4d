#pragma once

// Errors of the library in the tool's words, with the options that raise a limit.

#include <string>

#include "command_error.h"
#include "tarvo.hpp"

namespace tarvo::cli {

// What ends a command, of an error that is no operation's: of a file, or of what there is no room for.
CommandError command_error(const Error& error);

// Throws the error of a check when it tells of memory, and not of what was checked.
void check_memory(const Error& error);

// What ends a command, of the exception that is being handled. Throws what is no std::exception.
CommandError handled_error();

// "; the host made no room for it: ...": nothing where the host had no part in it.
std::string refusal_text(const Error& error);

// "TRV_Stretch: error 102: ...": why an operation gave nothing, or what is wrong with what it gave. `label` is what the
// operation is called.
std::string operation_failure(const std::string& label, const Error& error);

}  // namespace tarvo::cli
