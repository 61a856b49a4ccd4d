#include "plugin_entry.h"

#include <cmath>
#include <cstdio>

#include "host_services.h"
#include "platform.h"
#include "processor.h"
#include "registration_tables.h"

namespace tarvo::plugin {
namespace {

// The misspelt word and the doubled one belong to the text that users know.
constexpr const char* kQualification =
    "This verion of Tarvo Graphics is qualified for REALbasic REALbasic 2005 only. If you are using a previous or "
    "future "
    "version of REALbasic, please visit https://www.tarvo-graphics.example/ for information on other versions.";

void ask_for_processor_features() {
    gTRV_HasMMX = 0;
    gTRV_HasAltiVec = 0;
    std::int32_t features = 0;
    if (Gestalt(gestaltPowerPCProcessorFeatures, &features) == noErr) gTRV_HasAltiVec = features >> 4 & 1;
}

// The plugin runs in version 5.5 exactly, and in every version of the years 2005 to 2010.
bool is_supported(double version) {
    if (version == 5.5) return true;
    const double year = std::trunc(version);
    return year >= 2005.0 && year <= 2010.0;
}

void refuse(double version) {
    char text[400];  // a double of the largest exponent has 309 digits before the point
    std::snprintf(text, sizeof text, "rb_version: %f", version);
    show_message(text);
    show_message(kQualification);
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

std::int32_t gTRV_HasAltiVec = 0;
std::int32_t gTRV_HasMMX = 0;

int PluginEntry() {
    ask_for_processor_features();
    const double version = REALGetRBVersion();
    if (!is_supported(version)) {
        refuse(version);
        return 0;
    }
    register_everything();
    return 1;
}

int REALPluginMain(REALresolver callback) {
    try {
        gResolver = callback;
        gResolverPPC = gResolver ? reinterpret_cast<REALresolver>(gResolver("ResolverPPC")) : nullptr;
        if (const auto declare = reinterpret_cast<void (*)(int)>(HCallResolver("RegisterPluginVersion")))
            declare(static_cast<int>(kREALinterfaceVersion));
        return PluginEntry();
    } catch (...) {  // a host service threw, and no exception may leave the library
        return 0;
    }
}
