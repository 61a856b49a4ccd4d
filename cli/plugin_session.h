#pragma once

// A host with the plugin loaded, which every command begins with.

#include <CLI/App.hpp>

#include <cstdint>
#include <string>

#include "caller.h"
#include "host.h"
#include "limit_options.h"

namespace tarvo::cli {

struct PluginOptions {
    std::string path;  // if empty, the library that belongs to this tool
    double host_version = host::HostOptions{}.version;
    host::Limits limits = default_limits();
};

void add_plugin_options(CLI::App& command, PluginOptions& options);

// Message boxes and warnings go to the standard error stream.
class PluginSession {
public:
    // Throws CommandError when the plugin cannot be loaded or refuses the host.
    explicit PluginSession(const PluginOptions& options);

    const host::Limits& limits() const { return limits_; }
    host::Host& host() { return host_; }
    host::Caller& caller() { return caller_; }

    // Writes what the host has complained of since the last call of this, each line beginning with `about`.
    void show_complaints(const std::string& about);

    // Return what TRV_GetLastError and TRV_GetErrorMessage do; 0 and "" if the plugin has no such methods.
    std::int32_t last_error();
    std::string error_message(std::int32_t code);

private:
    host::Value ask(const char* method, std::vector<host::Value> arguments);

    const host::Limits limits_;
    host::Host host_;
    host::Caller caller_;
};

}  // namespace tarvo::cli
