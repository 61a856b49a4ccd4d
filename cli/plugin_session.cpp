#include "plugin_session.h"

#include <filesystem>
#include <iostream>
#include <system_error>
#include <variant>

#include "command_error.h"
#include "messages.h"
#include "names.h"
#include "shown_text.h"

namespace tarvo::cli {

namespace fs = std::filesystem;

namespace {

constexpr const char* kLibraryName = "libTarvoGraphics.so";

// Returns the path of the plugin, which lies beside the tool's own program: where it is built, or where it is
// installed.
std::string library_of_this_tool() {
    std::error_code error;
    const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
    const fs::path candidates[] = {folder / ".." / "lib" / kLibraryName, folder / TARVO_PLUGIN_FOLDER / kLibraryName,
                                   folder / kLibraryName};
    // Without its own place a candidate would be looked for where the tool is run, and found there if somebody put it.
    if (folder.is_absolute())
        for (const fs::path& candidate : candidates)
            if (fs::exists(candidate, error)) return candidate.lexically_normal().string();
    throw CommandError(ExitStatus::file_error,
                       std::string(kLibraryName) + " is not beside this tool; name the plugin with --plugin");
}

host::Host& loaded(host::Host& host, const PluginOptions& options) {
    host.on_message_box = [](const std::string& text) {
        std::cerr << "message box: " << host::shown_lines(text) << '\n';
    };
    const std::string path = options.path.empty() ? library_of_this_tool() : options.path;
    try {
        if (host.load_plugin(path)) return host;
    } catch (const host::HostError& error) {
        throw CommandError(ExitStatus::file_error, error.what());
    }
    throw CommandError(ExitStatus::operation_failed, "the plugin refused the host");
}

}  // namespace

void add_plugin_options(CLI::App& command, PluginOptions& options) {
    command.add_option("--plugin", options.path, "the plugin library, instead of the one beside this tool")
        ->type_name("PATH");
    command.add_option("--host-version", options.host_version, "the version that the host says it has")
        ->type_name("V")
        ->capture_default_str();
}

PluginSession::PluginSession(const PluginOptions& options)
    : limits_(options.limits),
      host_({.version = options.host_version, .limits = options.limits}),
      caller_(loaded(host_, options)) {}

host::Value PluginSession::ask(const char* method, std::vector<host::Value> arguments) {
    for (const host::Callable& callable : caller_.callables())
        if (callable.owner.empty() && host::same_name(callable.declaration.name, method))
            return caller_.invoke(callable, arguments);
    return {};
}

void PluginSession::show_complaints(const std::string& about) {
    for (const std::string& complaint : host_.complaints()) warn(about + ": " + complaint);
    host_.clear_complaints();
}

std::int32_t PluginSession::last_error() {
    const host::Value code = ask("TRV_GetLastError", {});
    const auto* number = std::get_if<std::int32_t>(&code);
    return number ? *number : 0;
}

std::string PluginSession::error_message(std::int32_t code) {
    const host::Value message = ask("TRV_GetErrorMessage", {code});
    const auto* object = std::get_if<host::ObjectRef>(&message);
    const auto* text = object ? dynamic_cast<const host::StringObject*>(object->get()) : nullptr;
    return text ? std::string(text->bytes()) : std::string();
}

}  // namespace tarvo::cli
