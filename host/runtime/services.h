#pragma once

// The services that plugins call, by look-up name.

#include <span>
#include <string_view>

namespace tarvo::host {

struct Service {
    const char* name;
    void* function;
};

// Every service; its place here is its index for Faults.
std::span<const Service> all_services();
// -1 when there is no service of that name.
int service_index(std::string_view name);

// What a plugin's entry point is called with: finds the resolver by its name.
void* plugin_callback(const char* name);

}  // namespace tarvo::host
