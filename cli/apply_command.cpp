// tarvo apply: operations on a picture file, one after the other, or on nothing, to make a picture.

#include <CLI/App.hpp>

#include <memory>
#include <string>
#include <vector>

#include "apply_words.h"
#include "batch.h"
#include "batch_plan.h"
#include "chain.h"
#include "command_error.h"
#include "commands.h"
#include "file_options.h"
#include "file_work.h"
#include "messages.h"
#include "picture_io.h"
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
    "Files: .png .jpg .jpeg .tif .tiff .webp .pbm .pgm .ppm .pam, and .trv, the string that\n"
    "TRV_ConvertToString makes. Transparency is the picture's mask; formats that have none leave the mask out.";

constexpr const char* kManyHelp =
    "Many files: inputs come first, then calls; a word is a call when it is NAME(...) and no file has that name.\n"
    "  tarvo apply photos/*.jpg 'Stretch(fit(800))' --into small\n"
    "  tarvo apply photos/*.jpg @recipe.txt -o 'out/{name}-{n}.png' --keep-going --json\n"
    "{name} {ext} {dir} {n} are the input's name, ending and folder, and its number. @FILE is a recipe: a call a line, "
    "and\n"
    "lines that begin with #. With several files the status is 0 if all are done, and 1 if any failed.";

struct ApplyOptions {
    std::string first;
    std::vector<std::string> others;
    std::string output, files_from, files0_from, shard;
    OutputRule rule;
    BatchOptions batch;
    bool of_many = false;  // an option is there that only several files have
};

CommandError wrong_usage(const std::string& message) { return {ExitStatus::wrong_usage, message}; }

void check_calls(const ApplyOptions& options, const ApplyWords& words, bool has_input) {
    if (words.calls.empty()) throw wrong_usage("there is no call behind the file " + host::quoted(words.inputs.back()));
    if (!has_input && options.batch.client) throw wrong_usage("--client needs a picture file to begin with");
}

Chain chain_of(const ApplyOptions& options, const ApplyWords& words, bool has_input) {
    check_calls(options, words, has_input);
    return {words.calls, has_input ? (options.batch.client ? kClientPicture : kPicture) : ""};
}

void apply_to_one(const ApplyOptions& options, const ApplyWords& words) {
    const bool has_input = !words.inputs.empty();
    const Chain chain = chain_of(options, words, has_input);
    const FileWork work{.input = has_input ? words.inputs.front() : "",
                        .output = options.output,
                        .options = options.batch.file,
                        .client = options.batch.client,
                        .hash = options.batch.hash};
    check_output(work.output, work.options);
    if (!chain.ends_with_picture() && !work.output.empty()) throw wrong_usage("-o: none of the calls makes a picture");

    Console console(options.batch.quiet, work.output == kStandardStream);
    const FileRecord record = work_on_file(work, chain, console);
    if (record.status != ExitStatus::fine) throw CommandError(record.status, record.message, record.code);
    if (work.output.empty() && record.made_picture) console.note("no -o: nothing was written");
}

void apply_to_many(const ApplyOptions& options, const ApplyWords& words) {
    const Chain chain = chain_of(options, words, true);
    OutputRule rule = options.rule;
    rule.pattern = options.output;
    const bool writes = !rule.into.empty() || !rule.pattern.empty() || rule.in_place;
    if (!writes && options.batch.skip_existing) throw wrong_usage("--skip-existing needs --into or -o");
    const Shard shard = options.shard.empty() ? Shard{} : shard_of(options.shard);
    const ExitStatus status = run_batch(plan(words.inputs, rule, shard), chain, options.batch);
    if (status != ExitStatus::fine)
        throw CommandError(status, status == ExitStatus::interrupted ? "interrupted" : "not all files were done");
}

void apply(const ApplyOptions& options) {
    std::vector<std::string> all = {options.first};
    all.insert(all.end(), options.others.begin(), options.others.end());
    ApplyWords words = sort_words(all);
    const auto add = [&](const std::string& list, char end) {
        if (list.empty()) return;
        const std::vector<std::string> names = listed_files(list, end);
        words.inputs.insert(words.inputs.end(), names.begin(), names.end());
    };
    add(options.files_from, '\n');
    add(options.files0_from, '\0');
    if (options.of_many || words.inputs.size() > 1 || is_pattern(options.output))
        apply_to_many(options, words);
    else
        apply_to_one(options, words);
}

void add_options_of_many(CLI::App& command, ApplyOptions& options) {
    constexpr const char* kGroup = "Many files";
    std::vector<CLI::Option*> added = {
        command.add_option("--into", options.rule.into, "the folder for results that keep their names")
            ->type_name("DIR")
            ->excludes("--output"),
        command.add_flag("--in-place", options.rule.in_place, "each result replaces its input")
            ->excludes("--output")
            ->excludes("--into"),
        command
            .add_option("--files-from", options.files_from,
                        "a file with the names of inputs, a line each; -: standard input")
            ->type_name("F"),
        command.add_option("--files0-from", options.files0_from, "the same, with a zero byte behind each name")
            ->type_name("F"),
        command.add_option("--jobs", options.batch.jobs, "so many files at a time; one a processor unless told")
            ->type_name("N")
            ->check(CLI::PositiveNumber),
        command.add_option("--shard", options.shard, "only part I of N of the inputs, as they are sorted")
            ->type_name("I/N"),
        command.add_flag("--json", options.batch.json,
                         "a line of JSON a file, in their order, and one that counts them"),
        command.add_flag("--skip-existing", options.batch.skip_existing, "leave out files whose output is there")
            ->excludes("--in-place"),
        command.add_flag("--dry-run", options.batch.dry_run, "print what would be done"),
        command.add_flag("--keep-going", options.batch.keep_going, "go on behind a file that failed"),
    };
    for (CLI::Option* option : added) {
        option->group(kGroup);
        option->each([&options](const std::string&) { options.of_many = true; });
    }
}

}  // namespace

void add_apply_command(CLI::App& tool) {
    const auto options = std::make_shared<ApplyOptions>();
    CLI::App* command = tool.add_subcommand("apply", "Apply operations to pictures, one after the other");
    command->footer(std::string(kCallHelp) + '\n' + kManyHelp);
    command
        ->add_option("IN", options->first,
                     "the picture file to begin with, or - for standard input; a call that makes a picture needs none")
        ->required();
    command->add_option("CALL", options->others, "the calls, in order; before them there may be more files");
    command
        ->add_option("-o,--output", options->output,
                     "the file for the result, or - for standard output; without it nothing is written. With {name}, "
                     "{ext}, {dir} or {n}: for each "
                     "file one")
        ->type_name("OUT");
    command->add_flag("--hash", options->batch.hash, "print the hash of the pixels of the file, and behind each call");
    command->add_flag("--client", options->batch.client, "work on a TRV_ClientPicture");
    command->add_flag("-q,--quiet", options->batch.quiet, "print only what calls answer");
    add_options_of_many(*command, *options);
    command->add_flag("--draft", options->batch.file.draft,
                      "decode JPEG files smaller where the first call makes them smaller still; pixels differ");
    add_file_options(*command, options->batch.file);
    command->callback([options] { apply(*options); });
}

}  // namespace tarvo::cli
