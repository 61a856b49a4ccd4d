#pragma once

// Tells people of wrong use of the command line.

#include <CLI/App.hpp>

#include <string>

namespace tarvo::cli {

// Throws CommandError when the first word names none of the tool's commands.
void check_command(const CLI::App& tool, int argc, const char* const* argv);

// Returns a message that is fit for a terminal, whatever is in it, and no longer than people read.
std::string readable(const std::string& message);

}  // namespace tarvo::cli
