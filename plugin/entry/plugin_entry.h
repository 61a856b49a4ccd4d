#pragma once

#include "real_interface.h"

// The one function that the library exports. The host calls it once, with the callback through which the resolver of
// its services is found. It returns 1 when the plugin registered itself, 0 when it refused the host.
extern "C" __attribute__((visibility("default"))) int REALPluginMain(REALresolver callback);

// The plugin's own start, once the host's services can be found: asks for the processor's features and the host's
// version, and registers everything or refuses the host. It returns what REALPluginMain does.
int PluginEntry();
