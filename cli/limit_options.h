#pragma once

// The options that bound what the tool takes, and errors that name them.

#include <CLI/App.hpp>

#include <string>

#include "resource_limits.h"

namespace tarvo::cli {

using host::default_limits;

void add_limit_options(CLI::App& command, host::Limits& limits);

// Returns the error's message, with the option that raises the limit if there is one.
std::string with_option(const host::LimitedError& error);

}  // namespace tarvo::cli
