// tarvo apply: operations on a picture file, one after the other, or on nothing, to make a picture.

#include <CLI/App.hpp>

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "chain.h"
#include "command_error.h"
#include "commands.h"
#include "file_work.h"
#include "limit_options.h"
#include "messages.h"
#include "picture_io.h"
#include "scanner.h"
#include "shown_text.h"

namespace tarvo::cli {
namespace {

constexpr const char* kCallHelp =
    "A call is written as a program writes it, with the picture in hand as its object:\n"
    "  tarvo apply in.png 'TRV_AdjustContrast(rect(100, 50, 300, 200), &c808080, 1.6, 1.6, 1.6, 0)' -o out.png\n"
    "  tarvo apply in.png 'Stretch(fit(800, 600))' 'Trim(border(8), frame_color = &cFFFFFF)' -o out.png\n"
    "  tarvo apply 'MakeGradient(300, 200, &c102040, &cFFD080)' -o gradient.png\n"
    "TRV_ may be left out, and so may yield, rectangles and what a method only gives back. Arguments may be told by\n"
    "name: center = &c808080. They are numbers, also computed with + - * / and brackets from the picture's width and\n"
    "height; true, false, nil; colours (&cRRGGBB); picture files (photo.png or \"my photo.png\");\n"
    "rect(left, top, width, height); border(levels), the rectangle without the plain border; fit(side) or\n"
    "fit(width, height) for a width and a height; matrix(nine numbers, row by row); convolution(coefficients).\n"
    "Where a method gives something back in an argument, write any value or word; what came back is printed.\n"
    "Files: .png .jpg .jpeg .pbm .pgm .ppm .pam, and .trv, the string that TRV_ConvertToString makes. Transparency is\n"
    "the picture's mask; formats that have none leave the mask out.";

struct ApplyOptions {
    FileWork work;
    std::vector<std::string> calls;
    bool quiet = false;
};

CommandError wrong_usage(const std::string& message) { return {ExitStatus::wrong_usage, message}; }

// Whether the first word is a call and no file. A file may have any name, so that a file that exists is one, and so is
// what goes on with a dot behind the last bracket.
bool reads_as_call(const std::string& word) {
    host::Scanner scanner(word);
    bool named = !scanner.take_name().empty();
    if (scanner.take('.')) named = !scanner.take_name().empty();
    const std::size_t end = word.rfind(')');
    const bool ends_as_file = end != std::string::npos && word.find('.', end) != std::string::npos;
    std::error_code error;
    return named && scanner.take('(') && !ends_as_file && !std::filesystem::exists(word, error);
}

void apply(const ApplyOptions& options) {
    FileWork work = options.work;
    std::vector<std::string> calls = options.calls;
    const bool has_input = !reads_as_call(work.input);
    if (!has_input) {
        calls.insert(calls.begin(), work.input);
        work.input.clear();
    }
    if (calls.empty()) throw wrong_usage("there is no call behind the file " + host::quoted(work.input));
    if (!has_input && work.client) throw wrong_usage("--client needs a picture file to begin with");
    const Chain chain(calls, has_input ? (work.client ? kClientPicture : kPicture) : "");
    if (!work.output.empty()) check_output(work.output);
    if (!chain.ends_with_picture() && !work.output.empty()) throw wrong_usage("-o: none of the calls makes a picture");

    Console console(options.quiet);
    const FileRecord record = work_on_file(work, chain, console);
    if (record.status != ExitStatus::fine) throw CommandError(record.status, record.message, record.code);
    if (work.output.empty() && record.made_picture) console.note("no -o: nothing was written");
}

}  // namespace

void add_apply_command(CLI::App& tool) {
    const auto options = std::make_shared<ApplyOptions>();
    CLI::App* command = tool.add_subcommand("apply", "Apply operations to a picture, one after the other");
    command->footer(kCallHelp);
    command
        ->add_option("IN", options->work.input,
                     "the picture file to begin with; a call that makes a picture needs none")
        ->required();
    command->add_option("CALL", options->calls, "the calls, in order");
    command->add_option("-o,--output", options->work.output, "the file for the result; without it nothing is written")
        ->type_name("OUT");
    command->add_flag("--client", options->work.client, "work on a TRV_ClientPicture");
    command->add_flag("-q,--quiet", options->quiet, "print only what calls answer");
    add_limit_options(*command, options->work.limits);
    command->callback([options] { apply(*options); });
}

}  // namespace tarvo::cli
