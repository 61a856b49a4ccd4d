// tarvo convert: a picture file in another format.

#include <CLI/App.hpp>

#include <memory>
#include <string>

#include "commands.h"
#include "limit_options.h"
#include "messages.h"
#include "picture_io.h"

namespace tarvo::cli {
namespace {

constexpr const char* kFormats =
    "Files: .png .jpg .jpeg .pbm .pgm .ppm .pam, and .trv for the string that TRV_ConvertToString makes and\n"
    "TRV_ConvertToPicture takes.";

struct ConvertOptions {
    Limits limits;
    std::string input, output;
    bool keep_depth = false;
};

void convert(const ConvertOptions& options) {
    check_output(options.output);
    Console console;
    const PictureFile input = read_picture(options.input, options.limits, console, options.keep_depth);
    write_picture(input.picture, options.output, options.limits, console);
}

}  // namespace

void add_convert_command(CLI::App& tool) {
    const auto options = std::make_shared<ConvertOptions>();
    CLI::App* command = tool.add_subcommand("convert", "Write a picture file in another format");
    command->footer(kFormats);
    command->add_option("IN", options->input, "the picture file")->required();
    command->add_option("-o,--output", options->output, "the file for the result")->type_name("OUT")->required();
    command->add_flag("--keep-depth", options->keep_depth,
                      "read black-and-white, grey and palette files as pictures of 1 and 8 bits");
    add_limit_options(*command, options->limits);
    command->callback([options] { convert(*options); });
}

}  // namespace tarvo::cli
