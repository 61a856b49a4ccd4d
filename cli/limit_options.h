#pragma once

// How much the tool may take: the options, and errors told with them.

#include <CLI/App.hpp>

#include <string>

#include "resource_limits.h"

namespace tarvo::cli {

// 268,435,456 pixels a picture, and half of the machine's memory.
host::Limits default_limits();

void add_limit_options(CLI::App& command, host::Limits& limits);

// The error's message; where a limit made it, with the option that raises it.
std::string with_option(const host::LimitedError& error);

}  // namespace tarvo::cli
