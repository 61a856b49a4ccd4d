// tarvo apply: operations on a picture file, one after the other.

#include <CLI/App.hpp>

#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "command_error.h"
#include "commands.h"
#include "messages.h"
#include "names.h"
#include "operation.h"
#include "picture_io.h"
#include "plugin_session.h"
#include "value_text.h"

namespace tarvo::cli {

using host::Picture;
using host::Value;

namespace {

constexpr const char* kClientPicture = "TRV_ClientPicture";

constexpr const char* kCallHelp =
    "A call is written as a program writes it, with the picture in hand as its object:\n"
    "  tarvo apply in.png 'TRV_AdjustContrast(rect(100, 50, 300, 200), &c808080, 1.6, 1.6, 1.6, 0)' -o out.png\n"
    "Arguments: numbers, true, false, nil, colours (&cRRGGBB), picture files (photo.png or \"my photo.png\"),\n"
    "rect(left, top, width, height), matrix(nine numbers, row by row), convolution(coefficients). Where a method\n"
    "gives something back in an argument, write any value or word; what came back is printed.\n"
    "Files: .png .jpg .jpeg .pbm .pgm .ppm .pam, and .trv, the string that TRV_ConvertToString makes. Transparency is\n"
    "the picture's mask; formats that have none leave the mask out.";

struct ApplyOptions {
    PluginOptions plugin;
    std::string input, output;
    std::vector<std::string> calls;
    bool keep_depth = false;
    bool client = false;
    bool quiet = false;
};

const Picture* as_picture(const Value& value) {
    const auto* object = std::get_if<host::ObjectRef>(&value);
    return object ? dynamic_cast<const Picture*>(object->get()) : nullptr;
}

bool is_client_picture(const Value& value) { return host::same_name(host::type_name(value), kClientPicture); }

class Apply {
public:
    explicit Apply(const ApplyOptions& options) : options_(options) {}

    void run() {
        if (!options_.output.empty()) check_output_name(options_.output);
        std::vector<Operation> operations;
        for (const std::string& call : options_.calls) operations.push_back(parse_operation(call));

        PluginSession session(options_.plugin);
        session_ = &session;
        for (const Operation& operation : operations) check_known(session, operation);
        Value picture = read();
        for (const Operation& operation : operations) picture = apply(operation, picture);
        if (!options_.output.empty()) write(picture);
    }

private:
    Value read() {
        const Value picture = read_picture(*session_, options_.input, options_.keep_depth);
        say(options_.input + ": " + describe(picture));
        return options_.client ? converted(picture, kClientPicture) : picture;
    }

    // Makes one call and returns the picture, or other value, that the next call is made on.
    Value apply(const Operation& operation, const Value& picture) {
        const Outcome outcome = run_operation(*session_, operation, picture, options_.keep_depth);
        const std::string& name = operation.call.name;
        check(name, outcome);
        const bool gave_picture = as_picture(outcome.result) || is_client_picture(outcome.result);
        const Value& now = gave_picture ? outcome.result : picture;
        char time[32];
        std::snprintf(time, sizeof time, ", %.1f ms", outcome.milliseconds);
        say(name + ": " + describe(now) + time);
        if (outcome.declares_result && !gave_picture) std::cout << name << " = " << value_text(outcome.result) << '\n';
        for (const Outcome::Output& output : outcome.outputs)
            std::cout << output.name << " = " << value_text(output.value) << '\n';
        return now;
    }

    // With an error code, an object is a result with a defect, and anything else is no result.
    void check(const std::string& name, const Outcome& outcome) {
        session_->show_complaints(name);
        const bool gave_object = std::holds_alternative<host::ObjectRef>(outcome.result) && !is_nil(outcome.result);
        const std::string code = "error " + std::to_string(outcome.code) + ": " + session_->error_message(outcome.code);
        if (outcome.code != 0 && gave_object) return warn(name + ": " + code);
        if (outcome.code != 0) throw CommandError(ExitStatus::operation_failed, name + ": " + code);
        if (outcome.declares_result && is_nil(outcome.result))
            throw CommandError(ExitStatus::operation_failed, name + " gave no result and no error code");
    }

    void write(const Value& in_hand) {
        const Value value = as_picture(in_hand) ? in_hand : converted(in_hand, "picture");
        const std::string lost = write_picture(*session_, std::get<host::ObjectRef>(value), options_.output);
        if (!options_.quiet) note(lost);
        say(options_.output + ": " + describe(value));
    }

    Value converted(const Value& value, const char* type) {
        try {
            const Value result = session_->caller().convert(value, host::type_named(type));
            session_->show_complaints(std::string("conversion to ") + type);
            if (is_nil(result))
                throw CommandError(ExitStatus::operation_failed, std::string("no ") + type + " can be made");
            return result;
        } catch (const host::CallError& error) {
            throw CommandError(ExitStatus::operation_failed, error.what());
        }
    }

    // Returns a text such as "640 x 480, 32 bits, mask".
    std::string describe(const Value& value) {
        if (const Picture* picture = as_picture(value))
            return size_text(picture->width(), picture->height(), picture->depth()) + (picture->mask() ? ", mask" : "");
        return "client picture " +
               size_text(property(value, "width"), property(value, "height"), property(value, "depth"));
    }

    static std::string size_text(int width, int height, int depth) {
        return std::to_string(width) + " x " + std::to_string(height) + ", " + std::to_string(depth) +
               (depth == 1 ? " bit" : " bits");
    }

    int property(const Value& value, const char* name) {
        return std::get<std::int32_t>(session_->caller().get(value, name));
    }

    void say(const std::string& line) const {
        if (!options_.quiet) std::cout << line << '\n';
    }

    const ApplyOptions& options_;
    PluginSession* session_ = nullptr;  // null unless the command runs
};

}  // namespace

void add_apply_command(CLI::App& tool) {
    const auto options = std::make_shared<ApplyOptions>();
    CLI::App* command = tool.add_subcommand("apply", "Apply operations to a picture, one after the other");
    command->footer(kCallHelp);
    command->add_option("IN", options->input, "the picture file to begin with")->required();
    command->add_option("CALL", options->calls, "the calls, in order")->required();
    command->add_option("-o,--output", options->output, "the file for the result; without it nothing is written")
        ->type_name("OUT");
    command->add_flag("--keep-depth", options->keep_depth,
                      "read black-and-white, grey and palette files as pictures of 1 and 8 bits");
    command->add_flag("--client", options->client, "work on a TRV_ClientPicture");
    command->add_flag("-q,--quiet", options->quiet, "print only what calls answer");
    add_plugin_options(*command, options->plugin);
    command->callback([options] { Apply(*options).run(); });
}

}  // namespace tarvo::cli
