// tarvo hash: the SHA-256 of what a picture file shows, whatever its format and compression.

#include <CLI/App.hpp>

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "command_error.h"
#include "command_line.h"
#include "commands.h"
#include "hash_line.h"
#include "limit_options.h"
#include "messages.h"
#include "picture_io.h"

namespace tarvo::cli {
namespace {

constexpr const char* kWhatIsHashed =
    "SHA-256 of the line \"tarvo-pixels 1 WIDTH HEIGHT CHANNELS\" with a newline, and then the rows from the top: a "
    "byte\n"
    "each for red, green and blue, and with a mask a fourth, 255 where the picture is opaque.\n"
    "A line is HASH, two blanks, NAME, as sha256sum writes it.";

struct HashOptions {
    Limits limits;
    std::vector<std::string> files;
};

void hash(const HashOptions& options) {
    Console console(true);
    std::size_t unread = 0;
    for (const std::string& file : options.files) try {
            std::cout << hash_line(read_picture(file, {.limits = options.limits}, console).picture.sha256(), file)
                      << std::flush;
        } catch (const CommandError& error) {
            std::cerr << "tarvo: " << readable(error.what()) << '\n';
            ++unread;
        }
    if (unread > 0)
        throw CommandError(ExitStatus::file_error, std::to_string(unread) + " of " +
                                                       std::to_string(options.files.size()) + " files were not hashed");
}

}  // namespace

void add_hash_command(CLI::App& tool) {
    const auto options = std::make_shared<HashOptions>();
    CLI::App* command = tool.add_subcommand("hash", "Print the SHA-256 of the pixels of picture files");
    command->footer(kWhatIsHashed);
    command->add_option("FILE", options->files, "the picture files")->required();
    add_limit_options(*command, options->limits);
    command->callback([options] { hash(*options); });
}

}  // namespace tarvo::cli
