// tarvo capture: the screen as a picture file.

#include <CLI/App.hpp>

#include <memory>
#include <string>

#include "command_error.h"
#include "commands.h"
#include "limit_options.h"
#include "main_screen.h"
#include "messages.h"
#include "picture_io.h"
#include "plugin_session.h"

namespace tarvo::cli {
namespace {

constexpr const char* kWhatIsSeen =
    "The picture shows all monitors of the display's default screen. "
    "Under Wayland only windows of X programs are seen,\n"
    "on black, and without an X server there is nothing to capture.";

constexpr const char* kCapture = "TRV_ScreenCapture";

struct CaptureOptions {
    PluginOptions plugin;
    std::string display, output;
};

void capture(const CaptureOptions& options) {
    check_output(options.output);
    PluginSession session(options.plugin);
    const auto screen = host::MainScreen::open(options.display);
    if (!screen) throw CommandError(ExitStatus::operation_failed, "there is no X display whose pixels can be read");
    host::Value whole_screen[] = {host::Nil{}};
    const host::Value captured = session.caller().call_on(session.host().new_screen(), kCapture, whole_screen);
    session.show_complaints(kCapture);
    const auto* picture = std::get_if<host::ObjectRef>(&captured);
    if (const auto& refusal = session.host().refusal(); !picture && refusal) throw host::Refusal(*refusal);
    if (!picture) throw CommandError(ExitStatus::operation_failed, "the display does not give its pixels");
    notes(write_picture(session, *picture, options.output).lost);
}

}  // namespace

void add_capture_command(CLI::App& tool) {
    const auto options = std::make_shared<CaptureOptions>();
    CLI::App* command = tool.add_subcommand("capture", "Write a picture of the screen to a file");
    command->footer(kWhatIsSeen);
    command->add_option("-o,--output", options->output, "the file for the picture")->type_name("OUT")->required();
    command->add_option("--display", options->display, "the X display, instead of the one that DISPLAY names")
        ->type_name("NAME");
    add_limit_options(*command, options->plugin.limits);
    add_plugin_options(*command, options->plugin);
    command->callback([options] { capture(*options); });
}

}  // namespace tarvo::cli
