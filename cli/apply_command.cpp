// tarvo apply: operations on a picture file, one after the other, or on nothing, to make a picture.

#include <CLI/App.hpp>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "argument_values.h"
#include "command_error.h"
#include "commands.h"
#include "limit_options.h"
#include "messages.h"
#include "names.h"
#include "operation.h"
#include "picture_io.h"
#include "plugin_session.h"
#include "scanner.h"
#include "shown_text.h"
#include "value_text.h"

namespace tarvo::cli {

using host::Picture;
using host::Value;

namespace {

constexpr const char* kPicture = "picture";
constexpr const char* kClientPicture = "TRV_ClientPicture";

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
    PluginOptions plugin;
    std::string input, output;
    std::vector<std::string> calls;
    bool client = false;
    bool quiet = false;
};

const Picture* as_picture(const Value& value) {
    const auto* object = std::get_if<host::ObjectRef>(&value);
    return object ? dynamic_cast<const Picture*>(object->get()) : nullptr;
}

bool is_client_picture(const Value& value) { return host::same_name(host::type_name(value), kClientPicture); }

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

class Apply {
public:
    explicit Apply(const ApplyOptions& options) : options_(options) {}

    void run() {
        const std::vector<Operation> operations = parse();
        if (!options_.output.empty()) check_output(options_.output);
        PluginSession session(options_.plugin);
        session_ = &session;
        check(operations);

        Value in_hand = has_input_ ? read() : Value();
        for (const Operation& operation : operations) in_hand = apply(operation, in_hand);
        if (!options_.output.empty())
            write(in_hand);
        else if (made_picture_ && !options_.quiet)
            note("no -o: nothing was written");
    }

private:
    std::vector<Operation> parse() {
        std::vector<std::string> calls = options_.calls;
        has_input_ = !reads_as_call(options_.input);
        if (!has_input_) calls.insert(calls.begin(), options_.input);
        if (calls.empty()) throw wrong_usage("there is no call behind the file " + host::quoted(options_.input));
        if (!has_input_ && options_.client) throw wrong_usage("--client needs a picture file to begin with");
        std::vector<Operation> operations;
        for (const std::string& call : calls)
            operations.push_back(parse_operation(call, calls.size() > 1 ? operations.size() + 1 : 0));
        return operations;
    }

    static CommandError wrong_usage(const std::string& message) { return {ExitStatus::wrong_usage, message}; }

    // Finds what is wrong with the calls before any work. Whether a call on a client picture returns another one or a
    // picture is not known before it is made. Calls behind it are checked as calls on client pictures, which can be
    // converted, and bound again when they are made.
    void check(const std::vector<Operation>& operations) {
        std::string in_hand = has_input_ ? (options_.client ? kClientPicture : kPicture) : "";
        bool known = true;
        for (const Operation& operation : operations) {
            const language::Binding binding = bind_operation(*session_, operation, in_hand, ExitStatus::wrong_usage);
            const std::optional<host::Type>& result = binding.method->declaration.result;
            if (!result || !language::is_picture_class(result->name)) continue;
            known = known && (!binding.has_object() || !options_.client);
            in_hand = known ? result->name : kClientPicture;
        }
        if (in_hand.empty() && !options_.output.empty()) throw wrong_usage("-o: none of the calls makes a picture");
    }

    Value read() {
        const PictureFile file = read_picture(*session_, options_.input);
        like_ = file.like;
        const Value picture = file.picture;
        say(options_.input + ": " + size_text(picture) + ", " + file.pixels);
        return options_.client ? converted(picture, kClientPicture) : picture;
    }

    // Makes one call and returns the picture, or other value, that the next call is made on.
    Value apply(const Operation& operation, const Value& picture) {
        const std::string in_hand = is_nil(picture) ? "" : host::type_name(picture);
        const language::Binding binding = bind_operation(*session_, operation, in_hand, ExitStatus::operation_failed);
        const std::string& name = binding.method->declaration.name;
        const std::string label = operation.label(name);
        session_->host().clear_refusal();
        const Outcome outcome = run_operation(*session_, operation, binding, picture);
        if (!options_.quiet)
            for (const std::string& line : outcome.notes) note(label + ": " + line);
        check(label, outcome);
        const bool gave_picture = as_picture(outcome.result) || is_client_picture(outcome.result);
        made_picture_ = made_picture_ || gave_picture;
        const Value& now = gave_picture ? outcome.result : picture;
        char time[32];
        std::snprintf(time, sizeof time, "%.1f ms", outcome.milliseconds);
        say(name + ": " + (is_nil(now) ? "" : describe(now) + ", ") + time);
        if (outcome.declares_result && !gave_picture)
            std::cout << name << " = " << language::value_text(outcome.result) << '\n';
        for (const Outcome::Output& output : outcome.outputs)
            std::cout << output.name << " = " << language::value_text(output.value) << '\n';
        return now;
    }

    // With an error code, an object is a result with a defect, and anything else is no result.
    void check(const std::string& label, const Outcome& outcome) {
        session_->show_complaints(label);
        const bool gave_object = std::holds_alternative<host::ObjectRef>(outcome.result) && !is_nil(outcome.result);
        const std::string why = outcome.reason.empty() ? refusal() : refusal() + "\n    " + outcome.reason;
        const std::string code =
            "error " + std::to_string(outcome.code) + ": " + session_->error_message(outcome.code) + why;
        if (outcome.code != 0 && gave_object) return warn(label + ": " + code);
        if (outcome.code != 0) throw CommandError(ExitStatus::operation_failed, label + ": " + code);
        if (outcome.declares_result && is_nil(outcome.result))
            throw CommandError(ExitStatus::operation_failed,
                               label + " gave no result" + (refusal().empty() ? " and no error code" : "") + why);
    }

    // Returns what the host did not make for the operation, to be read behind the error; empty when it made all.
    std::string refusal() const {
        const auto& refused = session_->host().refusal();
        return refused ? "; the host made no room for it: " + with_option(*refused) : "";
    }

    void write(const Value& in_hand) {
        const Value value = as_picture(in_hand) ? in_hand : converted(in_hand, kPicture);
        const WrittenFile file = write_picture(*session_, std::get<host::ObjectRef>(value), options_.output, like_);
        if (!options_.quiet) notes(file.lost);
        say(options_.output + ": " + size_text(value) + ", " + file.pixels);
    }

    Value converted(const Value& value, const char* type) {
        try {
            const Value result = session_->caller().convert(value, host::type_named(type));
            session_->show_complaints(std::string("conversion to ") + type);
            if (is_nil(result))
                throw CommandError(ExitStatus::operation_failed,
                                   std::string("no ") + type + " can be made" + refusal());
            return result;
        } catch (const host::CallError& error) {
            throw CommandError(ExitStatus::operation_failed, error.what());
        }
    }

    // Returns a text such as "640 x 480, 32 bits, mask".
    std::string describe(const Value& value) {
        const Picture* picture = as_picture(value);
        const int depth = picture ? picture->depth() : std::get<std::int32_t>(session_->caller().get(value, "depth"));
        return (picture ? "" : "client picture ") + size_text(value) + ", " + language::depth_text(depth) +
               (picture && picture->mask() ? ", mask" : "");
    }

    std::string size_text(const Value& value) {
        const language::Size size = language::size_of(session_->caller(), value);
        return std::to_string(size.width) + " x " + std::to_string(size.height);
    }

    void say(const std::string& line) const {
        if (!options_.quiet) std::cout << host::shown_lines(line) << '\n';
    }

    const ApplyOptions& options_;
    PluginSession* session_ = nullptr;  // null unless the command runs
    bool has_input_ = false;
    bool made_picture_ = false;
    std::optional<host::Carried> like_;  // what the file's pixels were
};

}  // namespace

void add_apply_command(CLI::App& tool) {
    const auto options = std::make_shared<ApplyOptions>();
    CLI::App* command = tool.add_subcommand("apply", "Apply operations to a picture, one after the other");
    command->footer(kCallHelp);
    command->add_option("IN", options->input, "the picture file to begin with; a call that makes a picture needs none")
        ->required();
    command->add_option("CALL", options->calls, "the calls, in order");
    command->add_option("-o,--output", options->output, "the file for the result; without it nothing is written")
        ->type_name("OUT");
    command->add_flag("--client", options->client, "work on a TRV_ClientPicture");
    command->add_flag("-q,--quiet", options->quiet, "print only what calls answer");
    add_limit_options(*command, options->plugin.limits);
    add_plugin_options(*command, options->plugin);
    command->callback([options] { Apply(*options).run(); });
}

}  // namespace tarvo::cli
