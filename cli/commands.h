#pragma once

// The tool's commands, each in a file of its own. A command adds itself to the command line, and runs when a line that
// names it is parsed. What it throws (CommandError above all) ends the tool.

#include <CLI/App.hpp>

namespace tarvo::cli {

void add_apply_command(CLI::App& tool);
void add_capture_command(CLI::App& tool);   // in builds that can see a screen
void add_complete_command(CLI::App& tool);  // for shells
void add_convert_command(CLI::App& tool);
void add_hash_command(CLI::App& tool);
void add_help_command(CLI::App& tool);
void add_list_command(CLI::App& tool);
void add_manual_command(CLI::App& tool);  // for the build
void add_verify_command(CLI::App& tool);

}  // namespace tarvo::cli
