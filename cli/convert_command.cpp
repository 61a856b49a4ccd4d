// tarvo convert: a picture file in another format.

#include <CLI/App.hpp>

#include <memory>
#include <string>

#include "commands.h"
#include "file_options.h"
#include "loss_rule.h"
#include "messages.h"
#include "picture_io.h"

namespace tarvo::cli {
namespace {

constexpr const char* kFormats =
    "Files: .png .jpg .jpeg .tif .tiff .webp .pbm .pgm .ppm .pam, and .trv for the string that\n"
    "TRV_ConvertToString makes and TRV_ConvertToPicture takes.";

struct ConvertOptions {
    FileOptions file;
    std::string input, output;
    bool keep_depth = false;
};

void convert(const ConvertOptions& options) {
    check_output(options.output, options.file);
    Console console;
    RuledListener listener(console, options.file.losses);
    const PictureFile input = read_picture(options.input, options.file, listener, options.keep_depth);
    write_picture(input.picture, options.output, options.file, listener);
}

}  // namespace

void add_convert_command(CLI::App& tool) {
    const auto options = std::make_shared<ConvertOptions>();
    CLI::App* command = tool.add_subcommand("convert", "Write a picture file in another format");
    command->footer(kFormats);
    command->add_option("IN", options->input, "the picture file, or - for standard input")->required();
    command->add_option("-o,--output", options->output, "the file for the result, or - for standard output")
        ->type_name("OUT")
        ->required();
    command->add_flag("--keep-depth", options->keep_depth,
                      "read black-and-white, grey and palette files as pictures of 1 and 8 bits");
    add_file_options(*command, options->file);
    command->callback([options] { convert(*options); });
}

}  // namespace tarvo::cli
