#pragma once

#include <string>

#include "real_interface.h"

namespace tarvo::host {

// A plugin's library, open for as long as this lives. The library itself stays loaded until the process ends, as some
// do anyway, so that hosts that follow each other all find it in the same state. A private copy is unloaded if it can
// be.
class PluginLibrary {
public:
    // With `private_copy` a copy of the file is opened, which shares nothing with any other. Throws HostError.
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
