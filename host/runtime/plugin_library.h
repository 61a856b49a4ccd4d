#pragma once

#include <string>

#include "real_interface.h"

namespace tarvo::host {

// A plugin's library, open as long as this lives. The library itself stays loaded until the process ends, as some would
// anyway, so that hosts that follow each other all find the same; a private copy goes when it can.
class PluginLibrary {
public:
    // `private_copy`: opens a copy of the file, which shares nothing with any other opening of it. Throws HostError.
    PluginLibrary(const std::string& path, bool private_copy);
    ~PluginLibrary();
    PluginLibrary(const PluginLibrary&) = delete;
    PluginLibrary& operator=(const PluginLibrary&) = delete;

    REALpluginMain entry() const { return entry_; }

private:
    void* library_ = nullptr;
    REALpluginMain entry_ = nullptr;
};

}  // namespace tarvo::host
