// tarvo capture: the screen as a picture file.

#include <CLI/App.hpp>

#include <memory>
#include <string>

#include "command_error.h"
#include "commands.h"
#include "engine.h"
#include "failure.h"
#include "kept_picture.h"
#include "limit_options.h"
#include "main_screen.h"
#include "messages.h"
#include "picture_io.h"

namespace tarvo::cli {
namespace {

constexpr const char* kWhatIsSeen =
    "The picture shows all monitors of the display's default screen. "
    "Under Wayland only windows of X programs are seen,\n"
    "on black, and without an X server there is nothing to capture.";

constexpr const char* kCapture = "TRV_ScreenCapture";

struct CaptureOptions {
    FileOptions file;
    std::string display, output;
};

CommandError refused(const host::Refusal& refusal) {
    return {ExitStatus::operation_failed, with_option(refusal.what(), library::limit_of(refusal))};
}

// The library shows no screen to its callers: the tool makes this call in a host of the library's, while it has one.
Picture captured(const CaptureOptions& options, Console& console) {
    host::Limits limits = host::default_limits();
    options.file.limits.put_into(limits);
    library::CallHost call(limits);
    const auto screen = host::MainScreen::open(options.display);
    if (!screen) throw CommandError(ExitStatus::operation_failed, "there is no X display whose pixels can be read");
    host::Value whole_screen[] = {host::Nil{}};
    const host::Value seen = call.caller().call_on(call.host().new_screen(), kCapture, whole_screen);
    for (const std::string& complaint : call.host().complaints())
        console.warn(std::string(kCapture) + ": " + complaint);
    const auto* picture = std::get_if<host::ObjectRef>(&seen);
    if (const auto& refusal = call.host().refusal(); !picture && refusal) throw refused(*refusal);
    if (!picture) throw CommandError(ExitStatus::operation_failed, "the display does not give its pixels");
    return Picture(library::new_picture(dynamic_cast<const host::Picture&>(*picture->get()), nullptr));
}

void capture(const CaptureOptions& options) {
    check_output(options.output, options.file);
    Console console;
    write_picture(captured(options, console), options.output, options.file, console);
}

}  // namespace

void add_capture_command(CLI::App& tool) {
    const auto options = std::make_shared<CaptureOptions>();
    CLI::App* command = tool.add_subcommand("capture", "Write a picture of the screen to a file");
    command->footer(kWhatIsSeen);
    command->add_option("-o,--output", options->output, "the file for the picture")->type_name("OUT")->required();
    command->add_option("--display", options->display, "the X display, instead of the one that DISPLAY names")
        ->type_name("NAME");
    add_limit_options(*command, options->file.limits);
    command->callback([options] { capture(*options); });
}

}  // namespace tarvo::cli
