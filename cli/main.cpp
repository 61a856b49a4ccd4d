// tarvo: a person's tool for the plugin's operations.

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include <iostream>
#include <sstream>
#include <string>

#include "command_error.h"
#include "command_line.h"
#include "commands.h"
#include "interrupts.h"
#include "library_errors.h"

namespace {

using tarvo::cli::CommandError;
using tarvo::cli::ExitStatus;

constexpr const char* kExitStatuses =
    "Exit status:\n"
    "  0    done\n"
    "  1    an operation failed; nothing was written\n"
    "  2    wrong use, of the command line or in the text of a call; nothing was read or written\n"
    "  3    a file that cannot be read or written\n"
    "  130  interrupted: what shells say of an end by the signal INT";

// Throws CommandError, Error and std::bad_alloc.
ExitStatus run_command(int argc, char** argv) {
    CLI::App tool("Applies the picture operations of Tarvo Graphics to picture files.", "tarvo");
    tool.footer(kExitStatuses);
    tool.set_version_flag("--version", "tarvo " TARVO_VERSION, "Print the version and end");
    tool.require_subcommand(1);
    tarvo::cli::add_apply_command(tool);
#ifdef TARVO_SCREEN
    tarvo::cli::add_capture_command(tool);
#endif
    tarvo::cli::add_complete_command(tool);
    tarvo::cli::add_convert_command(tool);
    tarvo::cli::add_hash_command(tool);
    tarvo::cli::add_help_command(tool);
    tarvo::cli::add_list_command(tool);
    tarvo::cli::add_manual_command(tool);
    tarvo::cli::add_verify_command(tool);
    try {
        tarvo::cli::check_command(tool, argc, argv);
        tool.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::ostringstream message;
        if (tool.exit(error, std::cout, message) != 0) {
            std::cerr << "tarvo: " << tarvo::cli::readable(message.str());
            return ExitStatus::wrong_usage;
        }
    }
    // Output that does not arrive makes what was fine an error.
    if (!std::cout.flush()) throw CommandError(ExitStatus::file_error, "the output cannot be written");
    return ExitStatus::fine;
}

ExitStatus run(int argc, char** argv) {
    tarvo::cli::handle_interrupts();
    try {
        return run_command(argc, argv);
    } catch (...) {
        const CommandError error = tarvo::cli::handled_error();
        std::cerr << "tarvo: " << tarvo::cli::readable(error.what()) << '\n';
        return error.status();
    }
}

}  // namespace

int main(int argc, char** argv) { return static_cast<int>(run(argc, argv)); }
