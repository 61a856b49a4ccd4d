#pragma once

// The services that plugins call, by look-up name.

#include <span>
#include <string_view>

namespace tarvo::host {

struct Service {
    const char* name;
    void* function;
};

// All services. The place of a service here is its index for Faults.
std::span<const Service> all_services();
// Returns the index of a service; -1 when there is none of that name.
int service_index(std::string_view name);

// The callback that a plugin's entry point is called with. It finds the resolver by its name.
void* plugin_callback(const char* name);

}  // namespace tarvo::host
